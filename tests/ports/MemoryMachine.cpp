#include "ports/memory/FixedZoneCalendar.h"
#include "ports/memory/ManualClock.h"
#include "ports/memory/MemoryAttachmentFiles.h"
#include "ports/memory/MemoryBundles.h"
#include "ports/memory/MemoryDevice.h"
#include "ports/memory/MemoryPreferencesProvider.h"
#include "ports/memory/SeededRandom.h"
#include "tests/ports/Machine.h"

namespace zentavo::tests {
namespace {

using namespace zentavo::testing;

class MemoryMachine final : public Machine {
public:
    std::shared_ptr<platform::PreferencesProvider> process() override {
        return std::make_shared<MemoryPreferencesProvider>("com.example.shop", log, store_);
    }
    std::shared_ptr<platform::PreferencesProvider> processWithoutPlace() override {
        const auto provider = std::make_shared<MemoryPreferencesProvider>("com.example.shop", log);
        provider->refuseAll();
        return provider;
    }

    std::shared_ptr<platform::Bundles> bundles(const Map& info) override {
        fill(*bundles_->mainBundle(), info);
        return bundles_;
    }
    std::string addBundle(const Map& info) override {
        const auto bundle = bundles_->add("/memory/Other.app");
        fill(*bundle, info);
        return bundle->path();
    }

    std::shared_ptr<platform::Bundles> bundlesOfExtension(const Map& appInfo, const Map& extensionInfo) override {
        const auto bundles = std::make_shared<MemoryBundles>("/apps/Shop.app/PlugIns/Push.appex");
        fill(*bundles->mainBundle(), extensionInfo);
        fill(*bundles->add("/apps/Shop.app"), appInfo);
        return bundles;
    }

    std::shared_ptr<platform::Device> device(const std::string& vendor) override {
        DeviceFacts facts;
        facts.identifierForVendor =
            vendor == "example" ? "0F0E0D0C-0B0A-4908-8706-050403020100" : "1F0E0D0C-0B0A-4908-8706-050403020100";
        return std::make_shared<MemoryDevice>(facts);
    }
    std::shared_ptr<platform::Clock> clock() override { return std::make_shared<ManualClock>(); }
    std::shared_ptr<platform::Random> random() override { return std::make_shared<SeededRandom>(1); }
    std::shared_ptr<platform::AttachmentFiles> attachmentFiles() override {
        return std::make_shared<MemoryAttachmentFiles>();
    }

    std::shared_ptr<platform::Calendar> calendar(std::chrono::weekday firstWeekday) override {
        return std::make_shared<FixedZoneCalendar>(std::chrono::hours(2), firstWeekday);
    }
    std::shared_ptr<platform::Calendar> calendar(const char*, const char*) override { return nullptr; }
    std::shared_ptr<platform::KeyServices> keyServices() override { return nullptr; }

private:
    static void fill(MemoryBundle& bundle, const Map& info) {
        for (const auto& [key, value] : info) {
            bundle.set(key, value);
        }
    }

    const std::shared_ptr<MemoryStore> store_ = std::make_shared<MemoryStore>();
    const std::shared_ptr<MemoryBundles> bundles_ = std::make_shared<MemoryBundles>();
};

const bool added = [] {
    machinesUnderTest().push_back({"memory", [] { return std::make_unique<MemoryMachine>(); }});
    return true;
}();

} // namespace
} // namespace zentavo::tests
