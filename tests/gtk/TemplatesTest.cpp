// In-app messages as a user sees them: the SDK over a scripted network, the real toolkit, the real engine.

#include <csignal>
#include <cstdlib>

#include "examples/storefront/support/Screenshot.h"
#include "ports/gtk/Attach.h"
#include "tests/gtk/Descendants.h"
#include "tests/gtk/GuiTest.h"
#include "tests/support/LoopbackServer.h"
#include "zentavo/core/ZentavoState.h"
#include "zentavo/foundation/JSON.h"
#include "zentavo/inapp/DeliveryTrace.h"

namespace zentavo::tests {
namespace {

using platform::Rect;
using namespace std::chrono_literals;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::ScriptedAnswer;
using ClosedBy = DeliveryTrace::ClosedBy;

void serve(const LoopbackServer::Request&, LoopbackServer::Reply& reply) {
    reply.answer(200, R"(<!doctype html><body style="margin: 0"><script>
        const post = message => window.webkit.messageHandlers.eventHandler.postMessage(message);
        function resizeView() { size.textContent = innerWidth + ' x ' + innerHeight; }
        // What a campaign's script does with the page: one colour, one button of another, and its size.
        function show(data) {
            document.body.innerHTML =
                '<div style="position: fixed; inset: 0; background: #ff0000; font: 14px sans-serif; color: white">' +
                '<button style="position: absolute; left: 20px; top: 10px; width: 80px; height: 30px; border: 0; ' +
                'background: #00ff00"></button><p id=size style="position: absolute; left: 120px; top: 0"></p></div>';
            document.querySelector('button').onclick = () => post({type: 'zentavo-cdp-campaign-change-route', data:
                {trackingUrl: 'http://track.example/click?resp_type=pixel', route: 'shop://sale'}});
            post({type: 'zentavo-cdp-campaign-size', data});
        }
        </script></body>)",
                 "Content-Type: text/html\r\n");
}

class TemplatesTest : public GuiTest {
protected:
    TemplatesTest() {
        Endpoints endpoints;
        endpoints.templateHost = "http://127.0.0.1:" + std::to_string(server.port());
        sdk->setEndpoints(endpoints);
        sdk->activate(Configuration{"1001", "555", "group.shop", "42"});
        sdk->setDeliveryTraceCallback([this](const DeliveryTrace& trace) { traces.push_back(trace); });
        sdk->setHandleChangeRouteTemplate([this](const std::string& route) { routes.push_back(route); });
        memory.queues->runUntilIdle();
        memory.session->clear();
        traces.clear();
        present();
    }

    ~TemplatesTest() override {
        // What is on screen is closed with the window, when the lists are gone.
        sdk->setDeliveryTraceCallback(nullptr);
        sdk->setHandleChangeRouteTemplate(nullptr);
    }

    void track(const std::string& type, const std::string& script, const std::string& mode = "VISUAL",
               const Value& storyLimit = nullptr) {
        const Map campaign{
            {"javascript", script}, {"template", type},    {"designMode", mode}, {"storyId", 11},
            {"variantId", 12},      {"destinationId", 13}, {"zoneId", 14},       {"frequencyCapping", storyLimit}};
        memory.session->on({"POST", "", "/interaction/v2"},
                           ScriptedAnswer{200, json::write(Map{{"webContents", Map{{"a", campaign}}}}).value()});
        sdk->track(CDPEvent("view"));
    }
    /// Shows a message; returns once its button is to be seen there.
    void show(const std::string& type, const std::string& size, int x, int y, const Value& storyLimit = nullptr) {
        track(type, "show(" + size + ")", "VISUAL", storyLimit);
        EXPECT_TRUE(eventually([&] { return pixel(x + 21, y + 11) == greenPixel; })) << type;
        EXPECT_TRUE(sdk->isShowingTemplate());
    }
    bool closed() {
        return eventually([&] { return !sdk->isShowingTemplate() && find("zentavo.popup") == nullptr; });
    }
    /// From now on URLs are opened by an application that only remembers them.
    void useMemoryApplication() {
        auto interface = *memory.platform()->userInterface();
        interface.application = memory.application;
        memory.platform()->attach(std::move(interface));
    }
    std::optional<std::string> stored(const std::string& key) { return sdk->state()->store()->string(key); }
    /// For who wants to look: as PNG files in the folder that this names.
    void save(const std::string& name) {
        if (const char* folder = std::getenv("ZENTAVO_TEST_PICTURES")) {
            settle(window);
            EXPECT_TRUE(storefront::saveScreenshot(window, std::string(folder) + "/" + name + ".png"));
        }
    }
    GtkWidget* find(const std::string& name, GtkWidget* from = nullptr) {
        from = from != nullptr ? from : GTK_WIDGET(window);
        if (gtk_widget_get_name(from) == name) {
            return from;
        }
        for (GtkWidget* child = gtk_widget_get_first_child(from); child != nullptr;
             child = gtk_widget_get_next_sibling(child)) {
            if (GtkWidget* found = find(name, child)) {
                return found;
            }
        }
        return nullptr;
    }
    Rect frame(const std::string& name) {
        graphene_rect_t bounds{};
        GtkWidget* widget = find(name);
        EXPECT_TRUE(widget != nullptr && gtk_widget_compute_bounds(widget, GTK_WIDGET(window), &bounds)) << name;
        return {bounds.origin.x, bounds.origin.y, bounds.size.width, bounds.size.height};
    }

    static constexpr Pixel dimmed{0, 0, 127};

    LoopbackServer server{&serve};
    std::vector<DeliveryTrace> traces;
    std::vector<std::string> routes;
};

TEST_F(TemplatesTest, AMessageFollowsTheWindowAndItsPageIsToldOnceItHasTheSize) {
    // The page shows which size it had when it was last told.
    track("floating_bar", "window.resizeView = () => { document.querySelector('div').style.background = "
                          "{400: '#ff0000', 500: '#00ffff', 300: '#ffff00'}[innerWidth] || '#000000'; };"
                          "show({width: 1, height: 60, positionSettings: {bottom: 10, positionSuffix: 'px'}})");
    EXPECT_TRUE(eventually([&] { return pixel(399, 231) == redPixel; }));
    gtk_window_set_default_size(window, 500, 350);
    EXPECT_TRUE(eventually([&] { return pixel(499, 281) == Pixel{0, 255, 255}; }));
    EXPECT_EQ(frame("zentavo.popup"), (Rect{0, 280, 500, 60}));
    EXPECT_EQ(frame("zentavo.overlay"), (Rect{0, 0, 500, 350}));
    gtk_window_set_default_size(window, 300, 280);
    EXPECT_TRUE(eventually([&] { return pixel(299, 211) == Pixel{255, 255, 0}; }));
    EXPECT_EQ(frame("zentavo.popup"), (Rect{0, 210, 300, 60}));
    EXPECT_EQ(pixel(150, 209), background);
}

TEST_F(TemplatesTest, EachTypeStandsWhereItShould) {
    const struct {
        const char* name;
        const char* type;
        const char* size;
        Rect frame;
        bool dims;
    } table[] = {
        {"full_screen", "full_screen", "{width: 300, height: 50}", {50, 0, 300, 300}, true},
        {"gamified", "gamified", "{width: 200, height: 50}", {100, 0, 200, 300}, true},
        {"bar-bottom-px",
         "floating_bar",
         "{width: 10, height: 60, positionSettings: {bottom: 16, positionSuffix: 'px'}}",
         {0, 224, 400, 60},
         false},
        {"bar-bottom-percent",
         "floating_bar",
         "{width: 10, height: 60, positionSettings: {bottom: 10, positionSuffix: '%'}}",
         {0, 210, 400, 60},
         false},
        {"bar-top",
         "floating_bar",
         "{width: 10, height: 60, floatingBarPosition: 'top', positionSettings: {top: 20}}",
         {0, 20, 400, 60},
         false},
        {"centred", "popup", "{width: 220, height: 100}", {90, 100, 220, 100}, true},
    };
    for (const auto& row : table) {
        SCOPED_TRACE(row.name);
        const int left = static_cast<int>(row.frame.x);
        const int top = static_cast<int>(row.frame.y);
        const int right = left + static_cast<int>(row.frame.width) - 1;
        const int bottom = top + static_cast<int>(row.frame.height) - 1;
        show(row.type, row.size, left, top);
        EXPECT_EQ(frame("zentavo.popup"), row.frame);
        EXPECT_EQ(frame("zentavo.page"), row.frame);
        EXPECT_EQ(frame("zentavo.overlay"), (Rect{0, 0, 400, 300}));
        EXPECT_EQ(pixel(left, top, redPixel), redPixel);
        EXPECT_EQ(pixel(right, bottom, redPixel), redPixel);
        const Pixel around = row.dims ? dimmed : background;
        if (left > 0) {
            EXPECT_EQ(pixel(left - 1, 150), around);
            EXPECT_EQ(pixel(right + 1, 150), around);
        }
        if (top > 0) {
            EXPECT_EQ(pixel(200, top - 1), around);
            EXPECT_EQ(pixel(200, bottom + 1, around), around);
        }
        save(row.name);

        // The user clicks the button in the page.
        memory.session->clear();
        routes.clear();
        click(left + 60, top + 25);
        ASSERT_TRUE(closed());
        EXPECT_EQ(pixel(200, 150, background), background);
        EXPECT_EQ(pixel(left, top, background), background);
        EXPECT_THAT(routes, ElementsAre("shop://sale"));
        ASSERT_EQ(memory.session->count(), 1U);
        EXPECT_EQ(memory.session->requests().at(0)->url.text(), "http://track.example/click?resp_type=json");
        EXPECT_EQ(traces.back().closedBy, ClosedBy::click);
    }
}

TEST_F(TemplatesTest, AClickIsStoredCountedAndHandedOn) {
    useMemoryApplication();
    memory.session->on(
        {"GET", "", "/click"},
        ScriptedAnswer{200, R"({"_clk_bc": "c-1", "_clk_url": "https://shop.example/?utm=u-1&atm=a-1"})"});
    const Map limit{{"event", "click"}, {"value", 9}, {"timeUnit", "daily"}, {"object", "person"}};
    const auto& keys = sdk->state()->keys;
    for (const bool withCallback : {true, false}) {
        SCOPED_TRACE(withCallback);
        if (!withCallback) {
            sdk->setHandleChangeRouteTemplate(nullptr);
        }
        for (const std::string& key : {keys.clkBc, keys.utm, keys.atm}) {
            sdk->state()->store()->remove(key);
        }
        show("popup", "{width: 200, height: 100}", 100, 100, limit);
        click(160, 125);
        ASSERT_TRUE(closed());
        EXPECT_TRUE(eventually([&] { return stored(keys.atm).has_value(); }));
        EXPECT_EQ(stored(keys.clkBc), "c-1");
        EXPECT_EQ(stored(keys.utm), "u-1");
        EXPECT_EQ(stored(keys.atm), "a-1");
        EXPECT_THAT(routes, ElementsAre("shop://sale")) << "with the callback only";
        EXPECT_EQ(memory.application->opened().size(), withCallback ? 0U : 1U);
    }
    EXPECT_EQ(memory.application->opened().at(0).text(), "shop://sale");
    EXPECT_EQ(stored("at_freq_capping"), R"({"11":{"timeExpire":1768521600.0,"impression":2,"click":2}})");
}

TEST_F(TemplatesTest, AThirdShowIsRefusedUntilMidnight) {
    sdk->setDebug(true);
    const Map limit{{"event", "impression"}, {"value", 2}, {"timeUnit", "daily"}, {"object", "person"}};
    const auto openAndClose = [&] {
        show("popup", "{width: 200, height: 100}", 100, 100, limit);
        click(160, 125);
        ASSERT_TRUE(closed());
    };
    const auto refused = [&] {
        traces.clear();
        memory.console->clear();
        track("popup", "show({width: 200, height: 100})", "VISUAL", limit);
        ASSERT_TRUE(eventually([&] { return !traces.empty(); }));
        EXPECT_EQ(traces.back().outcome, DeliveryTrace::Outcome::nothingToShow);
        EXPECT_THAT(memory.console->lines(), Contains(HasSubstr("Frequency via story setup 2, cached 2")));
        EXPECT_EQ(find("zentavo.popup"), nullptr);
    };
    openAndClose();
    openAndClose();
    refused();
    memory.queues->advance(12h - 2s); // the last second of the day
    refused();
    memory.queues->advance(2s);
    openAndClose();
}

TEST_F(TemplatesTest, AHandWrittenPageIsLaidOutAndClosedBesideIt) {
    memory.session->on({"POST", "", "/interaction/media-template/info"},
                       ScriptedAnswer{200, R"({"data": {"codeModeSettings": {"width": 50, "widthSuffix": "%",
                           "height": 120}, "options": {"positionSettings": {"left": 20, "top": "10%"}}}})"});
    memory.session->on(
        {"POST", "", "/interaction/media-template/view-info"},
        ScriptedAnswer{
            200,
            json::write(
                Map{{"data",
                     Map{{"content",
                          Map{{"html", "<body style='margin: 0; background: #00ff00'><h3>Hand-written</h3></body>"}}},
                         {"trackingUrls", Map{{"impression", "http://track.example/impression"},
                                              {"viewable", "http://track.example/viewable"}}}}}})
                .value()});
    memory.session->clear();
    track("popup", "document.title = 'ran'", "CODE_MODE");
    ASSERT_TRUE(eventually([&] { return pixel(219, 149) == greenPixel; }));
    EXPECT_EQ(frame("zentavo.popup"), (Rect{20, 30, 200, 120}));
    EXPECT_EQ(pixel(20, 149), greenPixel);
    EXPECT_EQ(pixel(220, 149), dimmed);
    EXPECT_EQ(pixel(219, 150), dimmed);
    save("code-mode");
    std::vector<std::string> fired;
    ASSERT_TRUE(eventually([&] {
        fired.clear();
        for (const auto& request : memory.session->requests()) {
            if (request->url.host() == "track.example") {
                fired.emplace_back(request->url.path());
            }
        }
        return fired.size() == 2;
    }));
    EXPECT_THAT(fired, ElementsAre("/impression", "/viewable"));

    click(100, 100); // on the page: nothing
    settle(window);
    EXPECT_TRUE(sdk->isShowingTemplate());
    click(390, 290);
    ASSERT_TRUE(closed());
    EXPECT_EQ(traces.back().closedBy, ClosedBy::overlay);
    EXPECT_EQ(pixel(200, 140, background), background);

    // By keys: the page has the focus and is asked first, but makes nothing of it.
    track("popup", "document.title = 'ran'", "CODE_MODE");
    ASSERT_TRUE(eventually([&] { return pixel(219, 149) == greenPixel; }));
    click(100, 100);
    settle(window);
    EXPECT_STREQ(gtk_widget_get_name(gtk_widget_get_parent(gtk_window_get_focus(window))), "zentavo.page");
    press(GDK_KEY_Escape);
    ASSERT_TRUE(closed());
    EXPECT_EQ(traces.back().closedBy, ClosedBy::overlay);
}

TEST_F(TemplatesTest, WhatHasNothingToShowIsInNobodysWay) {
    sdk->setDebug(true);
    track("full_screen", "document.body.style.background = '#ff0000'");
    ASSERT_TRUE(eventually([&] {
        const auto lines = memory.console->lines();
        return !lines.empty() && lines.back().ends_with("JavaScript evaluation succeeded! ");
    })) << "it never says how large it is";
    settle(window);
    EXPECT_EQ(pixel(200, 150), background);
    EXPECT_EQ(gtk_widget_pick(GTK_WIDGET(window), 200, 150, GTK_PICK_DEFAULT), content);

    sdk->setIsShowingTemplate(false);
    traces.clear();
    track("gamified", "", "CODE_MODE");
    memory.session->on({"POST", "", "/interaction/media-template/info"},
                       ScriptedAnswer{200, R"({"data": {"codeModeSettings": {}}})"});
    ASSERT_TRUE(eventually([&] { return pixel(200, 150) == dimmed; }));
    settle(window);
    click(200, 150);
    ASSERT_TRUE(closed()) << "its content never comes";
    EXPECT_EQ(traces.back().closedBy, ClosedBy::overlay);
}

TEST_F(TemplatesTest, RoundCornersAndTheSizeThatThePageSees) {
    track("popup", "show({width: 200, height: 100}); post({type: 'zentavo-cdp-campaign-change-border-radius', "
                   "data: {radius: '8'}}); window.resizeView = () => post({type: 'zentavo-cdp-campaign-size', data: "
                   "{width: innerWidth, height: innerHeight === 100 ? 140 : innerHeight}})");
    // The page asks for 40 points more when it learns that it has the first size.
    ASSERT_TRUE(eventually([&] {
        return find("zentavo.popup") != nullptr && frame("zentavo.popup") == Rect{100, 80, 200, 140} &&
               pixel(100 + 21, 80 + 11) == greenPixel && pixel(200, 218) == redPixel;
    }));
    EXPECT_EQ(pixel(102, 82), dimmed) << "20 points where the radius is no number";
    EXPECT_EQ(pixel(297, 217), dimmed);
    EXPECT_EQ(pixel(100, 100), redPixel);
    EXPECT_EQ(pixel(107, 87), redPixel);
    save("round-corners");
}

TEST_F(TemplatesTest, AMessageWhosePageOrWindowDiesMakesWayForTheNext) {
    show("popup", "{width: 200, height: 100}", 100, 100);
    const auto pages = descendants("WebKitWebProces");
    ASSERT_FALSE(pages.empty());
    for (const pid_t page : pages) {
        kill(page, SIGKILL);
    }
    ASSERT_TRUE(closed());
    EXPECT_EQ(traces.back().closedBy, ClosedBy::pageProcessDied);
    EXPECT_EQ(pixel(200, 150, background), background);

    show("full_screen", "{width: 200, height: 100}", 100, 0);
    closeWindow();
    ASSERT_TRUE(eventually([&] { return !sdk->isShowingTemplate(); }));
    EXPECT_EQ(traces.back().closedBy, ClosedBy::windowGone);
    track("popup", "show({width: 200, height: 100})");
    ASSERT_TRUE(eventually([&] { return traces.back().outcome == DeliveryTrace::Outcome::noUserInterface; }));
    EXPECT_FALSE(sdk->isShowingTemplate()) << "without a window it is dropped";
}

TEST_F(TemplatesTest, TwentyMessagesLeaveNothingBehind) {
    const auto openAndClose = [&] {
        show("popup", "{width: 200, height: 100}", 100, 100);
        click(160, 125);
        ASSERT_TRUE(closed());
    };
    for (int i = 0; i < 3; ++i) {
        openAndClose();
    }
    const auto processes = [] { return descendants("WebKitWebProces").size(); };
    // The engine may keep some process for the next page, but no more of them.
    constexpr std::size_t kept = 1;
    ASSERT_TRUE(eventually([&] { return processes() <= kept; })) << processes();
    const auto before = ownMemory();
    for (int i = 0; i < 20; ++i) {
        openAndClose();
    }
    EXPECT_TRUE(eventually([&] { return processes() <= kept; })) << processes();
    const auto after = ownMemory();
    // A leaked page is several times that.
    EXPECT_LT(after, before + 6'000'000) << before;
    RecordProperty("growth_bytes", std::to_string(static_cast<long>(after) - static_cast<long>(before)));
    EXPECT_EQ(traces.size(), 2U * 23);
}

} // namespace
} // namespace zentavo::tests
