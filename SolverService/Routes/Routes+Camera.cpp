#include "SolverService/Http/Multipart.h"
#include "SolverService/Http/Router.h"
#include "SolverService/Images/ImageText.h"
#include "SolverService/Images/PngImage.h"
#include "SolverService/Routes/Routes.h"

#include <boost/json.hpp>

#include <algorithm>
#include <charconv>

namespace teralune::service {

namespace {

constexpr std::uint32_t widest = 2'000;
constexpr std::size_t longestImageText = 1'000;

ServiceReply recognized(const ReceivedRequest& request) {
    const std::optional<std::vector<FormPart>> parts = formParts(request);
    if (!parts) {
        return ServiceReply::refusal(400, "The body is no multipart form");
    }
    const auto file = std::find_if(parts->begin(), parts->end(),
                                   [](const FormPart& part) { return part.fileName.has_value(); });
    if (file == parts->end()) {
        return ServiceReply::refusal(400, "The form holds no file");
    }
    const std::optional<std::string> latex = latexInImage(file->content);
    if (!latex) {
        return ServiceReply::json(
            {{"success", false},
             {"error", "No problem was found in the image."},
             {"user_message", "Try again with the problem in the middle of the picture."},
             {"user_message_count", 1}});
    }
    return ServiceReply::json({{"success", true}, {"latex", *latex}, {"user_message_count", 0}});
}

ServiceReply image(const ReceivedRequest& request) {
    const std::string asked = request.parameters.text("width");
    const std::string text = request.parameters.text("query");
    std::uint32_t width = 0;
    const auto [end, problem] = std::from_chars(asked.data(), asked.data() + asked.size(), width);
    if (problem != std::errc() || end != asked.data() + asked.size() || width == 0 || width > widest ||
        text.size() > longestImageText) {
        return ServiceReply::refusal(400, "There is no such image");
    }
    ServiceReply reply;
    reply.contentType = "image/png";
    reply.body = pngOf(text, width, width / 4 + 1);
    return reply;
}

} // namespace

void Routes::enterCamera(Router& router) {
    router.post("/api/getLatex", Access::anyToken,
                [](const auto& request, const auto&) { return recognized(request); });
    router.get("/image", Access::anyToken, [](const auto& request, const auto&) { return image(request); });
}

} // namespace teralune::service
