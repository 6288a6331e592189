#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Value.h"

namespace zentavo::platform {

/// A program's own folder and what its information list says about it. Immutable: read on any thread.
class ZENTAVO_EXPORT Bundle {
public:
    virtual ~Bundle() = default;

    /// The absolute path of the bundle's folder, without a trailing slash ("/opt/shop/Shop.app").
    virtual std::string path() const = 0;
    /// The entry "CFBundleIdentifier" where it is text; none for a program without an information list.
    virtual std::optional<std::string> identifier() const = 0;
    /// An entry of the information list; none when it is not there.
    virtual std::optional<Value> info(std::string_view key) const = 0;

    std::optional<std::string> infoText(std::string_view key) const;
};

class ZENTAVO_EXPORT Bundles {
public:
    virtual ~Bundles() = default;

    /// The bundle of the running program; the same object on every call, never null.
    virtual std::shared_ptr<const Bundle> main() = 0;
    /// The bundle at `path`; null when there is no such folder. One without an information list, or with one that
    /// cannot be read (hostile, damaged, above 1 MiB), is a bundle without identifier and entries.
    virtual std::shared_ptr<const Bundle> open(std::string_view path) = 0;
};

} // namespace zentavo::platform
