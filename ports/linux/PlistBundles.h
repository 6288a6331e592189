#pragma once

#include <filesystem>
#include <memory>
#include <mutex>

#include "zentavo/platform/Bundle.h"

namespace zentavo::linux_port {

/// Bundles as folders with an information list: "Info.plist", or else "Contents/Info.plist", in XML or binary form. Dates,
/// bytes and object references have no counterpart among our values and are left out. Any thread.
///
/// The main bundle is the innermost folder named "*.app" or "*.appex" that holds the executable directly or at most two
/// folders deep ("Shop.app/shop", "Shop.app/bin/shop", "Shop.app/Contents/Linux/shop"); so an extension's program in
/// "Shop.app/PlugIns/Push.appex" belongs to the extension. Any other program's bundle is the folder it lies in.
class ZENTAVO_EXPORT PlistBundles final : public platform::Bundles {
public:
    /// Empty: the main bundle is found as above, when it is first asked for.
    explicit PlistBundles(std::filesystem::path mainBundle = {});
    ~PlistBundles() override;

    std::shared_ptr<const platform::Bundle> main() override;
    std::shared_ptr<const platform::Bundle> open(std::string_view path) override;

    /// The folder of the bundle that a program at this absolute path belongs to.
    static std::filesystem::path bundleOf(const std::filesystem::path& executable);

private:
    const std::filesystem::path mainPath_;
    std::once_flag opened_;
    std::shared_ptr<const platform::Bundle> main_;
};

} // namespace zentavo::linux_port
