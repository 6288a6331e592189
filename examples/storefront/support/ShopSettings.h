#pragma once

#include <memory>
#include <string>

#include <zentavo/Zentavo.h>

namespace storefront {

/// What the three programs of the shop agree on. The bus starts two of them, with its own arguments and no others, so
/// they take it from the environment:
///
///     STOREFRONT_SERVER   where the services are; the dev server's usual place without it
///     STOREFRONT_DATA     the folder for the shop's data; the user's own without it
struct ShopSettings {
    std::string server = "http://127.0.0.1:8787";
    std::string data;

    static ShopSettings fromEnvironment();
};

/// The platform on which a program of the shop runs.
std::shared_ptr<zentavo::platform::Platform> makePlatform(const ShopSettings& settings);
/// Makes the SDK's shared instance on it.
std::shared_ptr<zentavo::Zentavo> makeSdk(const ShopSettings& settings,
                                          const std::shared_ptr<zentavo::platform::Platform>& platform);

} // namespace storefront
