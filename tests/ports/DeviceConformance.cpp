// What Device.h promises, held against every port.

#include <gmock/gmock.h>

#include "tests/ports/Machine.h"

namespace zentavo::tests {
namespace {

using ::testing::AnyOf;
using ::testing::MatchesRegex;

class DeviceConformance : public MachineTest {};

TEST_P(DeviceConformance, TellsOneVendorFromAnother) {
    const auto identifier = machine->device("example")->identifierForVendor();
    ASSERT_TRUE(identifier);
    EXPECT_THAT(*identifier, MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
    EXPECT_EQ(machine->device("example")->identifierForVendor(), identifier) << "the same in another process";
    EXPECT_NE(machine->device("other")->identifierForVendor(), identifier);
}

TEST_P(DeviceConformance, SpeaksInStandardTerms) {
    const auto device = machine->device("example");
    EXPECT_NE(device->model(), "");
    EXPECT_NE(device->name(), "");
    EXPECT_EQ(device->systemName(), "Linux");
    EXPECT_THAT(device->systemVersion(), MatchesRegex("[0-9]+\\..*"));
    EXPECT_THAT(device->locale(), MatchesRegex("[a-z]{2,3}(-[A-Za-z0-9]+)*"));
    EXPECT_THAT(device->timeZone(), MatchesRegex("[A-Za-z0-9_+-]+(/[A-Za-z0-9_+-]+)*"));
    EXPECT_THAT(device->network(), AnyOf("wifi", "wired", "cellular", "none", "unknown"));
    EXPECT_GE(device->screen().width, 0);
    EXPECT_GE(device->screen().height, 0);
}

ZENTAVO_FOR_EACH_MACHINE(DeviceConformance);

} // namespace
} // namespace zentavo::tests
