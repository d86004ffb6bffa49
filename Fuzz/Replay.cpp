// Gives a fuzzer every file of its corpus, in place of a search. Usage: XFuzzer FOLDER …

#include "Fuzz/Fuzzer.h"

#include <filesystem>
#include <fstream>
#include <span>
#include <sstream>

int main(int argumentCount, char** arguments) {
    int count = 0;
    for (const char* const folder :
         std::span(arguments, static_cast<std::size_t>(argumentCount)).subspan(1)) {
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            // First, so that the one that ends the program is named.
            std::printf("%s\n", entry.path().filename().c_str());
            std::fflush(stdout);
            std::ostringstream bytes;
            bytes << std::ifstream(entry.path(), std::ios::binary).rdbuf();
            const std::string input = std::move(bytes).str();
            // NOLINTNEXTLINE(cppcoreguidelines-pro-type-reinterpret-cast)
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
            ++count;
        }
    }
    teralune::fuzz::require(count > 0, "the corpus has inputs");
    std::printf("%d inputs\n", count);
}
