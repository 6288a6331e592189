#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/devserver/FakeConnector.h"
#include "tests/devserver/PushReceiver.h"
#include "tests/devserver/SampleEvent.h"
#include "zentavo/foundation/Hex.h"

namespace zentavo::devserver {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

std::string textOf(const Map& map, const char* key) {
    const Value* value = map.find(key);
    return value != nullptr && value->asString() != nullptr ? *value->asString() : "";
}

class DistributorTest : public ::testing::Test {
protected:
    DevServer::Settings settings(std::chrono::milliseconds patience = std::chrono::seconds(10)) const {
        DevServer::Settings settings;
        settings.playsDistributor = true;
        settings.distributor.bus = bus.address();
        settings.distributor.name = FakeConnector::distributor;
        settings.distributor.patience = patience;
        settings.pushStore = bus.folder() + "/endpoints.sqlite";
        return settings;
    }
    /// What follows the server's address.
    static std::string pathOf(const std::string& url) { return url.substr(url.find("/_push/")); }
    /// Has the app tell its token to the server, which is the endpoint's URL.
    static std::string identify(const RunningServer& running, const std::string& url) {
        const std::string token = hex::encode({reinterpret_cast<const std::uint8_t*>(url.data()), url.size()});
        const Map body{{"portal_id", 1000}, {"identifier", token}, {"channel", "ios"}, {"device_id", "D"}};
        EXPECT_EQ(running.client().Post("/api/app/identify", text(body), "application/json")->status, 200);
        return token;
    }
    /// Results of a push at each device.
    static std::vector<Map> push(const RunningServer& running, const Map& order) {
        std::vector<Map> results;
        const Map answer = bodyOf(running.client().Post("/_dev/push", text(order), "application/json"));
        for (const Value& device : *answer.find("devices")->asList()) {
            results.push_back(*device.asMap());
        }
        return results;
    }

    PrivateBus bus;
};

TEST_F(DistributorTest, HandsPushesToAppsOfBothVersions) {
    const RunningServer running(settings());
    ASSERT_EQ(running.server->distributorProblem(), "");
    FakeConnector app(bus.address(), "shop.example.App");
    for (const int version : {1, 2}) {
        const std::string token = "token-" + std::to_string(version);
        ASSERT_TRUE(app.registers(version, token));
        const auto told = app.next();
        EXPECT_EQ(told.version, version);
        EXPECT_EQ(told.method, "NewEndpoint");
        EXPECT_EQ(told.token, token);
        EXPECT_THAT(told.value, StartsWith(running.server->url() + "/_push/"));
        EXPECT_TRUE(app.registers(version, token)) << "and once more, as apps do at each start";
        EXPECT_EQ(app.next().value, told.value);

        // Anybody who knows the endpoint may post to it.
        const std::string bytes{"\0\xFF anything", 11};
        const auto posted = running.client().Post(
            pathOf(told.value), {{"Content-Encoding", "aes128gcm"}, {"TTL", "60"}}, bytes, "application/octet-stream");
        EXPECT_EQ(posted->status, 201) << posted->body;
        const auto message = app.next();
        EXPECT_EQ(message.version, version);
        EXPECT_EQ(message.method, "Message");
        EXPECT_EQ(message.token, token);
        EXPECT_EQ(message.value, bytes);
        EXPECT_NE(message.id, "");

        // And the server itself does, for a device; in the second version only the app can read it.
        const PushReceiver keys;
        const std::string device = identify(running, told.value + (version == 2 ? keys.fragment() : ""));
        const Map sent = push(running, {{"file", "rating"}, {"token", device}}).back();
        EXPECT_EQ(textOf(sent, "endpoint"), told.value);
        EXPECT_EQ(textOf(sent, "result"), "delivered");
        EXPECT_EQ(*sent.find("encrypted"), version == 2);
        const std::string body = app.next().value;
        EXPECT_THAT(version == 1 ? body : keys.open(body).value_or("unreadable"), StartsWith(R"({"aps":{"alert":)"));

        EXPECT_EQ(
            app.ask(version, "Unregister", version == 1 ? "('" + token + "',)" : "({'token': <'" + token + "'>},)"),
            version == 1 ? "()" : "({},)");
        const auto gone = app.next();
        EXPECT_EQ(gone.method, "Unregistered");
        EXPECT_EQ(gone.token, token);
        EXPECT_EQ(running.client().Post(pathOf(told.value), "x", "text/plain")->status, 404);
    }
}

TEST_F(DistributorTest, BoundsWhatAnEndpointTakes) {
    const RunningServer running(settings());
    FakeConnector app(bus.address(), "shop.example.App");
    ASSERT_TRUE(app.registers(1, "t"));
    const std::string url = app.next().value;
    const auto post = [&](std::size_t size) {
        return running.client().Post(pathOf(url), std::string(size, 'x'), "text/plain")->status;
    };
    EXPECT_EQ(post(0), 400);
    EXPECT_EQ(post(4'096), 201);
    EXPECT_EQ(app.next().value.size(), 4'096U);
    EXPECT_EQ(post(4'097), 413);
    EXPECT_EQ(post(IncomingRequest::maximumBody + 1), 413);
    EXPECT_EQ(running.client().Put(pathOf(url), "x", "text/plain")->status, 405);
    EXPECT_THAT(running.client().Get(pathOf(url))->body, HasSubstr("unifiedpush"));

    const PushReceiver keys;
    identify(running, url + keys.fragment());
    EXPECT_THAT(textOf(push(running, {{"text", std::string(3'994, 'x')}}).front(), "result"),
                HasSubstr("3993 are the most"));
    EXPECT_THAT(textOf(push(running, {{"text", std::string(3'993, 'x')}}).front(), "result"), "delivered");
    EXPECT_THAT(textOf(push(running, {{"file", "wrong_too_large"}}).front(), "result"), HasSubstr("3993 are the most"));
}

TEST_F(DistributorTest, RefusesWhatItCannotUnderstand) {
    const RunningServer running(settings());
    const FakeConnector app(bus.address(), "shop.example.App");
    const std::string invalid = "org.freedesktop.DBus.Error.InvalidArgs";
    const std::vector<std::tuple<int, const char*, std::string>> cases{
        {1, "Register", "('shop.example.App', 't')"},
        {1, "Register", "('shop.example.App', 't', 7)"},
        {1, "Register", "('no name', 't', '')"},
        {1, "Register", "(':1.1', 't', '')"},
        {1, "Register", "('shop.example.App', '', '')"},
        {1, "Register", "('shop.example.App', '" + std::string(513, 't') + "', '')"},
        {1, "Unregister", "('',)"},
        {2, "Register", "('shop.example.App', 't', '')"},
        {2, "Register", "({'service': <'shop.example.App'>, 'token': <7>},)"},
        {2, "Register", "({'service': <'shop.example.App'>},)"},
        {2, "Register", "({'token': <'t'>},)"},
        {2, "Unregister", "(@a{sv} {},)"},
    };
    for (const auto& [version, method, arguments] : cases) {
        EXPECT_EQ(app.ask(version, method, arguments), invalid) << arguments;
    }
    EXPECT_EQ(app.ask(3, "Register", "()"), "org.freedesktop.DBus.Error.UnknownMethod");
    EXPECT_EQ(app.ask(1, "Unregister", "('nobody',)"), "()") << "that is how it was already";

    ASSERT_TRUE(app.registers(1, "t"));
    const FakeConnector other(bus.address(), "other.example.App");
    EXPECT_FALSE(other.registers(1, "t"));
    EXPECT_FALSE(other.registers(2, "t"));
}

TEST_F(DistributorTest, EndpointsOutliveTheServerAndCanBeChangedByHand) {
    FakeConnector app(bus.address(), "shop.example.App");
    std::string path;
    {
        const RunningServer first(settings());
        ASSERT_TRUE(app.registers(2, "t"));
        const std::string url = app.next().value;
        path = pathOf(url);
        identify(first, url);
    }
    const RunningServer running(settings());
    ASSERT_EQ(running.server->distributorProblem(), "");
    EXPECT_EQ(running.client().Post(path, "x", "text/plain")->status, 201);
    EXPECT_EQ(app.next().value, "x");
    EXPECT_THAT(running.client().Get("/_dev/devices")->body, HasSubstr(path)) << "and so do devices";

    const std::string registrations = "/_dev/push/registrations";
    EXPECT_THAT(running.client().Get(registrations)->body, HasSubstr(path));
    EXPECT_EQ(running.client().Post(registrations + "?token=t")->status, 200);
    const auto renewed = app.next();
    EXPECT_EQ(renewed.method, "NewEndpoint");
    EXPECT_NE(pathOf(renewed.value), path);
    EXPECT_EQ(running.client().Post(path, "x", "text/plain")->status, 404);
    EXPECT_EQ(running.client().Post(pathOf(renewed.value), "x", "text/plain")->status, 201);
    EXPECT_EQ(app.next().method, "Message");

    EXPECT_EQ(running.client().Delete(registrations + "?token=t")->status, 200);
    EXPECT_EQ(app.next().method, "Unregistered");
    EXPECT_EQ(running.client().Delete(registrations + "?token=t")->status, 404);
    EXPECT_EQ(running.client().Delete(registrations)->status, 400);
}

TEST_F(DistributorTest, AnAppThatDoesNotAnswerHoldsUpNobody) {
    const RunningServer running(settings(std::chrono::milliseconds(200)));
    FakeConnector app(bus.address(), "shop.example.App");
    ASSERT_TRUE(app.registers(1, "t"));
    const std::string path = pathOf(app.next().value);
    app.answers = false;
    const auto answer = running.client().Post(path, "x", "text/plain");
    EXPECT_EQ(answer->status, 502);
    EXPECT_THAT(answer->body, HasSubstr("did not answer within 200 ms"));
    app.answers = true;
    EXPECT_EQ(running.client().Post(path, "x", "text/plain")->status, 201);
}

TEST_F(DistributorTest, AServerThatEndsWaitsForNoApp) {
    RunningServer running(settings(std::chrono::minutes(10)));
    FakeConnector app(bus.address(), "shop.example.App");
    ASSERT_TRUE(app.registers(1, "t"));
    const std::string path = pathOf(app.next().value);
    app.answers = false;
    std::thread sender(
        [&, client = std::make_shared<httplib::Client>(running.client())] { client->Post(path, "x", ""); });
    EXPECT_EQ(app.next().method, "Message");
    const auto start = std::chrono::steady_clock::now();
    running.server.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    sender.join();
}

TEST_F(DistributorTest, StartsAnAppThatDoesNotRun) {
    const RunningServer running(settings());
    const std::string mark = bus.folder() + "/started";
    std::ofstream(bus.folder() + "/shop.example.Sleeper.service")
        << "[D-BUS Service]\nName=shop.example.Sleeper\nExec=/bin/sh -c \"touch " << mark << "; exit 1\"\n";
    const FakeConnector helper(bus.address(), "shop.example.App");
    EXPECT_THAT(helper.ask(1, "Register", "('shop.example.Nobody', 'n', '')"), HasSubstr("SUCCEEDED"));
    EXPECT_THAT(helper.ask(1, "Register", "('shop.example.Sleeper', 's', '')"), HasSubstr("SUCCEEDED"));
    const Map all = bodyOf(running.client().Get("/_dev/push/registrations"));
    std::vector<std::string> answers;
    for (const Value& each : *all.find("registrations")->asList()) {
        answers.push_back(running.client().Post(pathOf(textOf(*each.asMap(), "endpoint")), "x", "text/plain")->body);
    }
    EXPECT_THAT(answers, ::testing::ElementsAre(HasSubstr("no way to start it"), HasSubstr("refused")));
    EXPECT_TRUE(std::filesystem::exists(mark)) << "it was started, though this one ends at once";
}

TEST_F(DistributorTest, WithoutABusEverythingElseWorks) {
    const RunningServer first(settings());
    const RunningServer second([&] {
        auto same = settings();
        same.pushStore.clear();
        return same;
    }());
    EXPECT_THAT(second.server->distributorProblem(), HasSubstr("somebody else's"));
    auto none = settings();
    none.pushStore.clear();
    none.distributor.bus = "unix:path=" + bus.folder() + "/nothing";
    const RunningServer third(none);
    EXPECT_THAT(third.server->distributorProblem(), HasSubstr("cannot be reached"));
    EXPECT_EQ(third.send()->status, 200);
    EXPECT_THAT(third.client().Get("/_dev/push/registrations")->body, HasSubstr("cannot be reached"));
}

} // namespace
} // namespace zentavo::devserver
