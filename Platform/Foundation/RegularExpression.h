#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace teralune {

/// A compiled ICU regular expression over UTF-8 text. Immutable and usable from any thread.
class RegularExpression {
public:
    /// No value for an invalid pattern.
    static std::optional<RegularExpression> compile(std::string_view pattern);

    /// For every match, in order: the whole match, then each group; a group that took no part is "".
    std::vector<std::vector<std::string>> matches(std::string_view text) const;
    /// The first match as above, if there is one.
    std::optional<std::vector<std::string>> firstMatch(std::string_view text) const;
    /// Every match replaced by the template, in which "$1" stands for a group. A template that names a group
    /// the pattern lacks leaves the text unchanged.
    std::string replacingMatches(std::string_view text, std::string_view replacementTemplate) const;

private:
    struct State;
    explicit RegularExpression(std::shared_ptr<const State> state);
    std::shared_ptr<const State> state_;
};

} // namespace teralune
