#include "ports/memory/FailNth.h"
#include "tests/support/SdkTest.h"

namespace zentavo {
namespace {

/// Opens suites in which one access fails: the one that `counter` says.
class FailNthProvider : public platform::PreferencesProvider {
public:
    FailNthProvider(std::shared_ptr<platform::PreferencesProvider> inner,
                    std::shared_ptr<testing::FailureCounter> counter)
        : inner_(std::move(inner)), counter_(std::move(counter)) {}

    std::shared_ptr<platform::Preferences> standard() override { return failing(inner_->standard()); }
    std::shared_ptr<platform::Preferences> suite(std::string_view name) override {
        return failing(inner_->suite(name));
    }

private:
    std::shared_ptr<platform::Preferences> failing(std::shared_ptr<platform::Preferences> suite) {
        return std::make_shared<testing::FailNthPreferences>(std::move(suite), counter_);
    }

    std::shared_ptr<platform::PreferencesProvider> inner_;
    std::shared_ptr<testing::FailureCounter> counter_;
};

class FailureWalkTest : public SdkTest {
protected:
    /// An app's first minute, in a process of its own, in which store access or request `n` fails. False when there is
    /// no such access.
    bool walk(std::size_t n) {
        const auto counter = std::make_shared<testing::FailureCounter>(n);
        testing::MemoryPlatform system;
        system.platform()->preferences = std::make_shared<FailNthProvider>(system.preferences, counter);
        system.platform()->urlSession = std::make_shared<testing::FailNthURLSession>(system.session, counter);
        system.session->on({"POST", "", "/api/app/identify"},
                           testing::ScriptedAnswer{200, R"({"data":{"zentavo_apppush_uid":"p1"}})"});

        const auto start = [&] {
            auto app = std::make_shared<Zentavo>(system.platform());
            Zentavo::setShared(app);
            app->activate(Configuration{"1001", "555", "group.shop", "42"});
            system.queues->runUntilIdle();
            return app;
        };
        const auto requests = [&](const char* path, const std::string& part) {
            const auto all = system.session->requests();
            return std::ranges::count_if(all, [&](const auto& request) {
                return request->url.path() == path && request->body->find(part) != std::string::npos;
            });
        };

        auto app = start();
        app->setCustomerProperties("c1", {});
        app->track(CDPEvent("bought"));
        app->registerForNotification(std::vector<std::uint8_t>{1});
        system.queues->runUntilIdle();
        app->track(CDPEvent("later"));
        system.queues->advance(std::chrono::seconds(60)); // a lost request has been repeated by now
        for (const char* name : {"app_install", "bought", "later"}) {
            EXPECT_EQ(requests("/event", std::string(R"("en":")") + name + '"'), 1) << name << ", failure " << n;
        }

        // The next start finds whatever the failure left in the store.
        const bool reached = counter->reached();
        if (reached) {
            system.platform()->preferences = system.preferences;
            app = start();
            app->registerForNotification(std::vector<std::uint8_t>{2});
            app->track(CDPEvent("next"));
            system.queues->runUntilIdle();
            EXPECT_EQ(requests("/event", R"("en":"next")"), 1) << "failure " << n;
            EXPECT_EQ(requests("/api/app/identify", R"("identifier":"02")"), 1) << "failure " << n;
            EXPECT_EQ(app->getPushUid(), "p1") << "failure " << n;
        }
        return reached;
    }
};

TEST_F(FailureWalkTest, NoSingleFailureOfStoreOrNetworkStopsTheSDK) {
    std::size_t n = 0;
    while (n < 1000 && walk(n) && !HasFailure()) {
        ++n;
    }
    EXPECT_GT(n, 30U) << "activation, two events and a registration touch store and network more often than that";
    EXPECT_LT(n, 1000U);
}

} // namespace
} // namespace zentavo
