// The connection to the message bus, and what it promises of threads and ends.

#include "ports/desktop/SessionBus.h"

#include "tests/desktop/DesktopTest.h"
#include "tests/desktop/TakeName.h"

namespace zentavo::tests {
namespace {

using desktop::MethodCall;
using desktop::SessionBus;
using desktop::Variant;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

using SessionBusTest = DesktopTest;

constexpr const char* echoXml = R"(<node><interface name="zentavo.Echo">
  <method name="Echo"><arg type="s" direction="in"/><arg type="s" direction="out"/></method>
  <method name="Forget"/></interface></node>)";

SessionBus::Call echo(const char* method, Variant parameters, const char* answerType) {
    return {"zentavo.Echo", "/echo", "zentavo.Echo", method, std::move(parameters), answerType};
}

TEST_F(SessionBusTest, WithoutABusCallsFailAndNothingElseHappens) {
    SessionBus none("unix:path=/nowhere/at/all");
    Seen<std::string> events;
    none.listen("", "", "a.b", "C", [&](const auto&, const auto&) { events.add("signal"); });
    none.serve("/echo", echoXml, [&](const auto&) { events.add("call"); });
    none.emit("/a", "a.b", "C", {});
    none.watch("a.b", [&](bool present) { events.add(present ? "present" : "absent"); });
    none.own("a.b", [&](bool ours) { events.add(ours ? "ours" : "not ours"); });
    none.call({"a.b", "/a", "a.b", "C", {}}, [&](const auto& answer) { events.add(answer.error().message); });
    none.call({"a.b", "/a", "a.b", "C", {}});
    none.run([&] { events.add("ran"); });
    ASSERT_TRUE(until([&] { return events.count() == 4; }));
    EXPECT_THAT(events.all(), ElementsAre("absent", "not ours", HasSubstr("there is no message bus"), "ran"));
}

TEST_F(SessionBusTest, RunsBlocksInOrderAndTimersWhenTheyAreDue) {
    Seen<std::string> ran;
    Seen<std::string> due;
    // From the bus's own thread: all of them wait before any is looked at.
    session->run([&] {
        session->run([&] {
            ran.add("a");
            session->run([&] { ran.add("c"); });
        });
        session->run([&] { ran.add("b"); });
        session->after(std::chrono::milliseconds(300), [&] { due.add("second"); });
        session->after(std::chrono::milliseconds(20), [&] { due.add("first"); });
    });
    ASSERT_TRUE(until([&] { return ran.count() == 3 && due.count() == 2; }));
    EXPECT_THAT(ran.all(), ElementsAre("a", "b", "c"));
    EXPECT_THAT(due.all(), ElementsAre("first", "second"));
}

TEST_F(SessionBusTest, AnswersCallsOnceAndRefusesWhatDoesNotFit) {
    Seen<MethodCall> forgotten;
    session->serve("/echo", echoXml, [&](const MethodCall& call) {
        if (call.method() == "Echo") {
            const char* text = nullptr;
            const Variant parameters = call.parameters();
            g_variant_get(parameters.get(), "(&s)", &text);
            call.answer(Variant::share(g_variant_new("(s)", text)));
            call.refuse("twice");
        }
    });
    Seen<bool> owned;
    session->own("zentavo.Echo", [&](bool ours) { owned.add(ours); });
    ASSERT_TRUE(until([&] { return owned.count() == 1; }));
    const Variant hello = Variant::share(g_variant_new("(s)", "hello"));
    const auto answer = ask(echo("Echo", hello, "(s)"));
    ASSERT_TRUE(answer) << answer.error().message;
    const char* text = nullptr;
    g_variant_get(answer->get(), "(&s)", &text);
    EXPECT_STREQ(text, "hello");
    EXPECT_FALSE(ask(echo("Echo", hello, "(u)"))) << "the answer is of another kind";
    EXPECT_FALSE(ask(echo("Echo", Variant::share(g_variant_new("(u)", 1U)), "(s)")));
    EXPECT_FALSE(ask(echo("Shout", hello, "(s)")));
    EXPECT_EQ(ask(echo("Forget", {}, "()")).error().message, "It was not done") << "nobody answered";
}

TEST_F(SessionBusTest, NamesAreFollowedFromOwnerToOwner) {
    Seen<bool> present;
    session->watch("zentavo.Name", [&](bool there) { present.add(there); });
    ASSERT_TRUE(until([&] { return present.count() == 1; }));
    auto first = std::make_unique<SessionBus>(bus.address());
    auto second = std::make_unique<SessionBus>(bus.address());
    first->own("zentavo.Name");
    ASSERT_TRUE(until([&] { return present.count() == 2; }));
    Seen<bool> owned;
    second->own("zentavo.Name", [&](bool ours) { owned.add(ours); });
    ASSERT_TRUE(until([&] { return owned.count() == 1; }));
    first.reset();
    ASSERT_TRUE(until([&] { return owned.count() == 2; })) << "it was waiting";
    second.reset();
    ASSERT_TRUE(until([&] { return !present.all().back() && present.count() > 2; }));
    EXPECT_THAT(owned.all(), ElementsAre(false, true));
    EXPECT_THAT(present.all(), ElementsAre(false, true, false, true, false)) << "an owner's end is seen";
}

TEST_F(SessionBusTest, MayEndInItsOwnHandlerAndBeforeItIsAnswered) {
    auto ending = std::make_shared<std::unique_ptr<SessionBus>>(std::make_unique<SessionBus>(bus.address()));
    Seen<std::string> seen;
    (*ending)->call({"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId", {}, "(s)"},
                    [&, ending](const auto&) {
                        (*ending)->run([&] { seen.add("ran after the end"); });
                        ending->reset();
                        seen.add("ended");
                    });
    ASSERT_TRUE(until([&] { return seen.count() == 1; }));

    // Nobody answers this call, and nobody is told so any more.
    session->serve("/echo", echoXml, [&](const MethodCall&) { seen.add("called"); });
    takeName(*session, "zentavo.Echo");
    settle();
    for (int i = 0; i < 20; ++i) {
        SessionBus caller(bus.address());
        caller.call(echo("Forget", {}, "()"), [](const auto&) {});
    }
    SessionBus unused(bus.address()); // has no thread
    settle();
    EXPECT_EQ(seen.all().front(), "ended");
}

} // namespace
} // namespace zentavo::tests
