#pragma once

#include "Platform/Foundation/Error.h"
#include "Platform/Http/HTTPURLResponse.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace teralune {

/// Gathers one reply from the lines and pieces in which an HTTP engine delivers it, within limits. Interim
/// replies (status 100 to 199) are replaced by what follows them; trailers are dropped.
class ReplyCollector {
public:
    ReplyCollector(std::size_t headerLimit, std::size_t bodyLimit)
        : headerLimit_(headerLimit)
        , bodyLimit_(bodyLimit) {}

    /// One line of the head with its line end: a status line, a field, or the empty line at the end. False
    /// when the limit of all heads together is passed.
    bool addHeaderLine(std::string_view line);
    /// A piece of the decoded body; false when the limit is passed.
    bool addBody(std::string_view piece);

    bool isTooLong() const { return isTooLong_; }
    /// What is wrong with a reply that the engine takes for complete although the connection ended inside its
    /// head, or although its lengths contradict each other, so that nobody knows where it ends.
    std::optional<Error> fault() const;
    const HttpHeaders& headers() const { return headers_; }
    HttpHeaders takeHeaders() { return std::move(headers_); }
    std::string takeBody() { return std::move(body_); }

private:
    void addField(std::string_view line);

    std::size_t headerLimit_;
    std::size_t bodyLimit_;
    std::size_t headerBytes_ = 0;
    bool isHeadComplete_ = false;
    bool isTooLong_ = false;
    HttpHeaders headers_;
    std::string body_;
};

} // namespace teralune
