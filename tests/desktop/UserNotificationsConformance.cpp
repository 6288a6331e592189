// What UserNotifications.h promises, held against the memory port and the desktop's.

#include "tests/desktop/DesktopTest.h"

namespace zentavo::tests {
namespace {

using ::testing::ElementsAre;

class UserNotificationsConformance : public DesktopTest, public ::testing::WithParamInterface<bool> {
protected:
    UserNotificationsConformance() {
        if (!GetParam()) {
            return;
        }
        server.emplace(bus.address());
        desktop_ =
            desktop::FreedesktopUserNotifications::make({session,
                                                         memory.queues->mainQueue(),
                                                         memory.queues->make("disk", platform::QueueKind::serial),
                                                         memory.attachmentFiles,
                                                         {"Shop", "com.example.shop"}});
        center = desktop_;
    }
    void respond(const std::string& identifier) {
        const platform::NotificationResponse response{{request(identifier)}, "x"};
        desktop_ ? desktop_->respond(response) : memory.userNotifications->respond(response);
    }
    void add(platform::NotificationRequest what) {
        EXPECT_EQ(DesktopTest::add(*center, std::move(what)), std::nullopt);
    }
    std::vector<std::string> titles() {
        Seen<std::vector<platform::Notification>> answers;
        center->delivered([&](auto all) { answers.add(std::move(all)); });
        EXPECT_TRUE(until([&] { return answers.count() == 1; }));
        std::vector<std::string> found;
        const auto all = answers.all().at(0);
        for (const auto& notification : all) {
            found.push_back(notification.request.content.title);
        }
        return found;
    }

    std::optional<FakeNotificationServer> server;
    std::shared_ptr<desktop::FreedesktopUserNotifications> desktop_;
    std::shared_ptr<platform::UserNotifications> center = memory.userNotifications;
};

TEST_P(UserNotificationsConformance, KeepsWhatIsShownInTheOrderOfArrival) {
    add(request("a", "first"));
    add(request("b", "second"));
    add(request("a", "third"));
    EXPECT_THAT(titles(), ElementsAre("second", "third"));
    center->removeDelivered({"b", "unknown"});
    EXPECT_THAT(titles(), ElementsAre("third"));
    center->add(request("c", "fourth"), nullptr);
    EXPECT_TRUE(until([&] { return titles().size() == 2; }));
}

TEST_P(UserNotificationsConformance, KnowsEachKindOnceAndTheFirstStays) {
    center->addCategory({"one", {{"a", "A"}}});
    center->addCategory({"two", {}});
    center->addCategory({"one", {}});
    Seen<std::vector<platform::NotificationCategory>> answers;
    center->categories([&](auto known) { answers.add(std::move(known)); });
    ASSERT_TRUE(until([&] { return answers.count() == 1; }));
    EXPECT_THAT(answers.all().at(0), ElementsAre(platform::NotificationCategory{"one", {{"a", "A"}}},
                                                 platform::NotificationCategory{"two", {}}));
}

TEST_P(UserNotificationsConformance, TellsEachAnswerOnceToTheDelegateOfTheMoment) {
    auto delegate = std::make_shared<RecordingDelegate>();
    respond("early");
    center->setDelegate(delegate);
    ASSERT_TRUE(until([&] { return delegate->told.size() == 1; }));
    respond("on time");
    ASSERT_TRUE(until([&] { return delegate->told.size() == 2; }));
    EXPECT_THAT(delegate->told, ElementsAre("early: x", "on time: x"));
    delegate.reset(); // the centre does not keep it
    for (std::size_t i = 0; i <= platform::UserNotifications::maximumWaitingResponses; ++i) {
        respond(std::to_string(i));
    }
    settle();
    const auto next = std::make_shared<RecordingDelegate>();
    center->setDelegate(next);
    settle();
    ASSERT_EQ(next->told.size(), platform::UserNotifications::maximumWaitingResponses);
    EXPECT_EQ(next->told.front(), "1: x") << "the oldest goes";
}

INSTANTIATE_TEST_SUITE_P(Ports, UserNotificationsConformance, ::testing::Bool(),
                         [](const auto& port) { return port.param ? "desktop" : "memory"; });

} // namespace
} // namespace zentavo::tests
