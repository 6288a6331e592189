// The test's own process as the host: the SDK on its real platform, seen from the threads that call it.

#include <set>
#include <thread>

#include <sys/resource.h>

#include "ports/linux/LinuxPlatform.h"
#include "tests/e2e/DevServer.h"
#include "zentavo/Zentavo.h"

namespace zentavo::e2e {
namespace {

/// How often the calling thread has gone to sleep for something.
long waitsOfThisThread() {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return usage.ru_nvcsw;
}

class HostTest : public EndToEndTest {
protected:
    void activate(const std::string& collector) {
        sdk->setEndpoints(Endpoints::all(collector));
        sdk->activate(Configuration{"33167", "555", "group.shop", "42"});
    }
    void track(const std::string& name) {
        CDPEvent event(name);
        event.setEventProperties({{"sku", name}, {"price", 9.5}});
        sdk->track(event);
    }

    const std::shared_ptr<Zentavo> sdk =
        std::make_shared<Zentavo>(linux_port::makeLinuxPlatform({.dataFolder = folder, .mainBundle = {}}));
};

TEST_F(HostTest, EventsFromEightThreadsAllArriveOnce) {
    constexpr int threads = 8;
    constexpr int each = 50;
    activate(server.url());
    std::multiset<std::string> expected{"app_install"};
    std::vector<std::thread> callers;
    for (int i = 0; i < threads; ++i) {
        const std::string prefix = "t" + std::to_string(i) + "-";
        for (int n = 0; n < each; ++n) {
            expected.insert(prefix + std::to_string(n));
        }
        callers.emplace_back([this, prefix, i] {
            for (int n = 0; n < each; ++n) {
                track(prefix + std::to_string(n));
                // What hosts do meanwhile.
                if (i == 0) {
                    sdk->setUid("u" + std::to_string(n));
                } else if (i == 1) {
                    sdk->setDebug(false);
                    (void)sdk->getCustomerId();
                }
            }
        });
    }
    for (std::thread& caller : callers) {
        caller.join();
    }
    std::vector<Map> events;
    for (int i = 0; i < 4 && events.size() < expected.size(); ++i) { // each waits for five seconds
        events = server.events(expected.size());
    }
    const auto found = names(events);
    EXPECT_EQ(std::multiset<std::string>(found.begin(), found.end()), expected);
    for (const Map& event : events) {
        EXPECT_EQ(*event.find("portal_id"), "33167");
    }
}

TEST_F(HostTest, AnOutageNeverHoldsTheCallerUp) {
    activate("http://127.0.0.1:9"); // discard: nothing listens there
    const long before = waitsOfThisThread();
    for (int i = 0; i < 10'000; ++i) {
        track("lost");
    }
    // A lock that another thread holds for a moment is met now and then; anything else would be met by every call.
    EXPECT_LT(waitsOfThisThread() - before, 5'000);
    sdk->setEndpoints(Endpoints::all(server.url()));
    track("after");
    std::vector<Map> events;
    for (int i = 0; i < 4 && events.empty(); ++i) {
        events = server.events(1);
    }
    EXPECT_THAT(names(events), ::testing::ElementsAre("after")) << "what waits for its retry is in nobody's way";
}

} // namespace
} // namespace zentavo::e2e
