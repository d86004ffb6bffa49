// The kernel's messages about the network: any bytes are read within their bounds, and a table takes what
// they say.

#include "Fuzz/Fuzzer.h"
#include "Platform/Reachability/InterfaceTable.h"
#include "Platform/Reachability/NetlinkMessages.h"

using namespace teralune;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const NetlinkMessages read = NetlinkMessages::parse(std::as_bytes(std::span(data, size)));
    // A message has a header of 16 bytes.
    fuzz::require(read.messages.size() <= size / 16, "no message comes from nothing");
    InterfaceTable table;
    for (const NetlinkMessage& message : read.messages) {
        table.add(message);
    }
    for (const NetlinkMessage& message : read.messages) {
        static_cast<void>(table.isOutdatedBy(message));
    }
    static_cast<void>(table.status([](std::string_view) { return InterfaceMedium(); }));
    return 0;
}
