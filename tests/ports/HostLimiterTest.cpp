// Which exchange may begin, with no network at all.

#include "ports/linux/HostLimiter.h"

#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ports/linux/CurlNetworkThread.h"

namespace zentavo::linux_port {
namespace {

class HostLimiterTest : public ::testing::Test {
protected:
    std::shared_ptr<CurlTask> task(const std::string& url) {
        auto request = std::make_shared<platform::URLRequest>(*URL::parse(url));
        return std::make_shared<CurlTask>(network, std::move(request), nullptr, nullptr);
    }
    /// Asks for `count` exchanges; says how many may begin at once.
    std::size_t admit(int count, const std::string& url = "https://a.example/x") {
        std::size_t admitted = 0;
        for (int i = 0; i < count; ++i) {
            tasks.push_back(task(url));
            admitted += hosts.admit(tasks.back()) ? 1 : 0;
        }
        return admitted;
    }

    CurlNetworkThread network; ///< never started
    HostLimiter hosts;
    std::vector<std::shared_ptr<CurlTask>> tasks;
};

TEST_F(HostLimiterTest, OneBeginsForEachThatEndsInTheOrderOfArrival) {
    EXPECT_EQ(admit(100), HostLimiter::limit);
    EXPECT_EQ(admit(2, "https://a.example:8443/x"), 2U) << "another port is another host";
    EXPECT_EQ(admit(2, "http://a.example/x"), 2U) << "and so is another scheme";
    tasks[7]->request.reset(); // ended while it waited
    for (const std::size_t next : {6U, 8U, 9U}) {
        const auto begin = hosts.release("https://a.example", false);
        ASSERT_EQ(begin.size(), 1U);
        EXPECT_EQ(begin.front(), tasks[next]);
    }
}

TEST_F(HostLimiterTest, AConnectionThatMultiplexesCarriesMore) {
    admit(100);
    EXPECT_TRUE(hosts.release("https://a.example", true).size() ==
                HostLimiter::multiplexedLimit - HostLimiter::limit + 1);
    EXPECT_EQ(hosts.release("https://a.example", std::nullopt).size(), 1U) << "a failure says nothing about the host";
    EXPECT_EQ(hosts.release("https://a.example", false).size(), 0U) << "the server speaks HTTP/1.1 by now";
}

} // namespace
} // namespace zentavo::linux_port
