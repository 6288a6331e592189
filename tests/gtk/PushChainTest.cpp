// A push's whole way through the storefront's three programs, with the dev server at one end and a notification service
// whose user is the test at the other. The bus starts each program when it is needed.

#include <cstdlib>
#include <filesystem>
#include <thread>

#include <gmock/gmock.h>

#include "examples/storefront/support/Screen.h"
#include "ports/linux/LinuxPlatform.h"
#include "tests/desktop/Awaited.h"
#include "tests/desktop/FakeNotificationServer.h"
#include "tests/desktop/PrivateBus.h"
#include "tests/e2e/DevServer.h"
#include "zentavo/foundation/JSON.h"

namespace zentavo::tests {
namespace {

using desktop::SessionBus;
using desktop::Variant;

const std::string shopName = "example.nordlys.shop";
const std::string shopTitle = "Nordlys";
const std::string contentTitle = "News from Nordlys";

bool eventually(const std::function<bool()>& done) {
    for (int i = 0; i < 1'000; ++i) {
        if (done()) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
}

class PushChainTest : public ::testing::Test {
protected:
    PushChainTest() {
        std::filesystem::create_directory(bus.folder() / "data");
        GVariantBuilder variables;
        g_variant_builder_init(&variables, G_VARIANT_TYPE("a{ss}"));
        g_variant_builder_add(&variables, "{ss}", "STOREFRONT_SERVER", server.url().c_str());
        g_variant_builder_add(&variables, "{ss}", "STOREFRONT_DATA", (bus.folder() / "data").c_str());
        EXPECT_TRUE(ask("UpdateActivationEnvironment", Variant::share(g_variant_new("(a{ss})", &variables)), "()"));
    }
    ~PushChainTest() override {
        for (const char* suffix : {".NotificationContent", ".NotificationService", ""}) {
            endProgram(shopName + suffix);
        }
    }

    /// Asks the bus itself.
    Result<Variant> ask(const std::string& method, Variant parameters, const char* answerType) {
        const auto answer = std::make_shared<Awaited<std::optional<Result<Variant>>>>();
        session.call({"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", method,
                      std::move(parameters), answerType},
                     [answer](Result<Variant> values) { answer->put(std::move(values)); });
        return answer->next().value_or(Error{"no answer"});
    }
    Result<Variant> askAbout(const std::string& name, const char* method, const char* answerType) {
        return ask(method, Variant::share(g_variant_new("(s)", name.c_str())), answerType);
    }
    bool runs(const std::string& name) {
        gboolean owned = FALSE;
        g_variant_get(askAbout(name, "NameHasOwner", "(b)").value().get(), "(b)", &owned);
        return owned != FALSE;
    }
    /// Ends the program that has this name, if there is one.
    void endProgram(const std::string& name) {
        if (const auto owner = askAbout(name, "GetConnectionUnixProcessID", "(u)")) {
            guint32 process = 0;
            g_variant_get(owner->get(), "(u)", &process);
            kill(static_cast<pid_t>(process), SIGTERM);
            EXPECT_TRUE(eventually([&] { return !runs(name); })) << name;
        }
    }
    /// The shop runs once and learns where pushes are to be sent. Afterwards no program of it runs.
    void install() {
        ASSERT_TRUE(askAbout(shopName, "NameHasOwner", "(b)"));
        ASSERT_TRUE(ask("StartServiceByName", Variant::share(g_variant_new("(su)", shopName.c_str(), 0U)), "(u)"));
        ASSERT_TRUE(eventually([&] {
            return json::write(server.dev("devices")).value().find("/_push/") != std::string::npos;
        })) << "the push service knows the device: "
            << json::write(server.dev("push/registrations")).value();
        endProgram(shopName);
        endProgram(shopName + ".NotificationService");
        EXPECT_FALSE(runs(shopName + ".NotificationContent")) << "nobody needed it";
    }
    /// Sends it, and waits until it is on the screen as the `count`th.
    FakeNotificationServer::Shown arrive(const std::string& file, std::size_t count) {
        server.push(file);
        EXPECT_TRUE(eventually([&] { return notifications.shown().size() == count; })) << file;
        return notifications.shown().empty() ? FakeNotificationServer::Shown() : notifications.shown().back();
    }
    /// The dev server's record of a push; the newest is 0.
    Value record(std::size_t index, const char* key) {
        const Value all = server.dev("pushes");
        const List& pushes = *all.asMap()->find("pushes")->asList();
        return index < pushes.size() ? *pushes[index].asMap()->find(key) : Value();
    }
    /// Whether the shop has said that it shows this screen.
    bool showed(const std::string& title) {
        return json::write(server.dev("requests?path=/event")).value().find('"' + title + '"') != std::string::npos;
    }
    /// Clicks into the window of the content extension; from its other end where below 0.
    void tap(int x, int y) {
        const auto area = screen.window(contentTitle);
        if (area && area->height > 400) { // as high as this content makes it
            screen.click(area->x + (x < 0 ? area->width : 0) + x, area->y + (y < 0 ? area->height : 0) + y);
        }
    }

    // The desktop's entry for the shop's links. What the bus starts has it from the bus, and that from here.
    const bool entries = setenv("XDG_DATA_DIRS", ZENTAVO_STOREFRONT_SHARE ":/usr/local/share:/usr/share", 1) == 0;
    PrivateBus bus{{{shopName, ZENTAVO_STOREFRONT},
                    {shopName + ".NotificationService", ZENTAVO_STOREFRONT_SERVICE},
                    {shopName + ".NotificationContent", ZENTAVO_STOREFRONT_CONTENT}}};
    // What this test starts uses that bus.
    const bool exported = setenv("DBUS_SESSION_BUS_ADDRESS", bus.address().c_str(), 1) == 0;
    SessionBus session{bus.address()};
    FakeNotificationServer notifications{bus.address()};
    e2e::DevServer server{{"--distributor"}};
    storefront::Screen screen;
};

TEST_F(PushChainTest, AChoiceInTheExtensionReachesTheAppThatTheClickStartsOnce) {
    install();
    const auto rating = arrive("rating", 1);
    EXPECT_EQ(rating.summary, "How do you like your Fjord?");
    EXPECT_TRUE(rating.hints.contains("image-path")) << "the service extension fetched its picture";
    EXPECT_FALSE(runs(shopName)) << "the app is not needed to show it";

    notifications.press(rating.id, rating.keyOf("View"));
    ASSERT_TRUE(eventually([&] { return screen.window(contentTitle).has_value(); }));
    // The fourth star, and then the button "Send" at the bottom. Taps on what is not laid out yet mean nothing.
    const auto choices = zentavo::linux_port::makeLinuxPlatform({bus.folder() / "data", {}})
                             ->preferences->suite("group." + shopName + ".zentavo");
    const std::string key = *record(0, "push_id").asString() + "_rating";
    ASSERT_TRUE(eventually([&] {
        tap(255, -123);
        return choices->integer(key) == 4;
    }));
    ASSERT_TRUE(eventually([&] {
        tap(200, -40);
        return !screen.window(contentTitle);
    }));
    ASSERT_TRUE(eventually([&] { return record(0, "rating_count") == Value(1); })) << "the app was started and told";
    EXPECT_TRUE(runs(shopName));
    EXPECT_EQ(record(0, "clicks"), Value(1));
    EXPECT_THAT(json::write(*record(0, "ratings").asList()).value(), ::testing::HasSubstr("\"selected\":4"));
    EXPECT_TRUE(eventually([&] { return showed("Fjord"); })) << "the link that was chosen leads into the shop";

    // Whatever would have been told twice has been by the time the next click is.
    const auto plain = arrive("plain", 2);
    notifications.press(plain.id, "default");
    ASSERT_TRUE(eventually([&] { return record(0, "clicks") == Value(1); }));
    EXPECT_EQ(record(1, "clicks"), Value(1));
    EXPECT_EQ(record(1, "rating_count"), Value(1));
}

} // namespace
} // namespace zentavo::tests
