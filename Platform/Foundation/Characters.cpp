#include "Platform/Foundation/Characters.h"

#include "Platform/Foundation/Utf8.h"

#include <unicode/brkiter.h>
#include <unicode/utext.h>

#include <algorithm>
#include <memory>

namespace teralune {
namespace {

/// In ASCII only CR LF is a character of two bytes.
constexpr std::string_view lineEnd = "\r\n";

/// The boundaries of a text that is not all ASCII, found one after the other as byte offsets.
class Boundaries {
public:
    explicit Boundaries(std::string_view text) {
        UErrorCode status = U_ZERO_ERROR;
        text_.reset(utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &status));
        iterator_.reset(icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
        if (U_SUCCESS(status))
            iterator_->setText(text_.get(), status);
        if (U_FAILURE(status))
            iterator_.reset();
    }

    /// False at the end of the text.
    bool advance() { return iterator_ && iterator_->next() != icu::BreakIterator::DONE; }
    std::size_t offset() const { return iterator_ ? static_cast<std::size_t>(iterator_->current()) : 0; }

private:
    struct Close {
        void operator()(UText* text) const { utext_close(text); }
    };
    std::unique_ptr<UText, Close> text_;
    std::unique_ptr<icu::BreakIterator> iterator_;
};

} // namespace

std::size_t characterCount(std::string_view text) {
    if (isAscii(text)) {
        std::size_t count = text.size();
        for (std::size_t at = 0; (at = text.find(lineEnd, at)) != std::string_view::npos;
             at += lineEnd.size())
            --count;
        return count;
    }
    std::size_t count = 0;
    for (Boundaries boundaries(text); boundaries.advance();)
        ++count;
    return count;
}

std::string firstCharacters(std::string_view text, std::size_t count) {
    if (isAscii(text)) {
        std::size_t end = std::min(count, text.size());
        for (std::size_t at = 0; (at = text.find(lineEnd, at)) < end; at += lineEnd.size())
            end = std::min(end + 1, text.size());
        return std::string(text.substr(0, end));
    }
    std::size_t offset = 0;
    Boundaries boundaries(text);
    for (; count > 0 && boundaries.advance(); --count)
        offset = boundaries.offset();
    return std::string(text.substr(0, offset));
}

} // namespace teralune
