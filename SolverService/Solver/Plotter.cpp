#include "SolverService/Solver/Plotter.h"

#include "SolverService/Solver/ExpressionParser.h"

#include <boost/json.hpp>

#include <cmath>

namespace teralune::service {

namespace {

constexpr int intervals = 200;
constexpr std::size_t mostFunctions = 20;

struct Window {
    double xMin = -10;
    double xMax = 10;
};

/// The right side of "y=…", or the expression itself.
Expression::Pointer functionOf(std::string_view text) {
    if (std::optional<Equation> equation = parseEquation(text)) {
        const bool isFunction =
            equation->left->kind == Expression::Kind::letter && equation->left->letter == 'y';
        return isFunction ? std::move(equation->right) : nullptr;
    }
    return parseExpression(text);
}

/// The letter that the function depends on; absent when there is more than one.
std::optional<char> variableOf(const Expression& function) {
    std::set<char> letters = lettersOf(function);
    letters.erase('e');
    if (letters.size() > 1) {
        return std::nullopt;
    }
    return letters.empty() ? 'x' : *letters.begin();
}

boost::json::array pointsOf(const Expression& function, char variable, const Window& window) {
    boost::json::array points;
    points.reserve(intervals + 1);
    for (int index = 0; index <= intervals; ++index) {
        const double x = window.xMin + (window.xMax - window.xMin) * index / intervals;
        const double y = evaluate(function, variable, x);
        points.push_back(
            boost::json::array{x, std::isfinite(y) ? boost::json::value(y) : boost::json::value()});
    }
    return points;
}

std::optional<boost::json::object> plotted(std::string_view text, const Window& window) {
    const Expression::Pointer function = functionOf(text);
    const std::optional<char> variable = function ? variableOf(*function) : std::nullopt;
    if (!variable) {
        return std::nullopt;
    }
    return boost::json::object{{"expression", text},
                               {"latex", latexOf(*function)},
                               {"points", pointsOf(*function, *variable, window)}};
}

std::optional<Window> windowOf(const boost::json::object& graph) {
    Window window;
    const boost::json::value* given = graph.if_contains("window");
    if (given == nullptr || !given->is_object()) {
        return window;
    }
    const auto read = [&](const char* name, double& edge) {
        const boost::json::value* value = given->get_object().if_contains(name);
        if (value != nullptr && value->is_number()) {
            edge = value->to_number<double>();
        }
    };
    read("xMin", window.xMin);
    read("xMax", window.xMax);
    const bool sensible = std::isfinite(window.xMax - window.xMin) && window.xMin < window.xMax;
    return sensible ? std::optional(window) : std::nullopt;
}

std::optional<std::vector<std::string>> expressionsOf(const boost::json::object& graph) {
    std::vector<std::string> expressions;
    const boost::json::value* functions = graph.if_contains("functions");
    if (functions == nullptr || !functions->is_array() || functions->get_array().size() > mostFunctions) {
        return std::nullopt;
    }
    for (const boost::json::value& function : functions->get_array()) {
        if (!function.is_string()) {
            return std::nullopt;
        }
        expressions.push_back(boost::json::value_to<std::string>(function));
    }
    return expressions;
}

} // namespace

std::optional<boost::json::object> plottingInfo(std::string_view graph) {
    boost::system::error_code problem;
    const boost::json::value definition = boost::json::parse(boost::json::string_view(graph), problem);
    std::optional<std::vector<std::string>> expressions = std::vector{std::string(graph)};
    std::optional<Window> window = Window();
    if (!problem && definition.is_object()) {
        expressions = expressionsOf(definition.get_object());
        window = windowOf(definition.get_object());
    }
    if (!expressions || expressions->empty() || !window) {
        return std::nullopt;
    }
    boost::json::array functions;
    for (const std::string& expression : *expressions) {
        std::optional<boost::json::object> function = plotted(expression, *window);
        if (!function) {
            return std::nullopt;
        }
        functions.push_back(std::move(*function));
    }
    return boost::json::object{{"window", {{"xMin", window->xMin}, {"xMax", window->xMax}}},
                               {"functions", std::move(functions)}};
}

} // namespace teralune::service
