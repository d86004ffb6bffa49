#include "Platform/Foundation/Characters.h"

#include <unicode/brkiter.h>
#include <unicode/utext.h>

#include <algorithm>
#include <memory>

namespace teralune {
namespace {

bool isAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// In ASCII only CR LF is a character of two bytes.
std::size_t asciiCharacterLength(std::string_view text, std::size_t offset) {
    return text.substr(offset, 2) == "\r\n" ? 2 : 1;
}

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
    std::size_t count = 0;
    if (isAscii(text)) {
        for (std::size_t offset = 0; offset < text.size(); ++count)
            offset += asciiCharacterLength(text, offset);
        return count;
    }
    for (Boundaries boundaries(text); boundaries.advance();)
        ++count;
    return count;
}

std::string firstCharacters(std::string_view text, std::size_t count) {
    std::size_t offset = 0;
    if (isAscii(text)) {
        for (; count > 0 && offset < text.size(); --count)
            offset += asciiCharacterLength(text, offset);
        return std::string(text.substr(0, offset));
    }
    Boundaries boundaries(text);
    while (count > 0 && boundaries.advance())
        --count;
    return std::string(text.substr(0, boundaries.offset()));
}

} // namespace teralune
