#include "Hosts/CommandLine/CommandContext.h"

#include "Classes/Interfaces/UserAccountModelType.h"
#include "Classes/Networking/TeraluneNetworkingError.h"
#include "Classes/Support/Localization.h"

namespace teralune {

std::string CommandContext::text(std::string_view key) const {
    return Localize(application.platform(), key);
}

Error CommandContext::requestFailure() const {
    if (application.sessionWasRejected())
        return commandError("The server has ended the session. Sign in again.");
    return commandError(text("OCR_NETWORK_SERVER_FAILURE"));
}

Error CommandContext::requestFailure(const Error& error) const {
    if (TeraluneNetworkingError::caseOf(error) == TeraluneNetworkingError::Case::failureWithMessage)
        return commandError(error.localizedDescription);
    return requestFailure();
}

Result<void> CommandContext::requireSignedIn() const {
    if (application.userAccountModel().isLoggedIn())
        return {};
    return commandError("Nobody is signed in.");
}

} // namespace teralune
