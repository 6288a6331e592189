#include "zentavo/core/Context.h"

#include "zentavo/core/VendorSystem.h"
#include "zentavo/foundation/Version.h"

namespace zentavo {

namespace {

Map describe(const platform::Platform& platform) {
    const iOSVendorSystem system(platform.device);
    const auto& device = *platform.device;
    const auto bundle = platform.bundles->main();
    const auto screen = system.screen();
    const auto info = [&](const char* key) { return bundle->infoText(key).value_or(""); };

    const std::string userAgent = "ZentavoSDK/" ZENTAVO_VERSION " (" + system.systemName() + " " +
                                  system.systemVersion() + "; " + system.model() + ")";
    return Map{
        {"library", Map{{"name", "ZentavoSDK"}, {"version", ZENTAVO_VERSION}}},
        {"app", Map{{"name", info("CFBundleDisplayName")},
                    {"version", info("CFBundleShortVersionString")},
                    {"build", info("CFBundleVersion")},
                    {"namespace", bundle->identifier().value_or("")}}},
        {"device", Map{{"manufacturer", system.manufacturer()},
                       {"type", device.type()},
                       {"model", system.model()},
                       {"name", device.name()},
                       {"id", system.vendorIdentifier()}}},
        {"os", Map{{"name", system.systemName()}, {"version", system.systemVersion()}}},
        {"screen", Map{{"width", screen.width}, {"height", screen.height}}},
        {"locale", device.locale()},
        {"timezone", device.timeZone()},
        // The SDK never reads the position; the services want the entry all the same.
        {"location", Map{{"lat", 0}, {"long", 0}, {"type", "Unknown"}}},
        {"network", device.network()},
        {"userAgent", userAgent},
    };
}

} // namespace

Context::Context(const platform::Platform& platform)
    : staticContext_(describe(platform)), instanceId_(platform.random->uuidText()) {}

Map Context::execute() const {
    Map context = staticContext_;
    context.set("instanceId", instanceId_);
    return context;
}

} // namespace zentavo
