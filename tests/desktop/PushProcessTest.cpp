// The notification service as a real process: started by the bus, killed, started again; with the real store, the real
// network and a notification service whose user is the test.

#include <csignal>
#include <fstream>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ports/memory/SeededRandom.h"
#include "tests/desktop/FakeApp.h"
#include "tests/desktop/FakeDistributor.h"
#include "tests/desktop/FakeNotificationServer.h"
#include "tests/desktop/PrivateBus.h"
#include "tests/desktop/TakeName.h"
#include "tests/desktop/WebPushSender.h"
#include "tests/ports/TemporaryFolder.h"
#include "tests/support/LoopbackServer.h"
#include "zentavo/foundation/JSON.h"

namespace zentavo::tests {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

constexpr const char* service = "com.example.shop.NotificationService";
constexpr const char* content = "com.example.shop.NotificationContent";

class PushProcessTest : public ::testing::Test {
protected:
    PushProcessTest() {
        observer.listen("", "", "com.canonical.Unity.LauncherEntry", "Update",
                        [this](const std::string&, const desktop::Variant& update) {
                            const auto entries = desktop::Variant::take(g_variant_get_child_value(update.get(), 1));
                            gint64 count = -1;
                            g_variant_lookup(entries.get(), "count", "x", &count);
                            badges.put(count);
                        });
        observer.watch(service, [this](bool present) { presence.put(present); });
        presence.next(); // not there
    }

    std::string bundle(const std::string& path, const std::string& identifier, const std::string& name) {
        return data
            .write(path + "/Info.plist",
                   "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>CFBundleIdentifier</key><string>" +
                       identifier + "</string><key>CFBundleName</key><string>" + name + "</string></dict></plist>")
            .parent_path();
    }
    std::string command() {
        bundle("Shop.app", "com.example.shop", "The Shop");
        const std::string extension = bundle("Shop.app/PlugIns/Service.appex", service, "An extension");
        const std::string environment = "/usr/bin/env TMPDIR=" + data.path().string() + "/tmp ";
        return environment + ZENTAVO_PUSH_SERVICE + " " + data.path().string() + "/data " + extension;
    }
    /// The process that has a name on the bus.
    pid_t processOf(const char* name) {
        const auto answered = std::make_shared<Awaited<guint32>>();
        observer.call({.destination = "org.freedesktop.DBus",
                       .path = "/org/freedesktop/DBus",
                       .interface = "org.freedesktop.DBus",
                       .method = "GetConnectionUnixProcessID",
                       .parameters = desktop::Variant::share(g_variant_new("(s)", name)),
                       .answerType = "(u)"},
                      [answered](const Result<desktop::Variant>& answer) {
                          guint32 process = 0;
                          if (answer) {
                              g_variant_get(answer->get(), "(u)", &process);
                          }
                          answered->put(process);
                      });
        return static_cast<pid_t>(answered->next());
    }
    void kill(int signal) {
        const pid_t process = processOf(service);
        ASSERT_GT(process, 1);
        ::kill(process, signal);
        EXPECT_FALSE(presence.next());
    }
    void send(const Map& aps, const std::string& id) {
        testing::SeededRandom unused(1);
        const std::string message =
            sender.encrypt(desktop::WebPushKeys::make(unused), json::write(Map{{"aps", aps}}).value());
        EXPECT_EQ(distributor.message(2, service, token, message, id), "");
    }
    FakeNotificationServer::Shown shown(std::size_t count) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (server.shown().size() < count && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
        EXPECT_EQ(server.shown().size(), count);
        return server.shown().size() < count ? FakeNotificationServer::Shown() : server.shown()[count - 1];
    }
    /// From the app's question to its token.
    void registered() {
        app.call("Register");
        EXPECT_EQ(app.refused, "");
        EXPECT_TRUE(presence.next());
        const auto asked = distributor.asked.next();
        EXPECT_EQ(asked.description, "The Shop");
        token = asked.token;
        EXPECT_EQ(distributor.newEndpoint(2, service, token, "https://push.example/up"), "");
        const std::string told = app.told().next();
        ASSERT_THAT(told, StartsWith("TokenChanged https://push.example/up#p256dh="));
        const std::size_t key = told.find("p256dh=") + 7;
        const std::size_t auth = told.find("&auth=");
        sender.publicKey = WebPushSender::bytes(told.substr(key, auth - key));
        sender.auth = WebPushSender::bytes(told.substr(auth + 6));
    }

    TemporaryFolder data;
    PrivateBus bus{{{service, command()}}};
    FakeNotificationServer server{bus.address()};
    FakeDistributor distributor{bus.address(), "Test", 2};
    FakeApp app{bus.address()};
    Awaited<gint64> badges;
    Awaited<bool> presence;
    desktop::SessionBus observer{bus.address()};
    WebPushSender sender;
    std::string token;
};

TEST_F(PushProcessTest, APushWakesTheServiceWhichShowsItAndCountsOnAfterItWasKilled) {
    registered();
    const Map counting{{"alert", Map{{"title", "Coat"}, {"body", "is here"}}},
                       {"mutable-content", 1},
                       {"badge", Map{{"type", "increase"}, {"value", 1}}}};
    send(counting, "m1");
    const auto first = shown(1);
    EXPECT_EQ(first.summary, "Coat");
    EXPECT_EQ(first.app, "The Shop");
    EXPECT_EQ(badges.next(), 1);
    EXPECT_THAT(app.told().next(), StartsWith("WillPresent "));

    std::ifstream maps("/proc/" + std::to_string(processOf(service)) + "/maps");
    const std::string loaded{std::istreambuf_iterator<char>(maps), {}};
    EXPECT_THAT(loaded, HasSubstr("libgio-2.0.so"));
    EXPECT_THAT(loaded, Not(HasSubstr("libgtk")));
    EXPECT_THAT(loaded, Not(HasSubstr("webkit")));

    // Once it is listed, nothing is left to be done again.
    const auto listed = [&] {
        return g_variant_n_children(
            desktop::Variant::take(g_variant_get_child_value(app.call("Delivered", nullptr, "(as)").get(), 0)).get());
    };
    while (!HasFailure() && listed() == 0) {
    }
    kill(SIGKILL);
    send(counting, "m2"); // the bus starts it for this
    EXPECT_TRUE(presence.next());
    EXPECT_EQ(distributor.asked.next().token, token);
    shown(2);
    EXPECT_EQ(badges.next(), 1) << "said again";
    EXPECT_EQ(badges.next(), 2);
    EXPECT_THAT(app.told().next(), StartsWith("WillPresent "));
    server.press(first.id, "default"); // the killed one has shown it
    EXPECT_THAT(app.told().next(), StartsWith("Respond "));
    send(counting, "m1"); // delivered twice, either side of the kill
    kill(SIGTERM);
    send(counting, "m3");
    EXPECT_TRUE(presence.next());
    shown(3);
    EXPECT_EQ(badges.next(), 2) << "said again";
    EXPECT_EQ(badges.next(), 3);
    kill(SIGTERM);
}

TEST_F(PushProcessTest, TheImageIsShownAndWhatTheUserDoesReachesTheApp) {
    const std::string picture = "\x89PNG\r\n";
    LoopbackServer images([&](const auto&, auto& reply) { reply.answer(200, picture); });
    registered();
    const auto opened = std::make_shared<Awaited<std::string>>();
    desktop::SessionBus extension(bus.address());
    extension.serve(desktop::content_interface::path, desktop::content_interface::xml,
                    [opened](const desktop::MethodCall& call) {
                        const char* text = nullptr;
                        g_variant_get(call.parameters().get(), "(&s)", &text);
                        opened->put(text);
                        call.answer();
                    });
    takeName(extension, content); // a notification that comes earlier has no button to view it

    send({{"alert", "is here"},
          {"mutable-content", 1},
          {"category", ""},
          {"pushId", "p1"},
          {"urlImageString", images.url("/coat.png").text()}},
         "m1");
    const auto rich = shown(1);
    std::string hints;
    for (const auto& [name, value] : rich.hints) {
        hints += name + "=" + value + " ";
    }
    EXPECT_THAT(hints, HasSubstr("image.jpg"));
    server.press(rich.id, rich.keyOf("View"));
    EXPECT_THAT(opened->next(), HasSubstr("\"pushId\":\"p1\""));

    send({{"alert", "plain"}}, "m2");
    EXPECT_THAT(app.told().next(), StartsWith("WillPresent "));
    EXPECT_THAT(app.told().next(), StartsWith("WillPresent "));
    server.press(shown(2).id, "default");
    EXPECT_THAT(app.told().next(), ::testing::AllOf(StartsWith("Respond "), HasSubstr("\"body\":\"plain\"")));
    kill(SIGTERM);
}

} // namespace
} // namespace zentavo::tests
