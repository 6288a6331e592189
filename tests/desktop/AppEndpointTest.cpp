// The app on the bus: what its extensions tell it, and what it asks of them.

#include <cerrno> // the program's name
#include <cstdlib>

#include "ports/desktop/DesktopProcess.h"
#include "ports/desktop/ForwardingDelegate.h"
#include "tests/desktop/DesktopTest.h"
#include "tests/desktop/OtherProgram.h"
#include "tests/desktop/TakeName.h"

namespace zentavo::tests {
namespace {

using desktop::DesktopProcess;
using desktop::MethodCall;
using desktop::Variant;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

constexpr const char* appName = "com.example.host";
constexpr const char* serviceName = "com.example.host.NotificationService";

/// The app's notification service, with one notification up and one text that is none.
class FakeService {
public:
    explicit FakeService(const std::string& address) : bus_(address) {
        bus_.serve(desktop::service_interface::path, desktop::service_interface::xml, [this](const MethodCall& call) {
            calls.add(call.method());
            if (call.method() == "Delivered") {
                const platform::Notification shown{{"of the service", {}}};
                GVariantBuilder texts;
                g_variant_builder_init(&texts, G_VARIANT_TYPE("as"));
                g_variant_builder_add(&texts, "s", "nonsense");
                g_variant_builder_add(&texts, "s", desktop::codec::write(shown).value().c_str());
                return call.answer(Variant::share(g_variant_new("(as)", &texts)));
            }
            call.answer();
        });
        takeName(bus_, serviceName);
    }

    Seen<std::string> calls;

private:
    desktop::SessionBus bus_;
};

class AppEndpointTest : public DesktopTest {
protected:
    std::unique_ptr<DesktopProcess> start() {
        auto made = std::make_unique<DesktopProcess>(session, remote, *memory.platform(), memory.queues->mainQueue(),
                                                     desktop::AppWindows{[this] { return inFront; }});
        settle();
        return made;
    }
    Result<Variant> tell(const char* method, const std::string& text, const char* answerType = "()") {
        return ask({appName, desktop::app_interface::path, desktop::app_interface::name, method,
                    Variant::share(g_variant_new("(s)", text.c_str())), answerType});
    }
    std::string responseText(const std::string& identifier) {
        return desktop::codec::write(platform::NotificationResponse{{request(identifier)}, "x"}).value();
    }
    std::vector<std::string> delivered(const DesktopProcess& process) {
        Seen<std::vector<platform::Notification>> answers;
        process.userNotifications()->delivered([&](auto all) { answers.add(std::move(all)); });
        EXPECT_TRUE(until([&] { return answers.count() == 1; }));
        std::vector<std::string> identifiers;
        const auto all = answers.all().at(0);
        for (const auto& notification : all) {
            identifiers.push_back(notification.request.identifier);
        }
        return identifiers;
    }

    bool inFront = false;
    const std::shared_ptr<desktop::RemoteNotifications> remote = std::make_shared<desktop::RemoteNotifications>();
    const std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
};

TEST_F(AppEndpointTest, AClickThatStartedTheAppIsToldOnce) {
    const auto clicks = std::make_shared<desktop::SessionBus>(bus.address());
    const auto service = desktop::ForwardingDelegate::make(clicks, appName, *memory.platform());
    service->userNotificationCenter(*memory.userNotifications, {{request("cold")}, "x"}, [] {});
    ASSERT_TRUE(until([&] { return !memory.systemLog->entries().empty(); })) << "it is not there yet";

    const auto app = start();
    ASSERT_TRUE(until([&] { return service->waiting() == 0; }));
    settle();
    EXPECT_THAT(delegate->told, IsEmpty()) << "the host has not come to it";
    app->userNotifications()->setDelegate(delegate);
    app->userNotifications()->setDelegate(delegate);
    memory.queues->runUntilIdle();
    EXPECT_THAT(delegate->told, ElementsAre("cold: x"));
    EXPECT_TRUE(tell("Respond", responseText("warm")));
    settle();
    EXPECT_THAT(delegate->told, ElementsAre("cold: x", "warm: x"));
}

TEST_F(AppEndpointTest, AResponseThatTheBusBringsTwiceIsToldOnce) {
    const auto app = start();
    app->userNotifications()->setDelegate(delegate);
    const platform::NotificationResponse response{{request("a")}, "x"};
    const auto text = [&](const std::string& id) { return desktop::codec::write(response, id).value(); };
    EXPECT_TRUE(tell("Respond", text("1")));
    EXPECT_TRUE(tell("Respond", text("1"))) << "its sender must not try again";
    EXPECT_TRUE(tell("Respond", text("2"))) << "the user did another thing with it";
    EXPECT_TRUE(tell("Respond", responseText("b")));
    EXPECT_FALSE(tell("Respond", text(std::string(desktop::codec::maximumIdBytes + 1, 'x'))));
    settle();
    EXPECT_THAT(delegate->told, ElementsAre("a: x", "a: x", "b: x"));
}

TEST_F(AppEndpointTest, SaysHowToShowWhatArrives) {
    const auto app = start();
    app->userNotifications()->setDelegate(delegate);
    delegate->options = platform::presentBadge;
    const auto options = [&] {
        const auto answer =
            tell("WillPresent", desktop::codec::write(platform::Notification{request("a")}).value(), "(u)");
        guint32 mask = 100;
        if (answer) {
            g_variant_get(answer->get(), "(u)", &mask);
        }
        return mask;
    };
    EXPECT_EQ(options(), 7U);
    EXPECT_THAT(delegate->asked, IsEmpty());
    inFront = true;
    EXPECT_EQ(options(), platform::presentBadge);
}

TEST_F(AppEndpointTest, RefusesTextsThatAreNone) {
    const auto app = start();
    app->userNotifications()->setDelegate(delegate);
    for (const char* bad : {"", "{", "[]", "{\"actionIdentifier\": \"x\"}"}) {
        EXPECT_THAT(tell("Respond", bad).error().message, HasSubstr("no response")) << bad;
        EXPECT_THAT(tell("WillPresent", bad, "(u)").error().message, HasSubstr("no notification")) << bad;
    }
    EXPECT_THAT(delegate->told, IsEmpty());
    EXPECT_THAT(delegate->asked, IsEmpty());
}

TEST_F(AppEndpointTest, HearsItsServiceAlone) {
    const auto app = start();
    app->userNotifications()->setDelegate(delegate);
    const TextMethod respond{appName, desktop::app_interface::path, desktop::app_interface::name, "Respond"};
    const std::string call = "call=" + responseText("a");
    EXPECT_THAT(runOtherProgram(bus.address(), respond, {call, "own=com.example.host.NotificationContent", call}),
                ElementsAre(accessDenied, accessDenied));
    EXPECT_THAT(runOtherProgram(bus.address(), respond, {"own=" + std::string(serviceName), call}), ElementsAre("ok"));
    settle();
    EXPECT_THAT(delegate->told, ElementsAre("a: x"));
}

TEST_F(AppEndpointTest, BringsTheTokenToAHostThatMayComeLater) {
    const auto app = start();
    EXPECT_TRUE(tell("TokenChanged", "https://push.example/1"));
    EXPECT_TRUE(tell("TokenChanged", "https://push.example/2"));
    for (const std::string& bad :
         {std::string("token"), std::string("file:///etc"), "https://push.example/#" + std::string(300, 'x')}) {
        EXPECT_THAT(tell("TokenChanged", bad).error().message, HasSubstr("cannot be sent")) << bad;
    }
    std::vector<std::string> news;
    remote->setHandlers({[&](const std::string& token) { news.push_back(token); },
                         [&](const std::string& reason) { news.push_back("failed: " + reason); }});
    EXPECT_THAT(news, IsEmpty()) << "not inside the call";
    memory.queues->runUntilIdle();
    EXPECT_TRUE(tell("RegistrationFailed", "no distributor"));
    settle();
    EXPECT_THAT(news, ElementsAre("https://push.example/2", "failed: no distributor"));
}

TEST_F(AppEndpointTest, AsksItsServiceWhereThereIsOne) {
    const auto app = start();
    std::vector<std::string> failures;
    remote->setHandlers({nullptr, [&](const std::string& reason) { failures.push_back(reason); }});
    app->registerForRemoteNotifications();
    ASSERT_TRUE(until([&] { return !failures.empty(); })) << "nobody to ask";
    EXPECT_THAT(delivered(*app), IsEmpty());
    app->userNotifications()->removeDelivered({"a"});

    FakeService service(bus.address());
    app->registerForRemoteNotifications();
    app->userNotifications()->removeDelivered({"a", "\xFF"});
    EXPECT_THAT(delivered(*app), ElementsAre("of the service"));
    EXPECT_THAT(service.calls.all(), ElementsAre("Register", "RemoveDelivered", "Delivered"));
    EXPECT_THAT(failures, SizeIs(1));
}

TEST_F(AppEndpointTest, IsFoundWhereTheHostsApplicationObjectHasTheName) {
    setenv("DBUS_SESSION_BUS_ADDRESS", bus.address().c_str(), 1);
    const std::shared_ptr<GApplication> host(g_application_new(appName, G_APPLICATION_IS_SERVICE), g_object_unref);
    ASSERT_TRUE(g_application_register(host.get(), nullptr, nullptr));
    g_dbus_connection_set_exit_on_close(g_application_get_dbus_connection(host.get()), FALSE);
    g_application_set_default(host.get());
    {
        const auto app = start();
        app->userNotifications()->setDelegate(delegate);
        EXPECT_TRUE(tell("Respond", responseText("a")));
        settle();
        EXPECT_THAT(delegate->told, ElementsAre("a: x"));
    }
    g_application_set_default(nullptr);
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
}

TEST_F(AppEndpointTest, AProgramWithoutAnIdentifierAndAnExtensionHaveNoPlaceOnTheBus) {
    FakeNotificationServer server(bus.address());
    for (const char* identifier : {"", "com.example.host.NotificationContent"}) {
        memory.bundles->mainBundle()->set("CFBundleIdentifier", identifier);
        memory.systemLog->clear();
        session = std::make_shared<desktop::SessionBus>(bus.address());
        const auto program = start();
        EXPECT_FALSE(tell("Respond", responseText("a")));
        std::vector<std::string> failures;
        remote->setHandlers({nullptr, [&](const std::string& reason) { failures.push_back(reason); }});
        program->registerForRemoteNotifications();
        EXPECT_TRUE(until([&] { return !failures.empty(); }));
        Seen<bool> shown;
        program->userNotifications()->add(request("a"), [&](const auto& error) { shown.add(!error); });
        ASSERT_TRUE(until([&] { return shown.count() == 1; }));
        EXPECT_TRUE(shown.all().at(0)) << "notifications work";
        EXPECT_EQ(memory.systemLog->entries().size(), *identifier == '\0' ? 2U : 1U);
    }
    EXPECT_EQ(server.shown().at(0).hints.at("desktop-entry"), std::string("'") + program_invocation_short_name + "'");
    EXPECT_EQ(server.shown().at(1).hints.at("desktop-entry"), "'com.example.host'");
}

} // namespace
} // namespace zentavo::tests
