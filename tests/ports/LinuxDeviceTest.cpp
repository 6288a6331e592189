// What is read from the system's files and the environment, on made-up machines.

#include "ports/linux/LinuxDevice.h"

#include <cstdlib>

#include <gmock/gmock.h>

#include "ports/linux/LinuxClock.h"
#include "ports/linux/MachineFacts.h"
#include "ports/linux/MachineId.h"
#include "ports/linux/SystemSettings.h"
#include "tests/ports/TemporaryFolder.h"
#include "zentavo/foundation/UUID.h"

namespace zentavo::tests {
namespace {

using namespace linux_port;

/// Sets a variable of the environment for a while; null takes it away.
class Variable {
public:
    Variable(const char* name, const char* value) : name_(name) {
        if (const char* before = std::getenv(name)) {
            before_ = before;
        }
        put(value);
    }
    ~Variable() { put(before_ ? before_->c_str() : nullptr); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    void put(const char* value) { value != nullptr ? ::setenv(name_, value, 1) : ::unsetenv(name_); }

    const char* name_;
    std::optional<std::string> before_;
};

TEST(LinuxDeviceTest, TheIdentifierIsTheOneThatSystemdMakes) {
    const TemporaryFolder root;
    const auto machine = readMachineId(root.write("etc/machine-id", "3d1219c7c4c5404aaa1f6d2a48adfda4\n"));
    ASSERT_TRUE(machine);
    const Id128 application = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
    EXPECT_EQ(uuid::text(appSpecificId(*machine, application)), "CE7CC173-117A-47F9-98A7-81442C82883A");

    EXPECT_NE(applicationIdOf("a"), applicationIdOf(std::string("a\0", 2)));
    EXPECT_NE(applicationIdOf(std::string(32, 'a')), applicationIdOf(std::string(31, 'a') + "b"));
    EXPECT_NE(applicationIdOf(std::string(32, 'a')), applicationIdOf("b" + std::string(31, 'a')));
}

TEST(LinuxDeviceTest, AMachineWithoutAnIdHasNoIdentifier) {
    const TemporaryFolder root;
    EXPECT_EQ(LinuxDevice("v", root.path()).identifierForVendor(), std::nullopt);
    for (const char* content :
         {"", "uninitialized\n", "3d1219c7c4c5404aaa1f6d2a48adfda", "00000000000000000000000000000000\n",
          "3d1219c7c4c5404aaa1f6d2a48adfdag\n", "3d1219c7c4c5404aaa1f6d2a48adfda4x\n"}) {
        root.write("etc/machine-id", content);
        EXPECT_EQ(LinuxDevice("v", root.path()).identifierForVendor(), std::nullopt) << content;
    }
}

TEST(LinuxDeviceTest, LocalesBecomeLanguageTags) {
    const Variable all("LC_ALL", nullptr);
    const Variable messages("LC_MESSAGES", nullptr);
    const std::pair<const char*, const char*> cases[] = {{"pt_BR.UTF-8", "pt-BR"},      {"de", "de"},
                                                         {"C", "en-US-POSIX"},          {"C.UTF-8", "en-US-POSIX"},
                                                         {"", "en-US-POSIX"},           {"POSIX", "en-US-POSIX"},
                                                         {"sr_RS@latin", "sr-Latn-RS"}, {"de_DE@euro", "de-DE"},
                                                         {"ES_419", "es-419"},          {"kok_IN", "kok-IN"},
                                                         {"../../etc", "und"},          {"x", "und"},
                                                         {"en_USA_POSIX", "und"}};
    for (const auto& [name, tag] : cases) {
        const Variable lang("LANG", name);
        EXPECT_EQ(localeOf("LC_MESSAGES"), tag) << name;
    }
    const Variable lang("LANG", "de_DE");
    const Variable specific("LC_MESSAGES", "fr_FR");
    EXPECT_EQ(localeOf("LC_MESSAGES"), "fr-FR");
    EXPECT_EQ(localeOf("LC_NONE"), "de-DE");
    const Variable overriding("LC_ALL", "it_IT");
    EXPECT_EQ(localeOf("LC_MESSAGES"), "it-IT");
}

TEST(LinuxDeviceTest, TheTimeZoneIsNamed) {
    const TemporaryFolder root;
    const Variable none("TZ", nullptr);
    EXPECT_EQ(timeZoneName(root.path()), "UTC");
    root.write("etc/timezone", "Europe/Berlin\n");
    EXPECT_EQ(timeZoneName(root.path()), "Europe/Berlin");
    const auto link = [&](const char* target) {
        std::filesystem::remove(root.path() / "etc/localtime");
        std::filesystem::create_symlink(target, root.path() / "etc/localtime");
        return timeZoneName(root.path());
    };
    EXPECT_EQ(link("/usr/share/zoneinfo/America/Argentina/Ushuaia"), "America/Argentina/Ushuaia");
    EXPECT_EQ(link("../usr/share/zoneinfo/posix/Asia/Tokyo"), "Asia/Tokyo");
    EXPECT_EQ(link("/somewhere/else"), "Europe/Berlin");
    EXPECT_EQ(link("/usr/share/zoneinfo/../../../etc/passwd"), "Europe/Berlin");
    {
        const Variable named("TZ", ":Asia/Kolkata");
        EXPECT_EQ(timeZoneName(root.path()), "Asia/Kolkata");
    }
    const Variable rules("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ(timeZoneName(root.path()), "UTC");
    // With the database installed, only what is in it is a zone.
    root.write("usr/share/zoneinfo/Asia/Kolkata", "");
    const Variable unknown("TZ", "Nowhere/Land");
    EXPECT_EQ(timeZoneName(root.path()), "UTC");
}

TEST(LinuxDeviceTest, TheClockFollowsTheTimeZone) {
    const LinuxClock clock;
    const auto noon = std::chrono::sys_days(std::chrono::January / 1 / 2024) + std::chrono::hours(12);
    {
        const Variable zone("TZ", "Asia/Kolkata");
        const LocalTime local = clock.local(noon);
        EXPECT_EQ(local.hour * 60 + local.minute, 17 * 60 + 30);
    }
    const Variable zone("TZ", "America/New_York");
    EXPECT_EQ(clock.local(noon).hour, 7);
}

TEST(LinuxDeviceTest, TheNetworkIsThatOfTheDefaultRoute) {
    const TemporaryFolder root;
    EXPECT_EQ(networkKind(root.path()), "unknown");
    root.write("sys/class/net/lo/operstate", "unknown\n");
    root.write("sys/class/net/eth0/operstate", "down\n");
    EXPECT_EQ(networkKind(root.path()), "none");
    root.write("sys/class/net/tun0/operstate", "unknown\n");
    root.write("sys/class/net/tun0/type", "65534\n");
    EXPECT_EQ(networkKind(root.path()), "unknown");
    root.write("sys/class/net/wlan0/operstate", "up\n");
    root.write("sys/class/net/wlan0/wireless/x", "");
    EXPECT_EQ(networkKind(root.path()), "wifi");
    root.write("sys/class/net/wwan0/operstate", "unknown\n");
    root.write("proc/net/route", "Iface\tDestination\tGateway\nwlan0\t0000A8C0\t00000000\nwwan0\t00000000\t0100A8C0\n");
    EXPECT_EQ(networkKind(root.path()), "cellular");
    root.write("sys/class/net/eth0/type", "1\n");
    root.write("proc/net/route", "Iface\tDestination\tGateway\neth0\t00000000\t0100A8C0\n");
    EXPECT_EQ(networkKind(root.path()), "wired");
}

TEST(LinuxDeviceTest, TheAdministratorsWordOnTheMachineCountsFirst) {
    const TemporaryFolder root;
    EXPECT_EQ(LinuxDevice("v", root.path()).type(), "");
    root.write("sys/class/dmi/id/chassis_type", "10\n");
    EXPECT_EQ(LinuxDevice("v", root.path()).type(), "laptop");
    root.write("proc/device-tree/chassis-type", std::string("handset\0", 8));
    EXPECT_EQ(LinuxDevice("v", root.path()).type(), "phone");
    root.write("etc/machine-info", "PRETTY_HOSTNAME=\"Ada's computer\"\nCHASSIS=server\n");
    const LinuxDevice device("v", root.path());
    EXPECT_EQ(device.type(), "server");
    EXPECT_EQ(device.name(), "Ada's computer");
}

} // namespace
} // namespace zentavo::tests
