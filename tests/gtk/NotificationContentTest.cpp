// The program that draws rich notifications, with a service on a real bus that only writes down what it is told.

#include <atomic>

#include "ports/desktop/AppInterfaces.h"
#include "ports/desktop/NotificationCodec.h"
#include "ports/desktop/SessionBus.h"
#include "ports/gtk/NotificationContentHost.h"
#include "tests/desktop/DesktopTest.h"
#include "tests/gtk/GuiTest.h"
#include "tests/push/PushTemplateTest.h"

namespace zentavo::tests {
namespace {

using desktop::MethodCall;
using desktop::SessionBus;
using desktop::Variant;
using ::testing::HasSubstr;
using ::testing::SizeIs;

class NotificationContentTest : public GuiTest {
protected:
    NotificationContentTest() {
        memory.session->setDefault({404, "no"});
        service.serve(desktop::service_interface::path, desktop::service_interface::xml,
                      [this](const MethodCall& call) {
                          if (refusals > 0) {
                              --refusals;
                              return call.refuse("not now");
                          }
                          const char* text = nullptr;
                          g_variant_get(call.parameters().get(), "(&s)", &text);
                          responses.add(desktop::codec::readResponse(text).value().response);
                          call.answer();
                      });
        service.own("com.example.host.NotificationService", [this](bool ours) { owned.add(ours); });
        EXPECT_TRUE(until([&] { return owned.all() == std::vector{true}; }));
    }

    /// As the function of that name, while what the SDK does off the main queue goes on too: choices are stored there.
    bool until(const std::function<bool()>& done) {
        return tests::until([&] {
            memory.queues->runUntilIdle();
            return done();
        });
    }

    void start(std::chrono::milliseconds idle = std::chrono::seconds(30)) {
        host = std::make_unique<gtk::NotificationContentHost>(
            sdk,
            [this](std::shared_ptr<platform::NotificationExtensionContext> context,
                   const platform::Notification& notification) {
                contexts.push_back(context);
                shown = PushTemplateBaseController::handleNotification(std::move(context), notification);
                return shown != nullptr;
            },
            gtk::NotificationContentOptions{"Nordlys", "Open", 360, idle});
        // No service file would start the program: nobody may call it before it is there.
        Seen<bool> presence;
        SessionBus watcher;
        watcher.watch("com.example.host.NotificationContent", [&](bool there) { presence.add(there); });
        until([&] { return host->isOver() || (!presence.all().empty() && presence.all().back()); });
    }

    /// Has the host show it, as the notification service does; what it answers, "" for no error.
    std::string show(const std::string& text) {
        Seen<std::string> answers;
        SessionBus caller;
        caller.call({"com.example.host.NotificationContent", desktop::content_interface::path,
                     desktop::content_interface::name, "Show", Variant::share(g_variant_new("(s)", text.c_str()))},
                    [&](const Result<Variant>& answer) { answers.add(answer ? "" : answer.error().message); });
        EXPECT_TRUE(until([&] { return !answers.all().empty(); }));
        return answers.all().at(0);
    }
    std::string show(const platform::Notification& notification) {
        return show(desktop::codec::write(notification).value());
    }
    static platform::Notification push(const std::string& title) {
        return SampleTemplate::push(
            SampleTemplate::rating(5) + "," +
                SampleTemplate::buttons(SampleTemplate::button("Send", "https://shop.example/1"),
                                        SampleTemplate::button("Later", "")),
            title);
    }

    /// The host's window, or null; the test's own is another.
    static GtkWindow* contentWindow() {
        GListModel* all = gtk_window_get_toplevels();
        for (guint i = 0; i < g_list_model_get_n_items(all); ++i) {
            auto* each = static_cast<GtkWindow*>(g_list_model_get_item(all, i));
            g_object_unref(each);
            if (gtk_widget_get_name(GTK_WIDGET(each)) == std::string("zentavo.notification")) {
                return each;
            }
        }
        return nullptr;
    }
    /// Clicks into the middle of one of the template's views.
    void tap(const platform::View& around, const platform::View& view) {
        settle(contentWindow());
        graphene_point_t origin{0, 0};
        GtkWidget* bar = gtk_window_get_titlebar(contentWindow());
        ASSERT_TRUE(gtk_widget_compute_point(bar, GTK_WIDGET(contentWindow()), &origin, &origin));
        const double top = origin.y + gtk_widget_get_height(bar);
        pointer.click(contentWindow(), around.frame().x + view.frame().x + view.frame().width / 2,
                      top + around.frame().y + view.frame().y + view.frame().height / 2);
    }

    std::atomic<int> refusals = 0; ///< how often the service says no before it writes down what it is told
    Seen<bool> owned;
    Seen<platform::NotificationResponse> responses;
    SessionBus service;
    std::vector<std::shared_ptr<platform::NotificationExtensionContext>> contexts;
    std::shared_ptr<PushTemplateBaseController> shown;
    std::unique_ptr<gtk::NotificationContentHost> host;
};

TEST_F(NotificationContentTest, AChoiceIsStoredAndTheServiceIsToldThatTheNotificationWasOpened) {
    start();
    ASSERT_EQ(show(push("How are your boots?")), "");
    ASSERT_NE(contentWindow(), nullptr);
    EXPECT_STREQ(gtk_window_get_title(contentWindow()), "Nordlys");
    EXPECT_TRUE(until([&] {
        const int room = gtk_widget_get_height(gtk_window_get_child(contentWindow()));
        return room == static_cast<int>(shown->viewHeight) && shown->view->frame().height == room;
    })) << "as high as the content asks for";
    EXPECT_EQ(shown->view->frame().width, 360);

    tap(*shown->stackView, *shown->button2Label->view);
    settle(contentWindow());
    EXPECT_THAT(responses.all(), SizeIs(0)) << "it leads nowhere, and the window stays";

    tap(*shown->stackView, *shown->button1Label->view);
    ASSERT_TRUE(eventually([&] { return responses.all().size() == 1 && contentWindow() == nullptr; }));
    EXPECT_EQ(responses.all()[0].actionIdentifier, platform::defaultActionIdentifier);
    EXPECT_EQ(responses.all()[0].notification, push("How are your boots?"));
    EXPECT_EQ(memory.preferences->suite("group.com.example.host.zentavo")->string("p1_url_clicked"),
              "https://shop.example/1");
    EXPECT_TRUE(until([&] { return !shown->isShown(); }));
    EXPECT_FALSE(contexts[0]->performNotificationDefaultAction()) << "it is over";
    EXPECT_FALSE(host->isOver()) << "another one may come";
}

TEST_F(NotificationContentTest, AChoiceThatTheServiceDoesNotTakeIsToldOnceMoreAndThenLeftToTheURL) {
    start();
    ASSERT_EQ(show(push("First")), "");
    refusals = 1;
    tap(*shown->stackView, *shown->button1Label->view);
    ASSERT_TRUE(eventually([&] { return responses.all().size() == 1 && contentWindow() == nullptr; }));

    ASSERT_EQ(show(push("Second")), "");
    refusals = 2;
    EXPECT_TRUE(contexts[1]->performNotificationDefaultAction());
    ASSERT_TRUE(until([&] { return !contexts[1]->performNotificationDefaultAction(); }))
        << "who asks again opens the URL itself";
    EXPECT_EQ(refusals, 0);
    EXPECT_NE(contentWindow(), nullptr) << "the user sees that nothing was opened";
    EXPECT_THAT(memory.systemLog->entries().back().message, HasSubstr("not now"));
    EXPECT_THAT(responses.all(), SizeIs(1));

    ASSERT_EQ(show(push("Third")), "");
    EXPECT_TRUE(contexts[2]->performNotificationDefaultAction()) << "another one, another attempt";
    EXPECT_TRUE(until([&] { return responses.all().size() == 2 && contentWindow() == nullptr; }));
}

TEST_F(NotificationContentTest, AnotherNotificationTakesThePlaceOfTheOneBefore) {
    start();
    gtk_window_present(window);
    ASSERT_EQ(show(push("First")), "");
    GtkWindow* const first = contentWindow();
    const auto before = shown;
    auto second = push("Second");
    second.request.identifier = "n2";
    ASSERT_EQ(show(second), "");
    EXPECT_EQ(contentWindow(), first);
    EXPECT_FALSE(before->isShown());
    EXPECT_EQ(shown->titleNoti, "Second");
    contexts[0]->setPreferredHeight(600);
    EXPECT_FALSE(contexts[0]->performNotificationDefaultAction());
    settle(contentWindow());
    EXPECT_LT(gtk_widget_get_height(gtk_window_get_child(contentWindow())), 600);

    // The button of the bar opens what is shown now.
    const auto find = [](auto& self, GtkWidget* in) -> GtkWidget* {
        for (GtkWidget* child = gtk_widget_get_first_child(in); child != nullptr;
             child = gtk_widget_get_next_sibling(child)) {
            GtkWidget* found =
                gtk_widget_get_name(child) == std::string("zentavo.notification.open") ? child : self(self, child);
            if (found != nullptr) {
                return found;
            }
        }
        return nullptr;
    };
    GtkWidget* open = find(find, gtk_window_get_titlebar(contentWindow()));
    ASSERT_NE(open, nullptr);
    g_signal_emit_by_name(open, "clicked");
    g_signal_emit_by_name(open, "clicked");
    ASSERT_TRUE(until([&] { return !responses.all().empty() && contentWindow() == nullptr; }));
    settle(window);
    ASSERT_THAT(responses.all(), SizeIs(1)) << "a second click on the way out is none";
    EXPECT_EQ(responses.all()[0].notification.request.identifier, "n2");
}

TEST_F(NotificationContentTest, WhatCannotBeShownIsRefusedAndOpensNoWindow) {
    start();
    for (const char* text : {"", "{", "[]", "{\"identifier\": \"n\"}"}) {
        EXPECT_NE(show(text), "") << text;
    }
    auto noPayload = push("x");
    noPayload.request.content.userInfo = {};
    EXPECT_THAT(show(noPayload), HasSubstr("cannot be drawn"));
    EXPECT_TRUE(until([] { return contentWindow() == nullptr; }));
    EXPECT_EQ(show(push("x")), "") << "the next one is none the worse";
}

TEST_F(NotificationContentTest, EndsOnceTheWindowIsClosedAndNothingElseComes) {
    start(std::chrono::milliseconds(100));
    EXPECT_EQ(host->run(), 0) << "nothing came at all";
    host = nullptr;

    start(std::chrono::milliseconds(1'500));
    ASSERT_EQ(show(push("x")), "");
    gtk_window_close(contentWindow());
    EXPECT_EQ(host->run(), 0);
    EXPECT_EQ(contentWindow(), nullptr);
    EXPECT_THAT(responses.all(), SizeIs(0)) << "to close the window is not to put the notification away";
    host = nullptr;

    memory.bundles->mainBundle()->set("CFBundleIdentifier", "no name for a bus");
    start();
    EXPECT_EQ(host->run(), 1);
    EXPECT_THAT(memory.systemLog->entries().back().message, HasSubstr("bundle identifier"));
}

} // namespace
} // namespace zentavo::tests
