#include "SolverService/Http/Router.h"
#include "SolverService/Model/UsageRecords.h"
#include "SolverService/Routes/Routes.h"

namespace teralune::service {

void Routes::enterLogs(Router& router) {
    const auto record = [&](const char* path, Access access, const char* required) {
        router.post(path, access, [this, required](const auto& request, const auto&) {
            if (request.parameters.text(required).empty()) {
                return ServiceReply::refusal(400, std::string(required) + " is missing");
            }
            model_.usage.add(request.path(), request.parameters);
            return ServiceReply::text("OK");
        });
    };
    record("/detailedLog", Access::anyToken, "type");
    record("/logCachedStepsMobile", Access::open, "query");
    record("/solutionResponseTiming", Access::open, "query");
    record("/logCameraEvent", Access::open, "action");
}

} // namespace teralune::service
