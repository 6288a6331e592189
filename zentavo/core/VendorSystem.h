#pragma once

#include <memory>
#include <string>

#include "zentavo/platform/Device.h"

namespace zentavo {

/// What the device context says about hardware and system.
class VendorSystem {
public:
    virtual ~VendorSystem() = default;

    virtual std::string manufacturer() const = 0;
    virtual std::string model() const = 0;
    /// "" when the system has no identifier for this vendor.
    virtual std::string vendorIdentifier() const = 0;
    virtual std::string systemName() const = 0;
    virtual std::string systemVersion() const = 0;
    virtual platform::ScreenSize screen() const = 0;
};

/// Answers through the platform's current device.
class iOSVendorSystem final : public VendorSystem {
public:
    explicit iOSVendorSystem(std::shared_ptr<platform::Device> current) : device(std::move(current)) {}

    /// The services expect this word on every platform.
    std::string manufacturer() const override { return "Apple"; }
    std::string model() const override { return device->model(); }
    std::string vendorIdentifier() const override { return device->identifierForVendor().value_or(""); }
    std::string systemName() const override { return device->systemName(); }
    std::string systemVersion() const override { return device->systemVersion(); }
    platform::ScreenSize screen() const override { return device->screen(); }

    const std::shared_ptr<platform::Device> device;
};

} // namespace zentavo
