#include "Hosts/CommandLine/Output.h"

#include "Platform/Foundation/JsonMapping.h"
#include "Platform/Foundation/Utf8.h"

#include <algorithm>
#include <cstdio>

namespace teralune {
namespace {

/// C0 without the line feed, DEL, and C1, which is C2 80 to C2 9F: a terminal would obey them.
std::string withoutControls(std::string_view text) {
    const std::string valid = replacingInvalidUtf8(text);
    std::string shown;
    shown.reserve(valid.size());
    for (std::size_t i = 0; i < valid.size(); ++i) {
        const auto byte = static_cast<unsigned char>(valid[i]);
        const bool isC1 =
            byte == 0xC2 && i + 1 < valid.size() && static_cast<unsigned char>(valid[i + 1]) < 0xA0;
        if ((byte < 0x20 && byte != '\n') || byte == 0x7F || isC1) {
            shown += byte == '\t' ? " " : "\uFFFD";
            i += isC1 ? 1 : 0;
        } else {
            shown += valid[i];
        }
    }
    return shown;
}

} // namespace

void Output::show(const boost::json::value& data, std::string_view text) {
    std::string shown = form_ == Form::json ? serializeJson(data) : withoutControls(text);
    if (!shown.empty() && shown.back() != '\n')
        shown += '\n';
    showBytes(shown);
}

void Output::showBytes(std::string_view bytes) {
    failed_ = std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size() || failed_;
}

bool Output::finish() {
    return std::fflush(stdout) == 0 && !failed_;
}

std::string Output::onOneLine(std::string_view text) {
    std::string line = withoutControls(text);
    std::replace(line.begin(), line.end(), '\n', ' ');
    return line;
}

} // namespace teralune
