#pragma once

#include <concepts>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Value.h"

namespace zentavo::socketio {

/// Bytes that travel as they are.
struct Binary {
    std::string bytes;
};

/// One argument of an event: a JSON value or bytes.
class Argument {
public:
    template <class T>
        requires(std::constructible_from<Value, T> && !std::same_as<std::remove_cvref_t<T>, Argument>)
    Argument(T&& value) : data_(Value(std::forward<T>(value))) {}
    Argument(Binary binary) : data_(std::move(binary)) {}

private:
    friend class Arguments;
    std::variant<Value, Binary> data_;
};

/// The arguments of an event or an acknowledgement. Bytes stand beside the values as attachments; where they belong,
/// the values hold a placeholder.
///
///     socket->emit("photo", {"beach", Binary{jpeg}, 12});
///
///     Arguments arguments;                                    // bytes inside a map
///     arguments.add(Map{{"name", "beach"}, {"data", arguments.attach(jpeg)}});
class ZENTAVO_EXPORT Arguments {
public:
    Arguments() = default;
    Arguments(std::initializer_list<Argument> arguments);
    /// What a packet brought.
    Arguments(List values, std::vector<std::string> attachments)
        : values_(std::move(values)), attachments_(std::move(attachments)) {}

    Arguments& add(Argument argument);
    /// Takes bytes along and returns what stands for them: to be placed anywhere inside a value that is added.
    Value attach(std::string bytes);

    std::size_t size() const noexcept { return values_.size(); }
    bool empty() const noexcept { return values_.empty(); }
    /// Null beyond the end.
    const Value& operator[](std::size_t index) const noexcept;
    /// The text of argument `index`; empty when it is none.
    std::string_view text(std::size_t index) const noexcept;
    /// The bytes of argument `index`; a null pointer when it is no binary.
    const std::string* binary(std::size_t index) const noexcept { return binary((*this)[index]); }
    /// The bytes that `value`, found somewhere inside an argument, stands for; a null pointer when it is no
    /// placeholder.
    const std::string* binary(const Value& value) const noexcept;

    const List& values() const noexcept { return values_; }
    const std::vector<std::string>& attachments() const noexcept { return attachments_; }
    std::vector<std::string> takeAttachments() noexcept { return std::move(attachments_); }

private:
    List values_;
    std::vector<std::string> attachments_;
};

} // namespace zentavo::socketio
