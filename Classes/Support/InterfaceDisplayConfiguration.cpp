#include "Classes/Support/InterfaceDisplayConfiguration.h"

#include "Classes/Interfaces/IApplication.h"
#include "Classes/Interfaces/UserAccountModelType.h"

namespace teralune {

NotebookDisplayStyle InterfaceDisplayConfiguration::notebookDisplayStyle() const {
    return application_.userAccountModel().isLoggedIn() ? NotebookDisplayStyle::signedIn
                                                        : NotebookDisplayStyle::signedOut;
}

} // namespace teralune
