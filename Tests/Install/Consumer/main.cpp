#include "Classes/Model/SettingsPersistence.h"
#include "Platform/Defaults/InMemoryUserDefaults.h"

#include <cstdio>
#include <memory>

// Reaches through both installed archives and the libraries they lean on.
int main() {
    const teralune::SettingsPersistence settings(std::make_shared<teralune::InMemoryUserDefaults>());
    const std::string installation = settings.installationID();
    std::printf("%s\n", installation.c_str());
    return installation.size() == 36 && installation == settings.installationID() ? 0 : 1;
}
