#include "Classes/Networking/Networking.h"

#include "Classes/Interfaces/IApplication.h"
#include "Platform/Device/Device.h"
#include "Platform/Foundation/BundleExtension.h"
#include "Platform/Foundation/PercentEncoding.h"
#include "Platform/Foundation/Printer.h"
#include "Platform/Foundation/Utf8.h"

namespace teralune {

std::string Networking::urlEncode(std::string_view text) const {
    static const CharacterSet allowed = CharacterSet::urlFragmentAllowed().without("+&");
    if (auto encoded = addingPercentEncoding(text, allowed))
        return *std::move(encoded);
    return addingPercentEncoding(replacingInvalidUtf8(text), allowed).value_or("");
}

std::optional<std::string> Networking::encodeString(std::string_view text) {
    static const CharacterSet allowed = CharacterSet::urlFragmentAllowed().without("'");
    return addingPercentEncoding(text, allowed);
}

std::optional<std::string> Networking::encodeStringForQuery(std::string_view text) {
    static const CharacterSet allowed = CharacterSet::urlQueryAllowed().without("'&/=+");
    return addingPercentEncoding(text, allowed);
}

std::optional<std::string> Networking::staticLocalURL(std::string_view page) const {
    const PlatformServices& platform = application_.platform();
    const std::string deviceWord = platform.device->idiom() == Device::Idiom::tablet ? "ipad" : "iphone";
    const auto file =
        platform.mainBundle->pathForResource(formatString("%@_%@", {std::string(page), deviceWord}), "html");
    const auto path =
        file ? addingPercentEncoding(file->string(), CharacterSet::urlPathAllowed()) : std::nullopt;
    if (!path)
        return std::nullopt;
    std::string url = "file://" + *path;
    platform.systemLog->print(formatString("Static URL: %@", {url}));
    return url;
}

} // namespace teralune
