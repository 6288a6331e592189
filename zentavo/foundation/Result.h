#pragma once

#include <string>
#include <type_traits>
#include <utility>
#include <variant>

namespace zentavo {

/// Why something could not be done, in a sentence that a developer can act on.
struct Error {
    std::string message;

    friend bool operator==(const Error&, const Error&) = default;
};

/// A value, or the reason why there is none. The SDK's rooms hand errors to each other this way; exceptions do not
/// cross between them. Reading the side that is not there is a programming error (`std::bad_variant_access`).
/// `Failure` is for where a reader wants to know more than a sentence.
template <class T, class Failure = Error>
class [[nodiscard]] Result {
public:
    Result(T value) : state_(std::in_place_index<0>, std::move(value)) {}
    Result(Failure error) : state_(std::in_place_index<1>, std::move(error)) {}

    bool ok() const noexcept { return state_.index() == 0; }
    explicit operator bool() const noexcept { return ok(); }

    T& value() & { return std::get<0>(state_); }
    const T& value() const& { return std::get<0>(state_); }
    T&& value() && { return std::get<0>(std::move(state_)); }

    T& operator*() & { return value(); }
    const T& operator*() const& { return value(); }
    T&& operator*() && { return std::move(*this).value(); }
    T* operator->() { return &value(); }
    const T* operator->() const { return &value(); }

    const Failure& error() const { return std::get<1>(state_); }

private:
    std::variant<T, Failure> state_;
};

/// The outcome of something that yields nothing but may fail.
template <>
class [[nodiscard]] Result<void> {
public:
    Result() = default;
    Result(Error error) : error_(std::move(error)), failed_(true) {}

    bool ok() const noexcept { return !failed_; }
    explicit operator bool() const noexcept { return ok(); }
    const Error& error() const { return error_; }

private:
    Error error_;
    bool failed_ = false;
};

} // namespace zentavo
