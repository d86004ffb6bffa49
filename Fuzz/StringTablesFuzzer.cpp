// String tables: any bytes give a table of UTF-8 texts.

#include "Fuzz/Fuzzer.h"
#include "Platform/Foundation/StringTable.h"
#include "Platform/Foundation/Utf8.h"

using namespace teralune;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const StringTable table = StringTable::parse(fuzz::textOf(data, size));
    // The shortest entry is a key that stands for its own text: "b;".
    fuzz::require(table.size() <= size / 2, "no entry comes from nothing");
    for (const std::string_view key : {"", "a", "key", "Cancel", "\u00e9"}) {
        const auto text = table.text(key);
        fuzz::require(!text || isValidUtf8(*text), "a text is UTF-8");
    }
    return 0;
}
