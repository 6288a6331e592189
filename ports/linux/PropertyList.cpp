#include "ports/linux/PropertyList.h"

#include <cstdlib>
#include <memory>

#include <plist/plist.h>

#include "ports/linux/BinaryPlistCheck.h"

namespace zentavo::linux_port {
namespace {

constexpr int maximumDepth = 64;
/// Lists and maps of an XML list. The library gives up one frame of the stack for each that is inside another.
constexpr int maximumContainers = 4096;

struct NodeRelease {
    void operator()(void* node) const noexcept { plist_free(node); }
};
struct MemoryRelease {
    void operator()(void* memory) const noexcept { std::free(memory); }
};
using Node = std::unique_ptr<void, NodeRelease>;
template <class T>
using Memory = std::unique_ptr<T, MemoryRelease>;

/// Counts the tags that may begin a list or a map (and some others) without following them, so that comments and the
/// like can hide nothing.
bool isHarmlessXml(std::string_view text) {
    int containers = 0;
    for (std::size_t i = text.find('<'); i != std::string_view::npos; i = text.find('<', i + 1)) {
        const std::size_t name = text.find_first_not_of(" \t\r\n", i + 1);
        const std::string_view rest = name == std::string_view::npos ? "" : text.substr(name);
        containers += rest.starts_with("dict") || rest.starts_with("array") ? 1 : 0;
    }
    return containers <= maximumContainers;
}

std::optional<std::string> textOf(plist_t node) {
    char* text = nullptr;
    plist_get_string_val(node, &text);
    const Memory<char> holder(text);
    return text != nullptr ? std::optional<std::string>(text) : std::nullopt;
}

/// None for what has no counterpart, and for what lies too deep.
std::optional<Value> convert(plist_t node, int depth);

Value convertList(plist_t node, int depth) {
    List list;
    const std::uint32_t count = plist_array_get_size(node);
    for (std::uint32_t i = 0; i < count; ++i) {
        if (auto item = convert(plist_array_get_item(node, i), depth + 1)) {
            list.push_back(std::move(*item));
        }
    }
    return list;
}

Value convertMap(plist_t node, int depth) {
    Map map;
    plist_dict_iter state = nullptr;
    plist_dict_new_iter(node, &state);
    const Memory<void> stateHolder(state);
    for (;;) {
        char* key = nullptr;
        plist_t item = nullptr;
        plist_dict_next_item(node, state, &key, &item);
        const Memory<char> keyHolder(key);
        if (key == nullptr || item == nullptr) {
            return map;
        }
        if (auto value = convert(item, depth + 1)) {
            map.set(key, std::move(*value));
        }
    }
}

std::optional<Value> convert(plist_t node, int depth) {
    if (node == nullptr || depth > maximumDepth) {
        return std::nullopt;
    }
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        std::uint8_t flag = 0;
        plist_get_bool_val(node, &flag);
        return Value(flag != 0);
    }
    case PLIST_UINT: {
        // Negative numbers come in two's complement.
        std::uint64_t number = 0;
        plist_get_uint_val(node, &number);
        return Value(static_cast<std::int64_t>(number));
    }
    case PLIST_REAL: {
        double number = 0;
        plist_get_real_val(node, &number);
        return Value(number);
    }
    case PLIST_STRING:
        if (auto text = textOf(node)) {
            return Value(std::move(*text));
        }
        return std::nullopt;
    case PLIST_ARRAY:
        return convertList(node, depth);
    case PLIST_DICT:
        return convertMap(node, depth);
    default:
        return std::nullopt;
    }
}

} // namespace

std::optional<Value> readPropertyList(std::string_view text) {
    plist_t parsed = nullptr;
    const auto size = static_cast<std::uint32_t>(text.size());
    if (text.starts_with("bplist00")) {
        if (isHarmlessBinaryPlist(text)) {
            plist_from_bin(text.data(), size, &parsed);
        }
    } else if (isHarmlessXml(text)) {
        plist_from_xml(text.data(), size, &parsed);
    }
    const Node holder(parsed);
    return convert(parsed, 0);
}

} // namespace zentavo::linux_port
