#include "ports/linux/PlistBundle.h"

#include "ports/linux/PropertyList.h"
#include "ports/linux/TextFile.h"

namespace zentavo::linux_port {
namespace {

constexpr std::size_t maximumBytes = 1U << 20U;

Map readInfo(const std::string& path) {
    auto text = readTextFile(path + "/Info.plist", maximumBytes);
    if (!text) {
        text = readTextFile(path + "/Contents/Info.plist", maximumBytes);
    }
    auto list = text ? readPropertyList(*text) : std::nullopt;
    return list && list->asMap() != nullptr ? std::move(*list->asMap()) : Map();
}

} // namespace

PlistBundle::PlistBundle(std::string path) : path_(std::move(path)), info_(readInfo(path_)) {}

std::optional<Value> PlistBundle::info(std::string_view key) const {
    const Value* value = info_.find(key);
    return value != nullptr ? std::optional<Value>(*value) : std::nullopt;
}

} // namespace zentavo::linux_port
