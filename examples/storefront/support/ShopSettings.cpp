#include "examples/storefront/support/ShopSettings.h"

#include <cstdlib>

#include <ports/linux/LinuxPlatform.h>

namespace storefront {

ShopSettings ShopSettings::fromEnvironment() {
    ShopSettings settings;
    if (const char* server = std::getenv("STOREFRONT_SERVER")) {
        settings.server = server;
    }
    if (const char* data = std::getenv("STOREFRONT_DATA")) {
        settings.data = data;
    }
    return settings;
}

std::shared_ptr<zentavo::platform::Platform> makePlatform(const ShopSettings& settings) {
    // The default platform serves a host that has no wishes; this one chooses where its data is.
    return zentavo::linux_port::makeLinuxPlatform({settings.data, {}});
}

std::shared_ptr<zentavo::Zentavo> makeSdk(const ShopSettings& settings,
                                          const std::shared_ptr<zentavo::platform::Platform>& platform) {
    auto sdk = std::make_shared<zentavo::Zentavo>(platform);
    zentavo::Zentavo::setShared(sdk);
    sdk->setEndpoints(zentavo::Endpoints::all(settings.server));
    return sdk;
}

} // namespace storefront
