#include "Hosts/CommandLine/LatexText.h"

#include <algorithm>
#include <cctype>
#include <map>

namespace teralune {
namespace {

constexpr int deepestNesting = 50;

const std::map<std::string_view, std::string_view>& symbols() {
    static const std::map<std::string_view, std::string_view> table = {
        {"cdot", "·"},        {"times", "×"}, {"div", "÷"},        {"pm", "±"},    {"le", "≤"},
        {"leq", "≤"},         {"ge", "≥"},    {"geq", "≥"},        {"ne", "≠"},    {"neq", "≠"},
        {"pi", "π"},          {"infty", "∞"}, {"theta", "θ"},      {"alpha", "α"}, {"beta", "β"},
        {"int", "∫"},         {"sum", "∑"},   {"to", "→"},         {"left", ""},   {"right", ""},
        {"displaystyle", ""}, {"quad", "  "}, {"Rightarrow", "⇒"}, {"mathrm", ""}, {"mathbb", ""},
    };
    return table;
}

bool isLetter(char c) {
    return std::isalpha(static_cast<unsigned char>(c)) != 0;
}

/// Whether a numerator, a denominator or a radicand needs no brackets: one number, one name or one symbol.
bool isAtom(std::string_view text) {
    constexpr std::size_t symbolLength = 2;
    const bool isWord = std::all_of(text.begin(), text.end(), [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '.';
    });
    return isWord || (text.size() == symbolLength && static_cast<unsigned char>(text.front()) >= 0x80);
}

std::string bracketed(const std::string& text) {
    return isAtom(text) ? text : "(" + text + ")";
}

/// Reads LaTeX from the front to the back, once.
class Reader {
public:
    explicit Reader(std::string_view latex) : rest_(latex) {}

    std::string all() {
        std::string text;
        while (!rest_.empty()) {
            text += piece();
        }
        return text;
    }

private:
    /// One character with all its bytes, for what follows a command may be any.
    std::string_view take() {
        const auto goesOn = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; };
        const auto end = std::find_if_not(rest_.begin() + 1, rest_.end(), goesOn);
        const std::string_view character = rest_.substr(0, static_cast<std::size_t>(end - rest_.begin()));
        rest_.remove_prefix(character.size());
        return character;
    }

    bool takeIf(char wanted) {
        if (rest_.empty() || rest_.front() != wanted)
            return false;
        rest_.remove_prefix(1);
        return true;
    }

    /// One command, one group in braces, or one character; just the character where the nesting is too deep.
    std::string piece() {
        const std::string_view character = take();
        if (depth_ == deepestNesting)
            return std::string(character);
        ++depth_;
        std::string text = pieceFrom(character);
        --depth_;
        return text;
    }

    std::string pieceFrom(std::string_view character) {
        if (character == "{")
            return group();
        if (character == "^")
            return power();
        if (character == "\\")
            return command();
        return character == "}" ? std::string() : std::string(character);
    }

    /// What is left of a group whose opening brace was taken.
    std::string group() {
        std::string text;
        while (!rest_.empty() && !takeIf('}'))
            text += piece();
        return text;
    }

    void skipBlanks() {
        while (takeIf(' ')) {
        }
    }

    std::string argument() {
        skipBlanks();
        return rest_.empty() ? std::string() : piece();
    }

    std::string power() {
        const std::string exponent = argument();
        if (exponent == "2")
            return "²";
        if (exponent == "3")
            return "³";
        return "^" + bracketed(exponent);
    }

    std::string command() {
        if (rest_.empty())
            return {};
        if (!isLetter(rest_.front())) {
            const std::string_view sign = take();
            // "\:", "\," and their like are spaces of some width.
            return std::string_view(":,;! ").find(sign) != std::string_view::npos ? " " : std::string(sign);
        }
        const auto end = std::find_if_not(rest_.begin(), rest_.end(), isLetter);
        const std::string name(rest_.begin(), end);
        rest_.remove_prefix(name.size());
        skipBlanks();
        if (name == "frac") {
            const std::string numerator = argument();
            return bracketed(numerator) + "/" + bracketed(argument());
        }
        if (name == "sqrt")
            return "√" + bracketed(argument());
        if (name == "text")
            return argument();
        const auto symbol = symbols().find(name);
        return symbol != symbols().end() ? std::string(symbol->second) : name;
    }

    std::string_view rest_;
    int depth_ = 0;
};

} // namespace

std::string latexText(std::string_view latex) {
    return Reader(latex).all();
}

} // namespace teralune
