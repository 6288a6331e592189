#pragma once

#include "zentavo/platform/Bundle.h"

namespace zentavo::linux_port {

/// One bundle's folder. The information list is read once, when the object is made.
class PlistBundle final : public platform::Bundle {
public:
    /// `path` is absolute and without a trailing slash.
    explicit PlistBundle(std::string path);

    std::string path() const override { return path_; }
    std::optional<std::string> identifier() const override { return infoText("CFBundleIdentifier"); }
    std::optional<Value> info(std::string_view key) const override;

private:
    const std::string path_;
    const Map info_;
};

} // namespace zentavo::linux_port
