#include "Tests/Faults/HostileTexts.h"

#include "Tests/Faults/FaultCounts.h"

#include <boost/json.hpp>

#include <utility>
#include <vector>

namespace teralune {
namespace {

std::string repeated(std::string_view text, std::size_t count) {
    std::string all;
    for (std::size_t index = 0; index < count; ++index)
        all += text;
    return all;
}

/// Written as they would stand in the text; not all are JSON.
std::vector<std::string> wrongValues() {
    std::vector<std::string> values = {
        "null", "true", "0", "1", "-1", "2.5", "9223372036854775807", "-9223372036854775809",
        "18446744073709551616", "1e300", "1e999", "-0", "NaN", "Infinity", "[]", "[null]", "[[\"a\"]]",
        "[\"a\",\"a\",\"\"]", "{}", "{\"a\":1}",
        // Texts: no character, no separator, no Unicode, and what a header, a query or a script would trip
        // on.
        R"("")", R"("text")", R"("\u0000")", R"("a\u0000b")", R"("\ud800")", R"("\udc00\ud800")",
        R"("\uffff")", R"("a\r\nX-Injected: y")", R"("\u0001\u007f")", R"("';--%00%s%n</script>")",
        "\"\xff\"", "\"\xed\xa0\x80\"", "\"\xf4\x90\x80\x80\"", "\"\xc0\x80\"", "\"a\nb\"",
        "\"" + std::string(10'240, 'x') + "\""};
    for (const std::size_t depth : {32U, 64U, 65U, 1'000U})
        values.push_back(repeated("[", depth) + repeated("]", depth));
    return values;
}

/// The text around each value of a document, one value at a time.
std::vector<std::pair<std::string, std::string>> gaps(boost::json::value document) {
    const std::string mark = "\"@gap@\"";
    std::vector<std::pair<std::string, std::string>> found;
    const std::function<void(boost::json::value&)> visit = [&](boost::json::value& value) {
        const boost::json::value kept = std::exchange(value, boost::json::value("@gap@"));
        const std::string text = boost::json::serialize(document);
        const std::size_t at = text.find(mark);
        found.emplace_back(text.substr(0, at), text.substr(at + mark.size()));
        value = kept;
        if (value.is_object())
            for (auto& member : value.get_object())
                visit(member.value());
        if (value.is_array())
            for (boost::json::value& element : value.get_array())
                visit(element);
    };
    visit(document);
    return found;
}

} // namespace

void forEachDamagedForm(const std::string& text, const std::function<void(const std::string&)>& attack) {
    for (std::size_t length = 0; length < text.size(); ++length) {
        attack(text.substr(0, length));
        for (const char byte : {'\0', '"', '{', ']', '\\', '\xff'}) {
            std::string damaged = text;
            damaged[length] = byte;
            attack(damaged);
        }
    }
    const std::vector<std::string> wrong = wrongValues();
    for (const auto& [before, after] : gaps(boost::json::parse(text)))
        for (const std::string& value : wrong)
            attack(before + value + after);
    for (const std::size_t depth : {63U, 64U, 1'000U, 100'000U, 1'000'000U})
        for (const char* opening : {"[", "{\"a\":"}) {
            attack(repeated(opening, depth));
            attack(repeated("[", depth) + text + repeated("]", depth));
        }
    for (const std::string& whole :
         {text + text, "\xef\xbb\xbf" + text, text + std::string(1, '\0'), "\xff\xfe" + text,
          repeated(" ", faultCount(100'000, 10'000'000)) + text})
        attack(whole);
}

} // namespace teralune
