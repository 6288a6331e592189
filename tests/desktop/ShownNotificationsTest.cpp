// What is up when a process is killed, and what the next one makes of it.

#include "ports/desktop/ShownNotifications.h"

#include "tests/desktop/NotificationCentreTest.h"

namespace zentavo::tests {
namespace {

using desktop::FreedesktopUserNotifications;
using desktop::ShownNotifications;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

using ShownNotificationsTest = NotificationCentreTest;

TEST_F(ShownNotificationsTest, WhatAKilledProcessHasShownTheNextOneKnows) {
    FreedesktopUserNotifications::Parts parts;
    parts.kept = std::make_shared<ShownNotifications>(memory.preferences);
    const auto restart = [&] {
        center.reset();
        session = std::make_shared<desktop::SessionBus>(bus.address());
        makeCenter(parts);
        settle();
    };
    restart();
    const std::string picture = file("one");
    auto rich = withFile("one", picture);
    rich.content.userInfo = {
        {"aps", Map{{"actionButtons", Map{{"button1", Map{{"id", "again"}, {"label", "Again"}}}}}}}};
    EXPECT_EQ(add(rich), std::nullopt);
    for (const char* other : {"two", "three", "four"}) {
        EXPECT_EQ(add(withFile(other, file(other))), std::nullopt);
    }
    server->close(idOf(3), 2);
    settleSignals();

    restart();
    EXPECT_THAT(delivered(), IsEmpty()) << "it may be gone";
    Seen<std::set<std::string>> inUse;
    center->files([&](auto paths) { inUse.add(std::move(paths)); });
    ASSERT_TRUE(until([&] { return inUse.count() == 1; }));
    EXPECT_THAT(inUse.all().at(0), SizeIs(3));
    server->press(idOf(0), server->shown().at(0).keyOf("Again"));
    server->close(idOf(1), 2);
    settleSignals();
    EXPECT_THAT(delegate->told, ElementsAre("one: again", "two: " + std::string(platform::dismissActionIdentifier)));
    EXPECT_THAT(memory.attachmentFiles->files(), SizeIs(1)) << "those of what is gone are";
    EXPECT_EQ(add(request("three")), std::nullopt);
    EXPECT_EQ(server->shown().back().replaces, idOf(2));

    // Another service of the desktop counts anew.
    EXPECT_EQ(add(withFile("five", file("five"))), std::nullopt);
    session.reset();
    center.reset();
    const std::uint32_t last = server->shown().back().id;
    server.reset();
    server.emplace(bus.address());
    restart();
    server->press(last, "default");
    settleSignals();
    EXPECT_THAT(delegate->told, IsEmpty());
    EXPECT_THAT(memory.attachmentFiles->files(), IsEmpty());
}

TEST_F(ShownNotificationsTest, AreBoundedAndTakeDamageForNothing) {
    const ShownNotifications shown(memory.preferences);
    const auto entry = [](std::uint32_t id) {
        return ShownNotifications::Entry{id, {request("n" + std::to_string(id))}, {{"default", "", "x"}}};
    };
    const auto kept = [&] { return shown.takeUp("server").up; };
    for (std::uint32_t id = 1; id <= ShownNotifications::maximumCount + 1; ++id) {
        shown.add("server", entry(id));
    }
    ASSERT_THAT(kept(), SizeIs(ShownNotifications::maximumCount));
    EXPECT_EQ(kept().front().notification, entry(2).notification) << "the oldest is not";
    EXPECT_EQ(kept().front().actions, entry(2).actions);
    auto large = entry(99);
    large.notification.request.content.body.assign(ShownNotifications::maximumBytes, 'x');
    shown.add("server", large);
    EXPECT_THAT(kept(), SizeIs(ShownNotifications::maximumCount));

    const auto suite = memory.preferences->standard();
    const Map whole{{"server", "server"},
                    {"id", 7},
                    {"notification", desktop::codec::write(entry(7).notification).value()},
                    {"actions", List()}};
    suite->set("ZentavoShownNotifications", List{whole});
    EXPECT_THAT(kept(), SizeIs(1));
    for (const char* key : {"server", "id", "notification", "actions"}) {
        for (const Value& wrong : {Value(-1), Value("{}"), Value(Map())}) {
            Map damaged = whole;
            damaged.set(key, wrong);
            suite->set("ZentavoShownNotifications", List{damaged, "text"});
            EXPECT_THAT(kept(), IsEmpty()) << key;
        }
    }
}

} // namespace
} // namespace zentavo::tests
