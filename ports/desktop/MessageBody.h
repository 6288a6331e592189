#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "ports/desktop/Variant.h"
#include "zentavo/foundation/Export.h"

/// Reading what stands in a message of the bus, whose body is a tuple. The bus lets nothing through that is not well
/// formed, and a call or an answer of another type than was declared is refused before it is read: which type that must
/// be is said below.
namespace zentavo::desktop::body {

/// The text at `index` ("s").
ZENTAVO_EXPORT std::string text(const Variant& body, std::size_t index = 0);
/// The bytes at `index` ("ay").
ZENTAVO_EXPORT std::string bytes(const Variant& body, std::size_t index);
/// The number at `index` ("u").
ZENTAVO_EXPORT std::uint32_t number(const Variant& body, std::size_t index = 0);
/// All texts of a list that is everything ("(as)"), and such a body.
ZENTAVO_EXPORT std::vector<std::string> texts(const Variant& body);
ZENTAVO_EXPORT Variant of(const std::vector<std::string>& texts);

/// A dictionary that is everything ("(a{sv})"). What is missing is empty.
class ZENTAVO_EXPORT Dictionary {
public:
    explicit Dictionary(const Variant& body);

    std::string text(const char* name);
    std::string bytes(const char* name);
    /// Says which entry that was asked for is of another kind, and was read as empty; empty where none is.
    const std::string& wrong() const { return wrong_; }

private:
    std::string read(const char* name, const GVariantType* type, std::string (*convert)(GVariant*));

    const Variant entries_;
    std::string wrong_;
};

} // namespace zentavo::desktop::body
