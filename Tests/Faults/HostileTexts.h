#pragma once

#include <functional>
#include <string>

namespace teralune {

/// Every damaged form of a JSON text that the attacks know, one after the other: cut at each byte, each byte
/// replaced, each value replaced by each wrong one, too deep, doubled.
void forEachDamagedForm(const std::string& text, const std::function<void(const std::string&)>& attack);

} // namespace teralune
