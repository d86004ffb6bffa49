#include "SolverService/Solver/ExpressionParser.h"

#include "SolverService/Solver/ExpressionLexer.h"

#include <utility>

namespace teralune::service {

namespace {

constexpr int deepest = 60;

/// A recursive descent; each rule returns an empty pointer when the text does not follow it.
class Parser {
public:
    explicit Parser(std::vector<Token> tokens) : tokens_(std::move(tokens)) {}

    Expression::Pointer sum() {
        Expression::Pointer left = term();
        while (left && (at(Token::Kind::plus) || at(Token::Kind::minus))) {
            const auto kind = at(Token::Kind::plus) ? Expression::Kind::sum : Expression::Kind::difference;
            ++next_;
            left = combine(kind, std::move(left), term());
        }
        return left;
    }

    bool accept(Token::Kind kind) {
        const bool found = at(kind);
        next_ += found ? 1 : 0;
        return found;
    }

    bool at(Token::Kind kind) const { return tokens_[next_].kind == kind; }

private:
    static Expression::Pointer combine(Expression::Kind kind, Expression::Pointer left,
                                       Expression::Pointer right) {
        return left && right ? Expression::ofParts(kind, std::move(left), std::move(right)) : nullptr;
    }

    Expression::Pointer term() {
        Expression::Pointer left = signedFactor();
        while (left) {
            if (accept(Token::Kind::times)) {
                left = combine(Expression::Kind::product, std::move(left), signedFactor());
            } else if (accept(Token::Kind::divide)) {
                left = combine(Expression::Kind::quotient, std::move(left), signedFactor());
            } else if (atFactor()) {
                left = combine(Expression::Kind::product, std::move(left), factor());
            } else {
                break;
            }
        }
        return left;
    }

    Expression::Pointer signedFactor() {
        if (accept(Token::Kind::plus)) {
            return descend([this] { return signedFactor(); });
        }
        if (accept(Token::Kind::minus)) {
            Expression::Pointer part = descend([this] { return signedFactor(); });
            return part ? Expression::ofParts(Expression::Kind::negative, std::move(part)) : nullptr;
        }
        return factor();
    }

    Expression::Pointer factor() {
        Expression::Pointer base = primary();
        if (base && accept(Token::Kind::power)) {
            return combine(Expression::Kind::power, std::move(base),
                           descend([this] { return signedFactor(); }));
        }
        return base;
    }

    /// Whether a factor follows that is multiplied without a sign.
    bool atFactor() const {
        // Two numbers side by side are a slip, not a product.
        const bool numberFollows = at(Token::Kind::number) && tokens_[next_ - 1].kind != Token::Kind::number;
        return numberFollows || at(Token::Kind::letter) || at(Token::Kind::pi) || at(Token::Kind::function) ||
               at(Token::Kind::fraction) || at(Token::Kind::open) || (at(Token::Kind::bar) && openBars_ == 0);
    }

    Expression::Pointer primary() {
        const Token token = tokens_[next_];
        switch (token.kind) {
        case Token::Kind::number:
            ++next_;
            return Expression::ofNumber(token.number);
        case Token::Kind::letter:
            ++next_;
            return Expression::ofLetter(token.letter);
        case Token::Kind::pi:
            ++next_;
            return Expression::ofPi();
        case Token::Kind::open:
            return descend([this] { return group(); });
        case Token::Kind::bar:
            return descend([this] { return absolute(); });
        case Token::Kind::fraction: {
            ++next_;
            Expression::Pointer numerator = argument();
            Expression::Pointer denominator = numerator ? argument() : nullptr;
            return combine(Expression::Kind::quotient, std::move(numerator), std::move(denominator));
        }
        case Token::Kind::function:
            ++next_;
            return descend([this, function = token.function] { return application(function); });
        default:
            return nullptr;
        }
    }

    /// A number or a bracketed expression.
    Expression::Pointer argument() {
        return at(Token::Kind::number) || at(Token::Kind::open) ? primary() : nullptr;
    }

    Expression::Pointer group() {
        const char closing = tokens_[next_++].closing;
        const int outerBars = std::exchange(openBars_, 0);
        Expression::Pointer inner = sum();
        openBars_ = outerBars;
        if (!inner || !at(Token::Kind::close) || tokens_[next_].closing != closing) {
            return nullptr;
        }
        ++next_;
        return closing == '|' ? Expression::ofFunction(Function::absolute, std::move(inner))
                              : std::move(inner);
    }

    Expression::Pointer absolute() {
        ++next_;
        ++openBars_;
        Expression::Pointer inner = sum();
        --openBars_;
        return inner && accept(Token::Kind::bar)
                   ? Expression::ofFunction(Function::absolute, std::move(inner))
                   : nullptr;
    }

    /// sin(x), sin 2x, sin^2(x).
    Expression::Pointer application(Function function) {
        Expression::Pointer exponent;
        if (accept(Token::Kind::power)) {
            exponent = argument();
            if (!exponent) {
                return nullptr;
            }
        }
        Expression::Pointer inner = at(Token::Kind::open) ? primary() : openArgument();
        if (!inner) {
            return nullptr;
        }
        Expression::Pointer applied = Expression::ofFunction(function, std::move(inner));
        return exponent ? combine(Expression::Kind::power, std::move(applied), std::move(exponent))
                        : std::move(applied);
    }

    Expression::Pointer openArgument() {
        Expression::Pointer inner = factor();
        while (inner && (at(Token::Kind::number) || at(Token::Kind::letter) || at(Token::Kind::pi))) {
            inner = combine(Expression::Kind::product, std::move(inner), factor());
        }
        return inner;
    }

    template<class Rule>
    Expression::Pointer descend(Rule rule) {
        if (depth_ == deepest) {
            return nullptr;
        }
        ++depth_;
        Expression::Pointer result = rule();
        --depth_;
        return result;
    }

    std::vector<Token> tokens_;
    std::size_t next_ = 0;
    int depth_ = 0;
    int openBars_ = 0;
};

} // namespace

Expression::Pointer parseExpression(std::string_view text) {
    std::optional<std::vector<Token>> tokens = tokensOf(text);
    if (!tokens) {
        return nullptr;
    }
    Parser parser(std::move(*tokens));
    Expression::Pointer expression = parser.sum();
    return expression && parser.at(Token::Kind::end) ? std::move(expression) : nullptr;
}

std::optional<Equation> parseEquation(std::string_view text) {
    std::optional<std::vector<Token>> tokens = tokensOf(text);
    if (!tokens) {
        return std::nullopt;
    }
    Parser parser(std::move(*tokens));
    Equation equation;
    equation.left = parser.sum();
    if (!equation.left || !parser.accept(Token::Kind::equals)) {
        return std::nullopt;
    }
    equation.right = parser.sum();
    if (!equation.right || !parser.at(Token::Kind::end)) {
        return std::nullopt;
    }
    return equation;
}

} // namespace teralune::service
