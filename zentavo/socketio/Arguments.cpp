#include "zentavo/socketio/Arguments.h"

#include "zentavo/socketio/Packet.h"

namespace zentavo::socketio {

Arguments::Arguments(std::initializer_list<Argument> arguments) {
    values_.reserve(arguments.size());
    for (const auto& argument : arguments) {
        add(argument);
    }
}

Arguments& Arguments::add(Argument argument) {
    if (auto* binary = std::get_if<Binary>(&argument.data_)) {
        values_.push_back(attach(std::move(binary->bytes)));
    } else {
        values_.push_back(std::get<Value>(std::move(argument.data_)));
    }
    return *this;
}

Value Arguments::attach(std::string bytes) {
    attachments_.push_back(std::move(bytes));
    return Map{{"_placeholder", true}, {"num", attachments_.size() - 1}};
}

const Value& Arguments::operator[](std::size_t index) const noexcept {
    static const Value null;
    return index < values_.size() ? values_[index] : null;
}

std::string_view Arguments::text(std::size_t index) const noexcept {
    const auto* text = (*this)[index].asString();
    return text != nullptr ? std::string_view(*text) : std::string_view();
}

const std::string* Arguments::binary(const Value& value) const noexcept {
    const auto number = placeholderNumber(value);
    return number && *number >= 0 && static_cast<std::size_t>(*number) < attachments_.size()
               ? &attachments_[static_cast<std::size_t>(*number)]
               : nullptr;
}

} // namespace zentavo::socketio
