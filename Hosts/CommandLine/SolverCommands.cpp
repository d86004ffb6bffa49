#include "Hosts/CommandLine/CommandContext.h"
#include "Hosts/CommandLine/CommandSet.h"
#include "Hosts/CommandLine/ImageFile.h"
#include "Hosts/CommandLine/SolutionText.h"
#include "Hosts/CommandLine/Validation.h"
#include "Platform/Foundation/UUID.h"

#include <CLI/CLI.hpp>
#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

namespace teralune {
namespace {

struct Arguments {
    std::string problem;
    std::string solution;
    std::string image;
    std::string url;
    std::string outputFile;
    int width = 600;
    bool onlySolution = false;
};

Result<void> solve(const CommandContext& context, const Arguments& arguments) {
    // Who has chosen to hide the steps is not sent any.
    const bool onlySolution =
        arguments.onlySolution || context.application.persistence().steps() == StepOption::hideSteps;
    const auto reply = context.waitFor<SolutionStepsReply>([&](auto done) {
        context.application.networking().getSolutionSteps(arguments.problem, ShouldLog{true},
                                                          SolutionOrigin::input,
                                                          RequestOnlySolution{onlySolution}, std::move(done));
    });
    if (reply.isNull)
        return commandError(context.text("NULL_STEPS_RESPONSE"));
    if (!reply.body)
        return context.requestFailure();
    const boost::json::value solution = solutionRecord(*reply.body);
    context.output.show(solution, solutionText(solution, onlySolution ? SolutionDetail::solutionOnly
                                                                      : SolutionDetail::everyStep));
    return {};
}

Result<void> verify(const CommandContext& context, const Arguments& arguments) {
    const auto reply = context.waitFor<VerifyReply>([&](auto done) {
        context.application.networking().verify(arguments.problem, arguments.solution, SolutionOrigin::input,
                                                std::move(done));
    });
    if (!reply.body)
        return commandError("The server could not verify this solution.");
    const boost::json::value verdict = solutionRecord(*reply.body);
    context.output.show(verdict, verdictText(verdict));
    return {};
}

Result<void> plot(const CommandContext& context, const Arguments& arguments) {
    const auto reply = context.waitFor<PlotInfoReply>([&](auto done) {
        context.application.networking().getPlotInfo(arguments.problem, ShouldLog{true}, std::move(done));
    });
    if (!reply.body)
        return commandError("The server could not plot this expression.");
    const boost::json::value information = solutionRecord(*reply.body);
    context.output.show(information, plotText(information));
    return {};
}

Result<void> suggest(const CommandContext& context, const Arguments& arguments) {
    const auto suggestions = context.waitFor<std::optional<std::vector<Suggestion>>>([&](auto done) {
        context.application.networking().querySuggestions(arguments.problem, std::move(done));
    });
    if (!suggestions)
        return context.requestFailure();
    boost::json::array records;
    std::string text;
    for (const Suggestion& suggestion : *suggestions) {
        records.push_back({{"display", suggestion.display}, {"search", suggestion.search}});
        text += Output::onOneLine(suggestion.display) + '\n';
    }
    context.output.show(records, records.empty() ? "No suggestions." : text);
    return {};
}

Result<void> recognize(const CommandContext& context, const Arguments& arguments) {
    const auto reply = context.waitFor<OCRReply>([&](auto done) {
        context.application.networking().sendOCRRequest(std::filesystem::path(arguments.image),
                                                        makeUUIDString(), 0, std::move(done));
    });
    if (!reply.success || !reply.response || !reply.response->latex)
        return commandError(reply.userMessage.value_or(context.text("OCR_NETWORK_SERVER_FAILURE")));
    context.output.show({{"latex", *reply.response->latex}}, *reply.response->latex);
    return {};
}

/// A path is one of the service's. The request carries the user's token, so no other host may be asked.
std::optional<std::string> imageAddress(const CommandContext& context, const std::string& url) {
    const std::string host = context.application.serviceAddress();
    if (url.starts_with('/'))
        return host + url;
    return url.starts_with(host + "/") ? std::optional(url) : std::nullopt;
}

Result<void> fetchImage(const CommandContext& context, const Arguments& arguments) {
    const std::optional<std::string> url = imageAddress(context, arguments.url);
    if (!url)
        return commandError("The image's address is not one of the service's: " + arguments.url,
                            ExitCode::wrongUsage);
    const Result<std::string> image =
        context.waitFor(context.application.networking().requestImage(*url, arguments.width));
    if (!image)
        return context.requestFailure(image.error());
    const Result<std::size_t> written = writeImage(image.value(), arguments.outputFile);
    if (!written)
        return written.error();
    context.output.show({{"file", arguments.outputFile}, {"bytes", written.value()}},
                        std::to_string(written.value()) + " bytes written to " + arguments.outputFile);
    return {};
}

} // namespace

void addSolverCommands(CommandSet& commands) {
    const auto arguments = std::make_shared<Arguments>();
    const auto add = [&](const std::string& name, const std::string& description, auto action) -> CLI::App& {
        return commands.add(name, description, [arguments, action](CommandContext& context) {
            return action(context, *arguments);
        });
    };
    const auto takesProblem = [&](CLI::App& command, const std::string& name,
                                  const std::string& description) {
        command.add_option(name, arguments->problem, description)->required()->check(notEmpty());
    };

    CLI::App& solving = add("solve", "Solve a problem, step by step", solve);
    takesProblem(solving, "PROBLEM", "The problem, as text or LaTeX");
    solving.add_flag("--only-solution", arguments->onlySolution, "Without the steps");

    CLI::App& verifying = add("verify", "Ask whether a solution solves a problem", verify);
    takesProblem(verifying, "PROBLEM", "The problem");
    verifying.add_option("SOLUTION", arguments->solution, "The solution")->required()->check(notEmpty());

    takesProblem(add("plot", "Fetch what is needed to plot an expression", plot), "EXPRESSION",
                 "The expression, or a graph's definition as JSON");
    takesProblem(add("suggest", "Suggest problems for what has been typed", suggest), "TEXT",
                 "The text so far");
    add("recognize", "Recognise the problem in a picture", recognize)
        .add_option("IMAGE", arguments->image, "The picture's file")
        ->required()
        ->check(CLI::ExistingFile);

    CLI::App& fetching = add("image", "Fetch an image", fetchImage);
    fetching.add_option("URL", arguments->url, "Its address, or its path on the service")
        ->required()
        ->check(notEmpty());
    fetching.add_option("--width", arguments->width, "Its width in pixels")
        ->check(CLI::Range(1, 10000))
        ->capture_default_str();
    fetching.add_option("--output", arguments->outputFile, "The file to write")
        ->required()
        ->check(notEmpty());
}

} // namespace teralune
