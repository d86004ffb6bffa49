#include "Benchmarks/NotebookBytes.h"

#include <array>
#include <chrono>
#include <cstdio>

namespace teralune::benchmarks {
namespace {

constexpr std::array<const char*, 12> monthNames{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

std::string dateOf(int note) {
    using namespace std::chrono;
    const sys_seconds moment = sys_days(2024y / January / 1) - minutes(7 * note);
    const auto day = floor<days>(moment);
    const year_month_day date(day);
    const hh_mm_ss time(moment - day);
    const int hour = static_cast<int>(time.hours().count());
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%s %02u, %04d %02d:%02d:%02d %s",
                  monthNames[static_cast<unsigned>(date.month()) - 1], static_cast<unsigned>(date.day()),
                  static_cast<int>(date.year()), hour % 12 == 0 ? 12 : hour % 12,
                  static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()),
                  hour < 12 ? "AM" : "PM");
    return text.data();
}

} // namespace

std::string problemOf(int note) {
    return "\\frac{" + std::to_string(note % 97) + "x^2+" + std::to_string(note) + "}{x-" +
           std::to_string(note % 31) + "}=" + std::to_string(note % 13);
}

std::string notebookBytes(int noteCount, NotebookVariation variation) {
    std::string bytes = "[";
    for (int note = 0; note < noteCount; ++note) {
        std::array<char, 32> id{};
        std::snprintf(id.data(), id.size(), "5c30f0a7%016x", noteCount - note);
        std::string problem;
        for (const char character : problemOf(note)) {
            problem += character == '\\' ? std::string("\\\\") : std::string(1, character);
        }
        const bool isChanged = variation.everyHundredthIsChanged && note % 100 == 0;
        const std::string date = dateOf(note);
        bytes += std::string(note == 0 ? "" : ",") + R"({"_id":")" + id.data() + R"(","problem":")" +
                 problem + R"(","savedFrom":"Solutions","lastChange":")" + date + R"(","date":")" + date +
                 R"(","isFavorite":)" + (note % 7 == 0 ? "true" : "false") +
                 R"(,"topic":"Algebra","notes":"remarks on note )" + std::to_string(note) +
                 (isChanged ? ", changed" : "") + R"(","graph":"","url":"","tags":["tag)" +
                 std::to_string(note % 5) + R"(","tag)" + std::to_string(5 + note % 17) + R"(","tag)" +
                 std::to_string(30 + note % 101) + R"("]})";
    }
    return bytes + "]";
}

} // namespace teralune::benchmarks
