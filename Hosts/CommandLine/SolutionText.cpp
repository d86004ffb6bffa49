#include "Hosts/CommandLine/SolutionText.h"

#include "Hosts/CommandLine/LatexText.h"
#include "Platform/Foundation/JsonMapping.h"

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

namespace teralune {
namespace {

std::string textOf(const boost::json::object& object, std::string_view key) {
    const boost::json::value* value = object.if_contains(key);
    return value && value->is_string() ? std::string(value->get_string()) : std::string();
}

/// Steps may hold steps of their own.
void appendSteps(std::string& text, const boost::json::object& parent, const std::string& indent) {
    const boost::json::value* steps = parent.if_contains("steps");
    if (!steps || !steps->is_array())
        return;
    int number = 0;
    for (const boost::json::value& value : steps->get_array()) {
        if (!value.is_object())
            continue;
        const boost::json::object& step = value.get_object();
        const std::string label = std::to_string(++number) + ". ";
        text += indent + label + latexText(textOf(step, "title")) + '\n';
        const std::string inner = indent + std::string(label.size(), ' ');
        if (const std::string latex = textOf(step, "latex"); !latex.empty())
            text += inner + "  " + latexText(latex) + '\n';
        appendSteps(text, step, inner);
    }
}

} // namespace

boost::json::value solutionRecord(std::string_view steps) {
    Result<boost::json::value> parsed = parseJson(steps);
    return parsed ? std::move(parsed).value() : boost::json::value(boost::json::string(steps));
}

std::string solutionText(const boost::json::value& record, SolutionDetail detail) {
    if (!record.is_object())
        return record.is_string() ? std::string(record.get_string()) : serializeJson(record);
    const boost::json::object& solution = record.get_object();
    std::string text;
    if (const std::string problem = textOf(solution, "problem"); !problem.empty())
        text += "Problem:  " + latexText(problem) + '\n';
    if (detail == SolutionDetail::everyStep)
        appendSteps(text, solution, "");
    if (const std::string answer = textOf(solution, "solution"); !answer.empty())
        text += "Solution: " + latexText(answer) + '\n';
    return text;
}

std::string verdictText(const boost::json::value& record) {
    const boost::json::object* verdict = record.if_object();
    const boost::json::value* verified = verdict ? verdict->if_contains("verified") : nullptr;
    if (!verified || !verified->is_bool())
        return serializeJson(record);
    return latexText(textOf(*verdict, "solution")) +
           (verified->get_bool() ? " solves " : " does not solve ") + latexText(textOf(*verdict, "problem")) +
           '\n';
}

std::string plotText(const boost::json::value& record) {
    const boost::json::object* plot = record.if_object();
    const boost::json::value* functions = plot ? plot->if_contains("functions") : nullptr;
    if (!functions || !functions->is_array())
        return serializeJson(record);
    std::string text;
    for (const boost::json::value& value : functions->get_array()) {
        const boost::json::object* function = value.if_object();
        const boost::json::value* points = function ? function->if_contains("points") : nullptr;
        if (points && points->is_array())
            text += latexText(textOf(*function, "latex")) + ": " +
                    std::to_string(points->get_array().size()) + " points; --json shows them.\n";
    }
    return text;
}

} // namespace teralune
