#include "SolverService/Solver/ExpressionLexer.h"

#include <array>
#include <utility>

namespace teralune::service {

namespace {

constexpr std::size_t longestText = 1000;

constexpr std::array functionNames{
    std::pair{std::string_view("sin"), Function::sine},
    std::pair{std::string_view("cos"), Function::cosine},
    std::pair{std::string_view("tan"), Function::tangent},
    std::pair{std::string_view("exp"), Function::exponential},
    std::pair{std::string_view("ln"), Function::naturalLogarithm},
    std::pair{std::string_view("log"), Function::decimalLogarithm},
    std::pair{std::string_view("sqrt"), Function::squareRoot},
    std::pair{std::string_view("abs"), Function::absolute},
};

// The characters that keyboards and textbooks put where ASCII has another, and the commands that mean one.
constexpr std::array spellings{
    std::pair{std::string_view("\\left"), ""},   std::pair{std::string_view("\\right"), ""},
    std::pair{std::string_view("\\cdot"), "*"},  std::pair{std::string_view("\\times"), "*"},
    std::pair{std::string_view("\\div"), "/"},   std::pair{std::string_view("\\quad"), ""},
    std::pair{std::string_view("\\qquad"), ""},  std::pair{std::string_view("\\:"), ""},
    std::pair{std::string_view("\\,"), ""},      std::pair{std::string_view("\\;"), ""},
    std::pair{std::string_view("\\!"), ""},      std::pair{std::string_view("\\ "), ""},
    std::pair{std::string_view("\\{"), "("},     std::pair{std::string_view("\\}"), ")"},
    std::pair{std::string_view("\u2212"), "-"},  std::pair{std::string_view("\u00D7"), "*"},
    std::pair{std::string_view("\u00B7"), "*"},  std::pair{std::string_view("\u00F7"), "/"},
    std::pair{std::string_view("\u00B2"), "^2"}, std::pair{std::string_view("\u00B3"), "^3"},
};

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

bool isLetter(char character) {
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

class Lexer {
public:
    explicit Lexer(std::string_view text) : rest_(text) {}

    std::optional<std::vector<Token>> tokens() {
        while (!rest_.empty()) {
            if (!next()) {
                return std::nullopt;
            }
        }
        push(Token::Kind::end);
        return std::move(tokens_);
    }

private:
    bool next() {
        const char first = rest_.front();
        if (first == ' ' || first == '\t' || first == '\n' || first == '\r') {
            rest_.remove_prefix(1);
            return true;
        }
        if (isDigit(first) || first == '.') {
            return number();
        }
        if (isLetter(first)) {
            return word(rest_, 0);
        }
        return symbol(first) || pairedBar() || spelling() || (first == '\\' && command());
    }

    void push(Token::Kind kind) {
        Token token;
        token.kind = kind;
        tokens_.push_back(token);
    }

    /// The arguments of \frac12 are one digit each.
    bool isBareFractionArgument() const {
        const std::size_t count = tokens_.size();
        return (count >= 1 && tokens_[count - 1].kind == Token::Kind::fraction) ||
               (count >= 2 && tokens_[count - 2].kind == Token::Kind::fraction &&
                tokens_[count - 1].kind == Token::Kind::number);
    }

    bool number() {
        const bool oneDigit = isBareFractionArgument();
        Rational value;
        std::int64_t places = 0;
        std::size_t length = 0;
        bool point = false;
        bool digits = false;
        for (; length < rest_.size(); ++length) {
            const char character = rest_[length];
            if (isDigit(character)) {
                value = value * Rational(10) + Rational(character - '0');
                places += point ? 1 : 0;
                digits = true;
                if (oneDigit) {
                    ++length;
                    break;
                }
            } else if (character == '.' && !point && !oneDigit) {
                point = true;
            } else {
                break;
            }
        }
        Token token;
        token.kind = Token::Kind::number;
        token.number = value / Rational(10).power(places);
        tokens_.push_back(token);
        rest_.remove_prefix(length);
        return digits && token.number.isDefined();
    }

    /// A function's name, "pi", or a single letter at position; used up with what stands before it.
    bool word(std::string_view text, std::size_t position) {
        const std::string_view name = text.substr(position);
        for (const auto& [spelled, function] : functionNames) {
            if (name.starts_with(spelled)) {
                Token token;
                token.kind = Token::Kind::function;
                token.function = function;
                tokens_.push_back(token);
                rest_.remove_prefix(position + spelled.size());
                return true;
            }
        }
        if (name.starts_with("pi")) {
            push(Token::Kind::pi);
            rest_.remove_prefix(position + 2);
            return true;
        }
        if (position != 0 || name.empty()) {
            return false;
        }
        Token token;
        token.kind = Token::Kind::letter;
        token.letter = name.front();
        tokens_.push_back(token);
        rest_.remove_prefix(1);
        return true;
    }

    bool symbol(char first) {
        Token token;
        switch (first) {
        case '+':
            token.kind = Token::Kind::plus;
            break;
        case '-':
            token.kind = Token::Kind::minus;
            break;
        case '*':
            token.kind = Token::Kind::times;
            break;
        case '/':
            token.kind = Token::Kind::divide;
            break;
        case '^':
            token.kind = Token::Kind::power;
            break;
        case '=':
            token.kind = Token::Kind::equals;
            break;
        case '|':
            token.kind = Token::Kind::bar;
            break;
        case '(':
        case '[':
        case '{':
            token.kind = Token::Kind::open;
            token.closing = first == '(' ? ')' : first == '[' ? ']' : '}';
            break;
        case ')':
        case ']':
        case '}':
            token.kind = Token::Kind::close;
            token.closing = first;
            break;
        default:
            return false;
        }
        tokens_.push_back(token);
        rest_.remove_prefix(1);
        return true;
    }

    /// \left| or \right|, which are brackets: a bar alone does not tell whether it opens or closes.
    bool pairedBar() {
        const bool opens = rest_.starts_with("\\left|");
        if (!opens && !rest_.starts_with("\\right|")) {
            return false;
        }
        Token token;
        token.kind = opens ? Token::Kind::open : Token::Kind::close;
        token.closing = '|';
        tokens_.push_back(token);
        rest_.remove_prefix(rest_.find('|') + 1);
        return true;
    }

    bool spelling() {
        for (const auto& [spelled, meaning] : spellings) {
            if (rest_.starts_with(spelled) && !(isLetter(spelled.back()) && rest_.size() > spelled.size() &&
                                                isLetter(rest_[spelled.size()]))) {
                rest_.remove_prefix(spelled.size());
                for (const char character : std::string_view(meaning)) {
                    if (!symbolOrDigit(character)) {
                        return false;
                    }
                }
                return true;
            }
        }
        return false;
    }

    /// A character that stands for what was spelled; it is not in the text itself.
    bool symbolOrDigit(char character) {
        const std::string_view text = rest_;
        const char spelled[] = {character, '\0'};
        rest_ = spelled;
        const bool known = isDigit(character) ? number() : symbol(character);
        rest_ = text;
        return known;
    }

    bool command() {
        for (const std::string_view fraction : {"\\frac", "\\dfrac", "\\tfrac"}) {
            if (rest_.starts_with(fraction)) {
                push(Token::Kind::fraction);
                rest_.remove_prefix(fraction.size());
                return true;
            }
        }
        return word(rest_, 1);
    }

    std::string_view rest_;
    std::vector<Token> tokens_;
};

} // namespace

std::optional<std::vector<Token>> tokensOf(std::string_view text) {
    if (text.size() > longestText) {
        return std::nullopt;
    }
    return Lexer(text).tokens();
}

} // namespace teralune::service
