#pragma once

#include <utility>

#include "zentavo/foundation/Mutex.h"
#include "zentavo/platform/Device.h"

namespace zentavo::testing {

/// Everything that a `MemoryDevice` answers; the fields stand in the order of its questions.
struct DeviceFacts {
    std::optional<std::string> identifierForVendor = "0F0E0D0C-0B0A-4908-8706-050403020100";
    std::string model = "memory1,1";
    std::string type = "desktop";
    std::string name = "Test device";
    std::string systemName = "Linux";
    std::string systemVersion = "1.2.3";
    std::string locale = "en-US";
    std::string timeZone = "UTC";
    std::string network = "wifi";
    platform::ScreenSize screen = {1280, 800};
};

/// A machine made up by a test. Facts may change at any time, on any thread.
class ZENTAVO_EXPORT MemoryDevice final : public platform::Device {
public:
    explicit MemoryDevice(DeviceFacts facts = {}) : facts_(std::move(facts)) {}

    DeviceFacts facts() const {
        MutexLock lock(mutex_);
        return facts_;
    }
    void set(DeviceFacts facts) {
        MutexLock lock(mutex_);
        facts_ = std::move(facts);
    }

    std::optional<std::string> identifierForVendor() const override { return facts().identifierForVendor; }
    std::string model() const override { return facts().model; }
    std::string type() const override { return facts().type; }
    std::string name() const override { return facts().name; }
    std::string systemName() const override { return facts().systemName; }
    std::string systemVersion() const override { return facts().systemVersion; }
    std::string locale() const override { return facts().locale; }
    std::string timeZone() const override { return facts().timeZone; }
    std::string network() const override { return facts().network; }
    platform::ScreenSize screen() const override { return facts().screen; }

private:
    mutable Mutex mutex_;
    DeviceFacts facts_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo::testing
