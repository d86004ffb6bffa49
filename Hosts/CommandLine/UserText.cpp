#include "Hosts/CommandLine/UserText.h"

#include "Platform/Foundation/DateFormatter.h"

#include <array>
#include <string_view>

namespace teralune {
namespace {

constexpr std::array<std::string_view, 4> loginTypeWords = {"email", "facebook", "office365", "none"};

} // namespace

boost::json::value dateRecord(const std::optional<Date>& date) {
    static const DateFormatter formatter({.pattern = "yyyy-MM-dd'T'HH:mm:ss'Z'", .timeZone = "UTC"});
    return date ? boost::json::value(formatter.string(*date)) : boost::json::value();
}

boost::json::value textRecord(const std::optional<std::string>& text) {
    return text ? boost::json::value(*text) : boost::json::value();
}

boost::json::object userRecord(const SettingsPersistenceType& user) {
    return {{"signedIn", true},
            {"connectedID", textRecord(user.connectedID())},
            {"email", textRecord(user.userEmail())},
            {"firstName", textRecord(user.firstName())},
            {"lastName", textRecord(user.lastName())},
            {"registrationDate", dateRecord(user.registrationDate())},
            {"hasPassword", user.userHasPassword()},
            {"loginType", loginTypeWords.at(static_cast<std::size_t>(user.loginType()))}};
}

std::string userText(const SettingsPersistenceType& user) {
    const std::string firstName = user.firstName().value_or("");
    const std::string lastName = user.lastName().value_or("");
    std::string name = firstName + (firstName.empty() || lastName.empty() ? "" : " ") + lastName;
    std::string email = user.userEmail().value_or("");
    if (name.empty() && email.empty())
        return "user " + user.connectedID().value_or("");
    if (name.empty())
        return email;
    return email.empty() ? name : name + " <" + email + ">";
}

} // namespace teralune
