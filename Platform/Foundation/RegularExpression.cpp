#include "Platform/Foundation/RegularExpression.h"

#include <unicode/regex.h>

namespace teralune {

namespace {

/// About a second of ICU's matching; a pattern that backtracks without end then counts as not matching.
constexpr int32_t timeLimit = 1000;

icu::UnicodeString unicode(std::string_view text) {
    return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

std::string utf8(const icu::UnicodeString& text) {
    std::string result;
    return text.toUTF8String(result);
}

} // namespace

struct RegularExpression::State {
    std::unique_ptr<icu::RegexPattern> pattern;

    /// A matcher refers to the text that it is given, which therefore has to outlive it.
    std::unique_ptr<icu::RegexMatcher> matcher(const icu::UnicodeString& text) const {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::RegexMatcher> made(pattern->matcher(text, status));
        if (U_FAILURE(status)) {
            return nullptr;
        }
        made->setTimeLimit(timeLimit, status);
        return made;
    }

    std::vector<std::vector<std::string>> matches(std::string_view utf8Text, std::size_t most) const {
        std::vector<std::vector<std::string>> found;
        const icu::UnicodeString text = unicode(utf8Text);
        const auto searching = matcher(text);
        UErrorCode status = U_ZERO_ERROR;
        while (searching && found.size() < most && searching->find(status) && U_SUCCESS(status)) {
            std::vector<std::string>& groups = found.emplace_back();
            for (int32_t index = 0; index <= searching->groupCount(); ++index) {
                UErrorCode groupStatus = U_ZERO_ERROR;
                groups.push_back(utf8(searching->group(index, groupStatus)));
            }
        }
        return found;
    }
};

RegularExpression::RegularExpression(std::shared_ptr<const State> state) : state_(std::move(state)) {}

std::optional<RegularExpression> RegularExpression::compile(std::string_view pattern) {
    UErrorCode status = U_ZERO_ERROR;
    UParseError parseError;
    auto state = std::make_shared<State>();
    state->pattern.reset(icu::RegexPattern::compile(unicode(pattern), parseError, status));
    if (U_FAILURE(status)) {
        return std::nullopt;
    }
    return RegularExpression(std::move(state));
}

std::vector<std::vector<std::string>> RegularExpression::matches(std::string_view text) const {
    return state_->matches(text, text.size() + 1);
}

std::optional<std::vector<std::string>> RegularExpression::firstMatch(std::string_view text) const {
    auto found = state_->matches(text, 1);
    if (found.empty()) {
        return std::nullopt;
    }
    return std::move(found.front());
}

/// In a template of the phone's, "$" stands for itself unless a digit follows, and "\\" takes its special
/// meaning from any character. ICU knows names and code points besides, and refuses what is neither.
icu::UnicodeString templateForICU(std::string_view text) {
    std::string escaped;
    for (std::size_t index = 0; index < text.size(); ++index) {
        const bool isLast = index + 1 == text.size();
        if (text[index] == '$') {
            const bool isGroup = !isLast && text[index + 1] >= '0' && text[index + 1] <= '9';
            escaped.append(isGroup ? "$" : "\\$");
        } else if (text[index] == '\\') {
            // Letters are safe without it, and with it two of them would begin a code point.
            const bool isLetter = !isLast && (text[index + 1] == 'u' || text[index + 1] == 'U');
            escaped.append(isLetter ? "" : isLast ? "\\\\" : "\\");
            if (!isLast) {
                escaped.push_back(text[++index]);
            }
        } else {
            escaped.push_back(text[index]);
        }
    }
    return unicode(escaped);
}

std::string RegularExpression::replacingMatches(std::string_view text,
                                                std::string_view replacementTemplate) const {
    const icu::UnicodeString unicodeText = unicode(text);
    const auto matcher = state_->matcher(unicodeText);
    UErrorCode status = U_ZERO_ERROR;
    if (!matcher || !matcher->find(status)) {
        return std::string(text);
    }
    const icu::UnicodeString replaced = matcher->replaceAll(templateForICU(replacementTemplate), status);
    return U_SUCCESS(status) ? utf8(replaced) : std::string(text);
}

} // namespace teralune
