#include "SolverService/Model/PasswordDigest.h"

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

#include <stdexcept>

namespace teralune::service {

namespace {

constexpr std::size_t saltSize = 16;
constexpr std::size_t keySize = 32;
constexpr int rounds = 20'000;

const unsigned char* bytesOf(std::string_view text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

std::string derive(std::string_view password, std::string_view salt) {
    std::string key(keySize, '\0');
    if (PKCS5_PBKDF2_HMAC(password.data(), static_cast<int>(password.size()), bytesOf(salt),
                          static_cast<int>(salt.size()), rounds, EVP_sha256(), static_cast<int>(keySize),
                          reinterpret_cast<unsigned char*>(key.data())) != 1) {
        throw std::runtime_error("The password can't be digested.");
    }
    return key;
}

} // namespace

std::string digestPassword(std::string_view password) {
    std::string salt(saltSize, '\0');
    if (RAND_bytes(reinterpret_cast<unsigned char*>(salt.data()), static_cast<int>(saltSize)) != 1) {
        throw std::runtime_error("No random bytes can be had.");
    }
    return salt + derive(password, salt);
}

bool passwordMatches(std::string_view password, std::string_view digest) {
    const bool known = digest.size() == saltSize + keySize;
    const std::string nobody(saltSize + keySize, '\0');
    const std::string_view compared = known ? digest : std::string_view(nobody);
    const std::string key = derive(password, compared.substr(0, saltSize));
    return CRYPTO_memcmp(key.data(), compared.data() + saltSize, keySize) == 0 && known;
}

std::string digestToken(std::string_view token) {
    std::string digest(keySize, '\0');
    if (EVP_Digest(token.data(), token.size(), reinterpret_cast<unsigned char*>(digest.data()), nullptr,
                   EVP_sha256(), nullptr) != 1) {
        throw std::runtime_error("The token can't be digested.");
    }
    return digest;
}

} // namespace teralune::service
