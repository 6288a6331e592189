// The notification centre with a notification service that people use: dunst, on a screen and a session bus that
// tests/gtk/run makes. The bus starts it.

#include <array>
#include <cstdio>

#include "tests/desktop/DesktopTest.h"

namespace zentavo::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class DunstTest : public DesktopTest {
protected:
    static std::string output(const char* command) {
        std::string text;
        if (FILE* pipe = popen(command, "r")) {
            std::array<char, 4096> part{};
            for (std::size_t size = 0; (size = fread(part.data(), 1, part.size(), pipe)) > 0;) {
                text.append(part.data(), size);
            }
            pclose(pipe);
        }
        return text;
    }
    std::shared_ptr<desktop::FreedesktopUserNotifications> makeCenter() {
        session = std::make_shared<desktop::SessionBus>();
        return desktop::FreedesktopUserNotifications::make({session,
                                                            memory.queues->mainQueue(),
                                                            memory.queues->make("disk", platform::QueueKind::serial),
                                                            memory.attachmentFiles,
                                                            {"Shop", "com.example.shop"}});
    }

    const std::shared_ptr<desktop::FreedesktopUserNotifications> center = makeCenter();
    const std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
};

TEST_F(DunstTest, ShowsTakesPressesAndTellsWhatWasPutAway) {
    center->setDelegate(delegate);
    Seen<platform::AuthorizationStatus> status;
    center->settings([&](auto each) { status.add(each); });
    ASSERT_TRUE(until([&] { return status.count() == 1; }));
    ASSERT_EQ(status.all().at(0), platform::AuthorizationStatus::authorized)
        << "the bus would start no notification service: scripts/bootstrap tests installs dunst";
    ASSERT_THAT(output("dunstctl --help 2>&1"), HasSubstr("history")) << "there is no dunstctl";

    auto push = request("pressed", "A coat");
    push.content.body = "<b>10 %</b> off & more";
    EXPECT_EQ(add(*center, push), std::nullopt);
    EXPECT_THAT(output("dunstctl count displayed"), HasSubstr("1"));
    output("dunstctl action 0");
    EXPECT_TRUE(until([&] { return delegate->told.size() == 1; }));
    EXPECT_EQ(add(*center, request("put away")), std::nullopt);
    output("dunstctl close");
    EXPECT_TRUE(until([&] { return delegate->told.size() == 2; }));
    EXPECT_THAT(delegate->told,
                ElementsAre("pressed: zentavo.notification.default", "put away: zentavo.notification.dismiss"));
    const std::string history = output("dunstctl history");
    EXPECT_THAT(history, HasSubstr("A coat"));
    EXPECT_THAT(history, HasSubstr("&lt;b&gt;10 %&lt;/b&gt; off &amp; more"));
    EXPECT_THAT(output("dunstctl count displayed"), HasSubstr("0"));
}

} // namespace
} // namespace zentavo::tests
