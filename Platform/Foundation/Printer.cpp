#include "Platform/Foundation/Printer.h"

#include <cstdio>

namespace teralune {

void StandardPrinter::print(std::string_view line) {
    std::FILE* file = stream_ == Stream::output ? stdout : stderr;
    const std::lock_guard lock(mutex_);
    std::fwrite(line.data(), 1, line.size(), file);
    std::fputc('\n', file);
    std::fflush(file);
}

} // namespace teralune
