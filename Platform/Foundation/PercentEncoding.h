#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>

namespace teralune {

/// Which ASCII characters stay as they are when a text is percent-encoded; every other byte of its UTF-8
/// becomes %XX with upper-case digits. The three named sets are RFC 3986's for the component.
class CharacterSet {
public:
    static CharacterSet urlFragmentAllowed(); ///< unreserved, sub-delims, ":", "@", "/", "?"
    static CharacterSet urlQueryAllowed();    ///< the same set as for a fragment
    static CharacterSet urlPathAllowed();     ///< unreserved, sub-delims without ";", ":", "@", "/"

    CharacterSet without(std::string_view characters) const;
    bool contains(char character) const;

private:
    static CharacterSet of(std::initializer_list<std::string_view> parts);

    bool allowed_[128] = {};
};

/// No value when the text is not valid UTF-8.
std::optional<std::string> addingPercentEncoding(std::string_view text, const CharacterSet& allowed);

/// The reverse; no value for a "%" that no two hexadecimal digits follow, or when the bytes are not UTF-8.
std::optional<std::string> removingPercentEncoding(std::string_view text);

} // namespace teralune
