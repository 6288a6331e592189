// The assembly: what a Linux host without a toolkit gets.

#include "ports/linux/LinuxPlatform.h"

#include <filesystem>
#include <future>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

namespace zentavo::linux_port {
namespace {

class LinuxPlatformTest : public ::testing::Test {
protected:
    LinuxPlatformTest() {
        std::string name = std::filesystem::temp_directory_path() / "zentavo-XXXXXX";
        folder = mkdtemp(name.data());
    }
    ~LinuxPlatformTest() override { std::filesystem::remove_all(folder); }

    static long threads() { return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {}); }

    std::filesystem::path folder;
};

TEST_F(LinuxPlatformTest, HasEveryAnswerAndStartsAndWritesNothing) {
    const auto before = threads();
    const auto made = makeLinuxPlatform({.dataFolder = folder / "data", .mainBundle = {}});
    EXPECT_TRUE(made->preferences && made->bundles && made->device && made->urlSession && made->queues && made->clock &&
                made->random && made->calendar && made->attachmentFiles && made->systemLog && made->console);
    const auto interface = made->userInterface();
    EXPECT_TRUE(interface->mainQueue && interface->userNotifications && interface->application);
    EXPECT_EQ(threads(), before);
    EXPECT_FALSE(std::filesystem::exists(folder / "data"));

    made->preferences->standard()->set("key", Value("kept"));
    EXPECT_TRUE(std::filesystem::exists(folder / "data/preferences"));
    const auto again = makeLinuxPlatform({.dataFolder = folder / "data", .mainBundle = {}});
    EXPECT_EQ(again->preferences->standard()->string("key"), "kept");
}

TEST_F(LinuxPlatformTest, WithoutAUserInterfaceNobodyIsAskedAndTheMainQueueIsTheWorkers) {
    const auto made = makeLinuxPlatform({.dataFolder = folder, .mainBundle = {}});
    const auto interface = made->userInterface();
    std::promise<platform::AuthorizationStatus> status;
    std::promise<bool> granted;
    std::promise<bool> onMain;
    interface->userNotifications->settings([&](auto answer) { status.set_value(answer); });
    interface->userNotifications->requestAuthorization(platform::authorizeAlert, [&](bool answer, const auto& error) {
        granted.set_value(answer || !error);
        onMain.set_value(interface->mainQueue->isCurrent());
    });
    EXPECT_EQ(status.get_future().get(), platform::AuthorizationStatus::notDetermined);
    EXPECT_FALSE(granted.get_future().get());
    EXPECT_TRUE(onMain.get_future().get());

    // A service extension is such a host, and makes a kind of notification known.
    auto& notifications = *interface->userNotifications;
    notifications.addCategory({"orders", {{"track", "Track"}}});
    notifications.addCategory({"orders", {}});
    std::promise<std::vector<platform::NotificationCategory>> known;
    std::promise<bool> shown;
    notifications.categories([&](auto categories) { known.set_value(std::move(categories)); });
    notifications.add({}, [&](const auto& error) { shown.set_value(!error); });
    const platform::NotificationCategory first{"orders", {{"track", "Track"}}};
    EXPECT_EQ(known.get_future().get(), std::vector{first});
    EXPECT_FALSE(shown.get_future().get());
}

} // namespace
} // namespace zentavo::linux_port
