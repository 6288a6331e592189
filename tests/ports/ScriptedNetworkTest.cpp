// What hosts' tests are promised by the scripted network and the wrappers that make calls fail.

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "ports/memory/FailNth.h"
#include "ports/memory/MemoryPlatform.h"

namespace zentavo::testing {
namespace {

using platform::URLErrorKind;
using ::testing::ElementsAre;

class ScriptedNetworkTest : public ::testing::Test {
protected:
    void start(const std::string& url, const std::string& method = "GET", platform::URLSession* through = nullptr) {
        auto request = std::make_shared<platform::URLRequest>(*URL::parse(url));
        request->method = method;
        (through != nullptr ? *through : *system.session)
            .start(request, system.queues->mainQueue(), [this](auto result) {
                results.push_back(result.error ? -static_cast<int>(result.error->kind) : result.response->status);
            });
    }

    MemoryPlatform system;
    std::vector<int> results; ///< statuses, and negative error kinds
};

TEST_F(ScriptedNetworkTest, TheRuleAddedLastDecidesUntilItIsUsedUp) {
    auto& session = *system.session;
    session.on({.host = "a.example"}, ScriptedAnswer{201});
    session.on({.method = "PUT"}, [](const platform::URLRequest& request) -> std::optional<ScriptedAnswer> {
        return request.url.path() == "/mine" ? std::optional(ScriptedAnswer{202}) : std::nullopt;
    });
    session.on({.pathPrefix = "/event"}, ScriptedAnswer::failure(URLErrorKind::timedOut), 2);
    start("http://a.example/event");
    start("http://b.example/events");
    start("http://a.example/event");
    start("http://b.example/mine", "PUT");
    start("http://a.example/other", "PUT");
    start("http://b.example/other", "PUT");
    EXPECT_TRUE(results.empty()) << "nothing is told before the queues run";
    system.queues->runUntilIdle();
    const int timedOut = -static_cast<int>(URLErrorKind::timedOut);
    EXPECT_THAT(results, ElementsAre(timedOut, timedOut, 201, 202, 201, 200));
    EXPECT_EQ(session.requests()[3]->method, "PUT");
}

TEST_F(ScriptedNetworkTest, TheTestAnswersLateInItsOwnOrderOrNever) {
    auto& session = *system.session;
    session.hold();
    for (int i = 0; i < 3; ++i) {
        start("http://a.example/");
    }
    EXPECT_TRUE(session.answer(2, ScriptedAnswer{203}));
    EXPECT_TRUE(session.answer(0, ScriptedAnswer{201}));
    EXPECT_FALSE(session.answer(0, ScriptedAnswer{500})) << "an exchange ends once";
    EXPECT_FALSE(session.answer(3, ScriptedAnswer{500}));
    system.queues->runUntilIdle();
    EXPECT_THAT(results, ElementsAre(203, 201));
    EXPECT_EQ(session.open(), 1U);
}

TEST_F(ScriptedNetworkTest, FailNthWalksTheCalls) {
    for (std::size_t n = 0; n < 3; ++n) {
        auto counter = std::make_shared<FailureCounter>(n);
        FailNthURLSession failing(system.session, counter);
        start("http://a.example/", "GET", &failing);
        start("http://a.example/", "GET", &failing);
        EXPECT_EQ(counter->reached(), n < 2);
    }
    system.queues->runUntilIdle();
    const int lost = -static_cast<int>(URLErrorKind::connectionLost);
    EXPECT_THAT(results, ElementsAre(lost, 200, 200, lost, 200, 200));

    const auto store = system.preferences->standard();
    FailNthPreferences failing(store, std::make_shared<FailureCounter>(1));
    failing.set("a", Value("kept"));
    failing.set("a", Value("lost"));
    EXPECT_EQ(failing.string("a"), "kept");
}

} // namespace
} // namespace zentavo::testing
