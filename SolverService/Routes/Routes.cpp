#include "SolverService/Routes/Routes.h"

namespace teralune::service {

void Routes::enter(Router& router) {
    enterSession(router);
    enterAccount(router);
    enterNotebook(router);
    enterSolver(router);
    enterIdentity(router);
    enterCamera(router);
    enterLogs(router);
}

} // namespace teralune::service
