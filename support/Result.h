// The outcome of something that can fail: a value, or an error with a text for the user.
#pragma once

#include <string>
#include <utility>
#include <variant>

namespace tavo {

// A failure that somebody will read. `message` is plain text, complete in itself.
struct Error {
    std::string message;

    bool operator==(const Error&) const = default;
};

// Either a T or an Error. Reading the side that is not there is a programming error (it throws
// std::bad_variant_access, which nothing catches).
template<typename T>
class [[nodiscard]] Result {
public:
    Result(T value) : state_(std::in_place_index<0>, std::move(value)) {}
    Result(Error error) : state_(std::in_place_index<1>, std::move(error)) {}

    [[nodiscard]] bool ok() const { return state_.index() == 0; }
    explicit operator bool() const { return ok(); }

    [[nodiscard]] const T& value() const& { return std::get<0>(state_); }
    [[nodiscard]] T&& value() && { return std::get<0>(std::move(state_)); }
    [[nodiscard]] const Error& error() const { return std::get<1>(state_); }

private:
    std::variant<T, Error> state_;
};

}  // namespace tavo
