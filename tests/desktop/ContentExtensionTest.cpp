// The content extension as the notification service sees it.

#include "ports/desktop/ContentExtension.h"

#include "tests/desktop/DesktopTest.h"
#include "tests/desktop/TakeName.h"

namespace zentavo::tests {
namespace {

using desktop::ContentExtension;
using desktop::MethodCall;
using desktop::SessionBus;
using ::testing::ElementsAre;

constexpr const char* extensionName = "com.example.shop.NotificationContent";

class ContentExtensionTest : public DesktopTest {
protected:
    /// Answers the first calls with an error, as one does that is about to end.
    void serve(SessionBus& program, int refusals) {
        program.serve(desktop::content_interface::path, desktop::content_interface::xml,
                      [this, left = std::make_shared<int>(refusals)](const MethodCall& call) {
                          calls.add(call.method());
                          if ((*left)-- > 0) {
                              return call.refuse("not now");
                          }
                          call.answer();
                      });
        takeName(program, extensionName);
    }
    std::shared_ptr<ContentExtension> make() {
        auto made = ContentExtension::make(session, extensionName, memory.systemLog);
        settle();
        return made;
    }

    Seen<std::string> calls;
    Seen<bool> failures;
};

TEST_F(ContentExtensionTest, IsThereWhereItRunsOrCouldBeStarted) {
    const auto extension = make();
    EXPECT_TRUE(until([&] { return !extension->isThere(); })) << "nobody knows it";
    {
        SessionBus program(bus.address());
        serve(program, 0);
        EXPECT_TRUE(until([&] { return extension->isThere(); }));
    }
    EXPECT_TRUE(until([&] { return !extension->isThere(); }));

    const PrivateBus starting({PrivateBus::Startable{extensionName, "/bin/false"}});
    session = std::make_shared<SessionBus>(starting.address());
    EXPECT_TRUE(make()->isThere());
}

TEST_F(ContentExtensionTest, IsAskedTwiceAndThenGivenUp) {
    const auto extension = make();
    const platform::Notification notification{request("a")};
    extension->show(notification, [this] { failures.add(true); });
    ASSERT_TRUE(until([&] { return failures.count() == 1; })) << "there is none";
    EXPECT_EQ(memory.systemLog->entries().size(), 2U);

    SessionBus program(bus.address());
    serve(program, 1);
    ASSERT_TRUE(until([&] { return extension->isThere(); }));
    extension->show(notification, [this] { failures.add(true); });
    ASSERT_TRUE(until([&] { return calls.count() == 2; }));
    settle(program);
    settle();
    EXPECT_EQ(failures.count(), 1U) << "the second time it does";
    extension->show(platform::Notification{request("\xFF")}, [this] { failures.add(true); });
    ASSERT_TRUE(until([&] { return failures.count() == 2; })) << "it cannot be sent";
    EXPECT_THAT(calls.all(), ElementsAre("Show", "Show"));
}

} // namespace
} // namespace zentavo::tests
