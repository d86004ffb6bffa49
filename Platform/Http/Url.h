#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace teralune {

/// An absolute URL, taken apart far enough to decide where a request goes. Immutable.
class Url {
public:
    /// No value for a relative reference, for a text with characters that no URL may hold (blanks, controls,
    /// anything beyond ASCII, the delimiters of RFC 2396), and for a malformed host or port.
    static std::optional<Url> parse(std::string_view text);

    /// As it was given to parse().
    const std::string& text() const { return text_; }
    const std::string& scheme() const { return scheme_; } ///< lower case
    const std::string& host() const { return host_; }     ///< lower case; an IPv6 address in brackets
    std::uint16_t port() const { return port_; }          ///< the scheme's own when the text names none
    const std::string& path() const { return path_; }     ///< at least "/"

    bool isHttp() const { return scheme_ == "http" || scheme_ == "https"; }
    bool isSecure() const { return scheme_ == "https"; }
    /// Whether the host is this machine's loopback interface by its very name or address.
    bool isLoopback() const;
    bool hasSameOrigin(const Url& other) const;

    /// Where a reference in a reply to this URL leads. Characters that a sloppy server left unescaped are
    /// escaped; a reference with a user name is refused.
    std::optional<Url> resolve(std::string_view reference) const;

private:
    /// No value for what needs more than a glance; the characters have been looked at.
    static std::optional<Url> parseOrdinary(std::string_view text);

    std::string text_;
    std::string scheme_;
    std::string host_;
    std::uint16_t port_ = 0;
    std::string path_;
};

} // namespace teralune
