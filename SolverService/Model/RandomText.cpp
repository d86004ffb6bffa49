#include "SolverService/Model/RandomText.h"

#include <openssl/rand.h>

#include <stdexcept>

namespace teralune::service {

std::string randomText(int bytes) {
    std::string random(static_cast<std::size_t>(bytes), '\0');
    if (RAND_bytes(reinterpret_cast<unsigned char*>(random.data()), bytes) != 1) {
        throw std::runtime_error("No random bytes can be had.");
    }
    constexpr const char* digits = "0123456789abcdef";
    std::string text;
    text.reserve(random.size() * 2);
    for (const char byte : random) {
        text.push_back(digits[static_cast<unsigned char>(byte) >> 4]);
        text.push_back(digits[static_cast<unsigned char>(byte) & 15]);
    }
    return text;
}

} // namespace teralune::service
