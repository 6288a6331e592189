// Who is heard by an object of ours, with callers that are other processes.

#include "ports/desktop/Callers.h"

#include <future>

#include "ports/desktop/MessageBody.h"
#include "tests/desktop/DesktopTest.h"
#include "tests/desktop/OtherProgram.h"
#include "tests/desktop/TakeName.h"

namespace zentavo::tests {
namespace {

using desktop::Callers;
using desktop::MethodCall;
using desktop::SessionBus;
using desktop::Variant;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

class CallersTest : public DesktopTest {
protected:
    CallersTest() {
        session->serve(door.path,
                       R"(<node><interface name="zentavo.Door"><method name="Knock"><arg type="s" direction="in"/>
                          </method></interface></node>)",
                       Callers::only(*session, {"zentavo.Sibling", "zentavo.Friend"}, [this](const MethodCall& call) {
                           heard.add(desktop::body::text(call.parameters()));
                           call.answer();
                       }));
        takeName(*session, door.name);
        settle();
    }
    std::vector<std::string> run(const std::vector<std::string>& steps) {
        return runOtherProgram(bus.address(), door, steps);
    }

    const TextMethod door{"zentavo.House", "/door", "zentavo.Door", "Knock"};
    Seen<std::string> heard;
};

TEST_F(CallersTest, StrangersAreDeniedAndOurOwnProcessIsNot) {
    SessionBus friends(bus.address());
    takeName(friends, "zentavo.Friend");
    EXPECT_THAT(run({"call=a", "own=zentavo.Other", "call=b", "other=c"}),
                ElementsAre(accessDenied, accessDenied, accessDenied));
    EXPECT_THAT(run({"own=zentavo.Friend", "call=queued"}), ElementsAre(accessDenied)) << "another has the name";
    EXPECT_THAT(heard.all(), IsEmpty());
    const Variant text = Variant::share(g_variant_new("(s)", "own"));
    EXPECT_TRUE(ask({door.name, door.path, door.interface, door.method, text}));
    EXPECT_THAT(heard.all(), ElementsAre("own"));
}

TEST_F(CallersTest, AProgramIsHeardOnAllItsConnectionsAndToItsEnd) {
    EXPECT_THAT(run({"own=zentavo.Friend", "call=a", "other=b", "leave=zentavo.Friend", "call=c", "other=d"}),
                Each("ok"));
    EXPECT_THAT(run({"call=e", "own=zentavo.Friend", "call=f"}), ElementsAre(accessDenied, "ok"))
        << "the next one has to have the name first";
    EXPECT_THAT(heard.all(), ElementsAre("a", "b", "c", "d", "f"));
}

TEST_F(CallersTest, WhatWasSaidInLeavingIsHeard) {
    std::promise<void> gone;
    // Its caller is gone from the bus before the call is looked at.
    session->run([left = gone.get_future().share()] { left.wait(); });
    run({"own=zentavo.Sibling", "shout=farewell"});
    gone.set_value();
    EXPECT_TRUE(until([&] { return heard.count() == 1; }));
}

TEST_F(CallersTest, CallsThatWaitStayInOrderAndAreBounded) {
    std::vector<std::string> steps{"own=zentavo.Friend"};
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < Callers::maximumWaiting / 2; ++i) {
        texts.push_back(std::to_string(i));
        steps.push_back("shout-other=" + texts.back());
    }
    steps.push_back("other=last");
    texts.push_back("last");
    EXPECT_THAT(run(steps), ElementsAre("ok"));
    EXPECT_EQ(heard.all(), texts);
}

} // namespace
} // namespace zentavo::tests
