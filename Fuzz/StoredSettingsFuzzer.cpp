// Stored settings: rows of any type and value under the names that the library reads. Every setting reads as
// a value of its range, and can be set anew.

#include "Classes/Model/SettingsPersistence.h"
#include "Fuzz/Fuzzer.h"
#include "Platform/Database/Database.h"
#include "Platform/Defaults/SqliteUserDefaults.h"
#include "Tests/Support/TemporaryFolder.h"

using namespace teralune;

namespace {

/// Takes the input apart, a piece at a time.
class Pieces {
public:
    explicit Pieces(std::string_view bytes) : bytes_(bytes) {}

    bool isEmpty() const { return bytes_.empty(); }
    std::string_view take(std::size_t count) {
        const std::string_view taken = bytes_.substr(0, count);
        bytes_.remove_prefix(taken.size());
        return taken;
    }
    std::uint8_t byte() {
        const std::string_view taken = take(1);
        return taken.empty() ? 0 : static_cast<std::uint8_t>(taken.front());
    }

private:
    std::string_view bytes_;
};

std::string hexadecimal(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) {
        constexpr char digits[] = "0123456789abcdef";
        text += digits[static_cast<unsigned char>(byte) >> 4U];
        text += digits[static_cast<unsigned char>(byte) & 15U];
    }
    return text;
}

/// An SQL literal of any storage class.
std::string literal(Pieces& input) {
    const std::uint8_t kind = input.byte();
    const std::string hex = hexadecimal(input.take(input.byte()));
    switch (kind % 4) {
    case 0:
        return "CAST(x'" + hex + "' AS TEXT)";
    case 1:
        return "CAST(CAST(x'" + hex + "' AS TEXT) AS INTEGER)";
    case 2:
        return "CAST(CAST(x'" + hex + "' AS TEXT) AS REAL)";
    default:
        return "x'" + hex + "'";
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const TemporaryFolder folder;
    static const std::filesystem::path file = folder.path() / "settings.sqlite";
    static const std::shared_ptr<UserDefaults> defaults =
        std::move(SqliteUserDefaults::open(file, [](const Error& error) {
            fuzz::require(false, error.localizedDescription.c_str());
        })).value();
    static Database other = std::move(Database::open({.file = file})).value();
    static const SettingsPersistence settings(defaults);
    constexpr std::string_view keys[] = {
        "UserChosenLanguage", "InstallationId",  "connectedID",       "AccessToken",
        "CurrentGraphJson",   "StepOption",      "NumDecimalDisplay", "SuggestionPreference",
        "RegistrationDate",   "UserHasPassword", "LoginType",         "QueryLogCache"};

    std::string script = "DELETE FROM settings;";
    for (Pieces input(fuzz::textOf(data, size)); !input.isEmpty();) {
        const std::string_view key = keys[input.byte() % std::size(keys)];
        const int type = input.byte() % 8 - 1;
        script += "INSERT OR REPLACE INTO settings(key, type, value) VALUES ('" + std::string(key) + "', " +
                  std::to_string(type) + ", " + literal(input) + ");";
    }
    fuzz::require(other.execute("BEGIN;" + script + "COMMIT").succeeded(), "the rows are stored");

    const StepOption steps = settings.steps();
    fuzz::require(steps >= StepOption::showSteps && steps <= StepOption::stepByStep,
                  "an option is one of them");
    fuzz::require(settings.numDecimalDisplay() != 0, "0 reads as not set");
    fuzz::require(settings.installationID() == settings.installationID(), "there is one installation");
    static_cast<void>(settings.loginType());
    static_cast<void>(settings.registrationDate());
    static_cast<void>(settings.suggestionPreference());
    for (const std::string_view key : keys) {
        static_cast<void>(defaults->array(key));
        static_cast<void>(defaults->date(key));
        const auto value = defaults->value(key);
        if (value) {
            defaults->set(key, *value);
            fuzz::require(defaults->value(key) == value, "a value that was read can be set");
        }
    }
    return 0;
}
