#pragma once

#include <boost/json/value.hpp>

#include <string>
#include <string_view>

namespace teralune {

/// Standard output, which holds nothing but what the command was asked for: a text for people, or one JSON
/// value on one line. Main thread.
class Output {
public:
    enum class Form { text, json };
    explicit Output(Form form) : form_(form) {}

    /// One of the two, by the form. Of what a server or a file put into the text, nothing but line feeds
    /// reaches the terminal as a control character.
    void show(const boost::json::value& data, std::string_view text);
    /// Bytes as they are, where the form does not matter.
    void showBytes(std::string_view bytes);
    /// False when not all of it could be written.
    [[nodiscard]] bool finish();

    /// The text on one line, whatever it holds.
    static std::string onOneLine(std::string_view text);

private:
    Form form_;
    bool failed_ = false;
};

} // namespace teralune
