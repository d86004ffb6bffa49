#include "SolverService/IdentityProvider.h"

#include "SolverService/Model/PasswordDigest.h"
#include "SolverService/Model/RandomText.h"

#include <algorithm>
#include <array>

namespace teralune::service {

namespace {

constexpr int codeBytes = 16;
constexpr std::size_t mostGrants = 1'000;
constexpr std::chrono::minutes codeLifetime{5};
constexpr std::size_t challengeSize = 43;
constexpr const char* clientIdentifier = "3f6b1c2e-9a47-4d58-8e21-6c0b7a95d4f3";

/// Base64 for URLs, without padding.
std::string base64(std::string_view bytes) {
    constexpr std::string_view digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";
    std::string text;
    unsigned int pending = 0;
    int bits = 0;
    for (const char byte : bytes) {
        pending = (pending << 8 | static_cast<unsigned char>(byte)) & 0xFFFF;
        for (bits += 8; bits >= 6; bits -= 6) {
            text.push_back(digits[pending >> (bits - 6) & 63]);
        }
    }
    if (bits > 0) {
        text.push_back(digits[pending << (6 - bits) & 63]);
    }
    return text;
}

/// Codes go to an app's own scheme or to a port of this machine, never to a site.
bool mayReceiveCodes(const std::string& address) {
    const std::size_t colon = address.find("://");
    const bool plain = std::all_of(address.begin(), address.end(), [](char character) {
        return character > ' ' && character < 0x7F && character != '#' && character != '"';
    });
    if (!plain || colon == std::string::npos || colon == 0) {
        return false;
    }
    const std::string scheme = address.substr(0, colon);
    if (scheme == "http") {
        return address.starts_with("http://127.0.0.1:") || address.starts_with("http://[::1]:");
    }
    return scheme != "https" &&
           scheme.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789+-.") == std::string::npos;
}

std::string encodedValue(const std::string& text) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string encoded;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (std::isalnum(byte) != 0 || character == '-' || character == '_' || character == '.') {
            encoded.push_back(character);
        } else {
            encoded += {'%', digits[byte >> 4], digits[byte & 15]};
        }
    }
    return encoded;
}

} // namespace

IdentityProvider::IdentityProvider(WallClock clock) : clock_(std::move(clock)) {
    const Person person{"1001", "Mika", "Muster", "mika@teralune.example"};
    atBrowser_ = person;
    persons_.push_back(person);
}

void IdentityProvider::setPersonAtBrowser(std::optional<Person> person) {
    const std::lock_guard lock(mutex_);
    atBrowser_ = std::move(person);
}

void IdentityProvider::addPerson(const Person& person) {
    const std::lock_guard lock(mutex_);
    persons_.push_back(person);
}

Result<std::string> IdentityProvider::authorize(const Parameters& request) {
    const std::string address = request.text("redirect_uri");
    if (request.text("client_id") != clientIdentifier || !mayReceiveCodes(address)) {
        return Error{"TeraluneSolverService", 0, "Unknown client or redirect address.", {}};
    }
    const std::string start = address + (address.find('?') == std::string::npos ? "?" : "&");
    const std::string state = "&state=" + encodedValue(request.text("state"));
    const std::string challenge = request.text("code_challenge");
    if (request.text("response_type") != "code" || request.text("code_challenge_method") != "S256" ||
        challenge.size() != challengeSize) {
        return start + "error=invalid_request" + state;
    }
    const std::lock_guard lock(mutex_);
    std::erase_if(grants_,
                  [now = clock_()](const auto& grant) { return now - grant.second.issued > codeLifetime; });
    if (!atBrowser_ || grants_.size() >= mostGrants) {
        return start + "error=" + (atBrowser_ ? "temporarily_unavailable" : "access_denied") + state;
    }
    const std::string code = randomText(codeBytes);
    grants_[code] = Grant{*atBrowser_, challenge, address, clock_()};
    return start + "code=" + code + state;
}

std::optional<Person> IdentityProvider::redeem(const std::string& code, const std::string& verifier,
                                               const std::string& redirectAddress) {
    const std::lock_guard lock(mutex_);
    // Used up by the first attempt, a wrong one too: whoever guesses has one guess.
    const auto node = grants_.extract(code);
    if (node.empty()) {
        return std::nullopt;
    }
    const Grant& grant = node.mapped();
    const bool proven = base64(digestToken(verifier)) == grant.challenge &&
                        redirectAddress == grant.redirectAddress && clock_() - grant.issued <= codeLifetime;
    return proven ? std::optional(grant.person) : std::nullopt;
}

std::optional<Person> IdentityProvider::confirm(const std::string& id,
                                                const std::optional<std::string>& email) const {
    const std::lock_guard lock(mutex_);
    const auto found = std::find_if(persons_.begin(), persons_.end(), [&](const Person& person) {
        return person.id == id && person.email == email;
    });
    return found == persons_.end() ? std::nullopt : std::optional(*found);
}

} // namespace teralune::service
