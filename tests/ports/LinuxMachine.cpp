#include "ports/linux/IcuCalendar.h"
#include "ports/linux/LinuxClock.h"
#include "ports/linux/LinuxDevice.h"
#include "ports/linux/LinuxRandom.h"
#include "ports/linux/OpenSslKeyServices.h"
#include "ports/linux/PlistBundles.h"
#include "ports/linux/PosixAttachmentFiles.h"
#include "ports/linux/SqlitePreferencesProvider.h"
#include "tests/ports/Machine.h"
#include "tests/ports/TemporaryFolder.h"

namespace zentavo::tests {
namespace {

using namespace linux_port;

std::string plistOf(const Value& value) {
    if (const auto* text = value.asString()) {
        return "<string>" + *text + "</string>";
    }
    if (const auto* number = value.asInteger()) {
        return "<integer>" + std::to_string(*number) + "</integer>";
    }
    if (const auto* flag = value.asBool()) {
        return *flag ? "<true/>" : "<false/>";
    }
    std::string result;
    if (const auto* list = value.asList()) {
        for (const Value& item : *list) {
            result += plistOf(item);
        }
        return "<array>" + result + "</array>";
    }
    for (const auto& [key, item] : *value.asMap()) {
        result += "<key>" + key + "</key>" + plistOf(item);
    }
    return "<dict>" + result + "</dict>";
}

class LinuxMachine final : public Machine {
public:
    std::shared_ptr<platform::PreferencesProvider> process() override { return provider(folder_.path() / "a/b"); }
    std::shared_ptr<platform::PreferencesProvider> processWithoutPlace() override {
        return provider(folder_.write("file", "") / "below");
    }

    std::shared_ptr<platform::Bundles> bundles(const Map& info) override {
        return std::make_shared<PlistBundles>(addBundle("Main.app", info));
    }
    std::string addBundle(const Map& info) override { return addBundle("Other.app", info); }

    std::shared_ptr<platform::Bundles> bundlesOfExtension(const Map& appInfo, const Map& extensionInfo) override {
        addBundle("Shop.app", appInfo);
        const std::filesystem::path extension = addBundle("Shop.app/PlugIns/Push.appex", extensionInfo);
        return std::make_shared<PlistBundles>(PlistBundles::bundleOf(extension / "Push"));
    }

    std::shared_ptr<platform::Device> device(const std::string& vendor) override {
        folder_.write("etc/machine-id", "3d1219c7c4c5404aaa1f6d2a48adfda4\n");
        return std::make_shared<LinuxDevice>(vendor, folder_.path());
    }
    std::shared_ptr<platform::Clock> clock() override { return std::make_shared<LinuxClock>(); }
    std::shared_ptr<platform::Random> random() override { return std::make_shared<LinuxRandom>(); }
    std::shared_ptr<platform::AttachmentFiles> attachmentFiles() override {
        return std::make_shared<PosixAttachmentFiles>();
    }

    std::shared_ptr<platform::Calendar> calendar(std::chrono::weekday firstWeekday) override {
        return calendar(firstWeekday == std::chrono::Monday ? "en-GB" : "en-US", "Etc/GMT-2");
    }
    std::shared_ptr<platform::Calendar> calendar(const char* locale, const char* timeZone) override {
        return std::make_shared<IcuCalendar>(locale, timeZone, log);
    }
    std::shared_ptr<platform::KeyServices> keyServices() override { return std::make_shared<OpenSslKeyServices>(); }

private:
    std::shared_ptr<platform::PreferencesProvider> provider(const std::filesystem::path& folder) {
        return std::make_shared<SqlitePreferencesProvider>(folder, "standard", "com.example.shop", log, nullptr);
    }
    std::string addBundle(const char* name, const Map& info) {
        const auto file = folder_.write(std::string(name) + "/Info.plist", R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0">)" + plistOf(info) + "</plist>");
        return file.parent_path();
    }

    const TemporaryFolder folder_;
};

const bool added = [] {
    machinesUnderTest().push_back({"linux", [] { return std::make_unique<LinuxMachine>(); }, /*hasZones*/ true});
    return true;
}();

} // namespace
} // namespace zentavo::tests
