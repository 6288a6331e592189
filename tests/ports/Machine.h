#pragma once

#include <algorithm>
#include <functional>
#include <iterator>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "ports/memory/RecordingSystemLog.h"
#include "zentavo/platform/AttachmentFiles.h"
#include "zentavo/platform/Bundle.h"
#include "zentavo/platform/Calendar.h"
#include "zentavo/platform/Clock.h"
#include "zentavo/platform/Device.h"
#include "zentavo/platform/KeyServices.h"
#include "zentavo/platform/Preferences.h"
#include "zentavo/platform/Random.h"

namespace zentavo::tests {

/// A machine with one program on it, as a port shows it. Each test gets a new one.
class Machine {
public:
    virtual ~Machine() = default;

    /// What a new process of the program "com.example.shop" is given.
    virtual std::shared_ptr<platform::PreferencesProvider> process() = 0;
    /// The same where no place for suites can be made.
    virtual std::shared_ptr<platform::PreferencesProvider> processWithoutPlace() = 0;

    /// The bundles of a program whose information list is `info`.
    virtual std::shared_ptr<platform::Bundles> bundles(const Map& info) = 0;
    /// Puts another bundle next to the program's, and says where.
    virtual std::string addBundle(const Map& info) = 0;
    /// The bundles of the extension "PlugIns/Push.appex" inside an app.
    virtual std::shared_ptr<platform::Bundles> bundlesOfExtension(const Map& appInfo, const Map& extensionInfo) = 0;

    virtual std::shared_ptr<platform::Device> device(const std::string& vendor) = 0;
    virtual std::shared_ptr<platform::Clock> clock() = 0;
    virtual std::shared_ptr<platform::Random> random() = 0;
    virtual std::shared_ptr<platform::AttachmentFiles> attachmentFiles() = 0;

    /// A Gregorian calendar two hours east of UTC.
    virtual std::shared_ptr<platform::Calendar> calendar(std::chrono::weekday firstWeekday) = 0;
    /// Any calendar; asked for only of a machine that has zones.
    virtual std::shared_ptr<platform::Calendar> calendar(const char* locale, const char* timeZone) = 0;

    /// Null on a machine that has no real cryptography.
    virtual std::shared_ptr<platform::KeyServices> keyServices() = 0;

    const std::shared_ptr<testing::RecordingSystemLog> log = std::make_shared<testing::RecordingSystemLog>();
};

struct MachineUnderTest {
    std::string name;
    std::function<std::unique_ptr<Machine>()> make;
    /// Whether there are time zones and locales to choose from.
    bool hasZones = false;
};

/// Each port's file adds itself before main.
inline std::vector<MachineUnderTest>& machinesUnderTest() {
    static std::vector<MachineUnderTest> machines;
    return machines;
}

inline void PrintTo(const MachineUnderTest& machine, std::ostream* out) { *out << machine.name; }

class MachineTest : public ::testing::TestWithParam<MachineUnderTest> {
protected:
    const std::unique_ptr<Machine> machine = GetParam().make();
};

inline std::vector<MachineUnderTest> machinesWithZones() {
    std::vector<MachineUnderTest> found;
    std::copy_if(machinesUnderTest().begin(), machinesUnderTest().end(), std::back_inserter(found),
                 [](const MachineUnderTest& machine) { return machine.hasZones; });
    return found;
}

#define ZENTAVO_FOR_EACH_MACHINE(suite)                                                                                \
    INSTANTIATE_TEST_SUITE_P(Ports, suite, ::testing::ValuesIn(machinesUnderTest()),                                   \
                             [](const auto& machine) { return machine.param.name; })

} // namespace zentavo::tests
