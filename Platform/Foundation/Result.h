#pragma once

#include "Platform/Foundation/Error.h"

#include <optional>
#include <utility>
#include <variant>

namespace teralune {

/// The outcome of an operation that may fail in an expected way: a value or an Error, never neither.
/// value() on a failure and error() on a success are programmer errors (std::bad_variant_access).
template<class T>
class [[nodiscard]] Result {
public:
    Result(T value) : outcome_(std::in_place_index<0>, std::move(value)) {}
    Result(Error error) : outcome_(std::in_place_index<1>, std::move(error)) {}

    bool succeeded() const { return outcome_.index() == 0; }
    explicit operator bool() const { return succeeded(); }

    const T& value() const& { return std::get<0>(outcome_); }
    T& value() & { return std::get<0>(outcome_); }
    T&& value() && { return std::get<0>(std::move(outcome_)); }
    const Error& error() const { return std::get<1>(outcome_); }

private:
    std::variant<T, Error> outcome_;
};

template<>
class [[nodiscard]] Result<void> {
public:
    Result() = default;
    Result(Error error) : error_(std::move(error)) {}

    bool succeeded() const { return !error_; }
    explicit operator bool() const { return succeeded(); }

    const Error& error() const { return error_.value(); }

private:
    std::optional<Error> error_;
};

} // namespace teralune
