// What Views.h promises, with real widgets, real pixels and real clicks.

#include <atomic>
#include <thread>

#include "tests/gtk/GuiTest.h"

namespace zentavo::tests {
namespace {

using platform::Rect;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using ViewsTest = GuiTest;

TEST_F(ViewsTest, FramesAreExactAndLaterViewsLieAbove) {
    present();
    const auto below = view({50, 40, 100, 80}, red);
    const auto above = view({100, 80, 100, 80}, green);
    EXPECT_EQ(pixel(50, 40, redPixel), redPixel);
    EXPECT_EQ(pixel(49, 40), background);
    EXPECT_EQ(pixel(50, 39), background);
    EXPECT_EQ(pixel(149, 79), redPixel);
    EXPECT_EQ(pixel(150, 79), background);
    EXPECT_EQ(pixel(50, 119), redPixel);
    EXPECT_EQ(pixel(50, 120), background);
    EXPECT_EQ(pixel(100, 80), greenPixel);
    EXPECT_EQ(pixel(199, 159), greenPixel);
    EXPECT_EQ(below->frame(), (Rect{50, 40, 100, 80}));

    // Again on top; another size; beyond the window.
    EXPECT_TRUE(views().showOverWindow(below));
    below->setFrame({90, 70, 400, 20});
    EXPECT_EQ(pixel(100, 80, redPixel), redPixel);
    EXPECT_EQ(pixel(399, 89), redPixel);
    EXPECT_EQ(pixel(100, 90), greenPixel);

    above->setHidden(true);
    EXPECT_EQ(pixel(150, 120, background), background);
    above->setHidden(false);
    below->setBackground({1, 0, 0, 0.5});
    EXPECT_EQ(pixel(150, 120, greenPixel), greenPixel);
    EXPECT_EQ(pixel(300, 80).blue, 127) << "half of the window shows through";
    below->removeFromSuperview();
    EXPECT_EQ(pixel(300, 80, background), background);

    for (const double strange : {-1e300, 1e300, std::numeric_limits<double>::quiet_NaN()}) {
        above->setFrame({strange, 0, strange, strange});
        settle(window);
    }
    above->setFrame({0, 0, 10, 10});
    EXPECT_EQ(pixel(5, 5, greenPixel), greenPixel);
}

TEST_F(ViewsTest, SubviewsMoveWithWhatHoldsThem) {
    present();
    const auto outer = view({100, 100, 100, 100}, red);
    const auto inner = view({10, 20, 30, 30}, green, outer);
    EXPECT_EQ(pixel(110, 120, greenPixel), greenPixel);
    EXPECT_EQ(pixel(109, 120), redPixel);
    outer->setFrame({0, 0, 100, 100});
    EXPECT_EQ(pixel(10, 20, greenPixel), greenPixel);

    const auto other = view({200, 0, 100, 100}, red);
    other->addSubview(inner);
    EXPECT_THAT(outer->subviews(), IsEmpty());
    EXPECT_THAT(other->subviews(), ElementsAre(inner));
    EXPECT_EQ(pixel(210, 20, greenPixel), greenPixel);
    EXPECT_EQ(pixel(10, 20), redPixel);
    outer->setHidden(true);
    EXPECT_EQ(pixel(10, 20, background), background);
}

TEST_F(ViewsTest, ACornerRadiusClipsDrawingAndInput) {
    present();
    std::vector<std::string> taps;
    const auto below = view({0, 0, 400, 300}, {0, 0, 1, 1});
    below->setOnTap([&] { taps.emplace_back("below"); });
    const auto popup = view({100, 100, 200, 100}, red);
    popup->setCornerRadius(40);
    EXPECT_EQ(popup->cornerRadius(), 40);
    const auto page = view({0, 0, 200, 100}, green, popup);
    page->setOnTap([&] { taps.emplace_back("page"); });
    EXPECT_EQ(pixel(200, 150, greenPixel), greenPixel);
    for (const auto& [x, y] : {std::pair{104, 104}, {295, 104}, {104, 195}, {295, 195}}) {
        EXPECT_EQ(pixel(x, y), background) << x << ", " << y;
    }
    EXPECT_EQ(pixel(100, 150), greenPixel);
    EXPECT_EQ(pixel(115, 115), greenPixel);

    click(104, 104);
    ASSERT_TRUE(until([&] { return taps.size() == 1; }));
    click(115, 115);
    ASSERT_TRUE(until([&] { return taps.size() == 2; }));
    EXPECT_THAT(taps, ElementsAre("below", "page"));

    popup->setCornerRadius(0);
    EXPECT_EQ(pixel(100, 100, greenPixel), greenPixel);
}

TEST_F(ViewsTest, TapsReachTheTopmostViewThatTakesThem) {
    std::vector<std::string> taps;
    GtkWidget* button = gtk_button_new();
    g_signal_connect_data(button, "clicked", G_CALLBACK(+[](GtkButton*, gpointer data) {
                              static_cast<std::vector<std::string>*>(data)->emplace_back("host");
                          }),
                          &taps, nullptr, G_CONNECT_AFTER);
    gtk_window_set_child(window, button);
    gtk_window_present(window);
    settle(window);
    const auto clickAndWait = [&](double x, double y) {
        const auto before = taps.size();
        click(x, y);
        until([&] { return taps.size() > before; });
        return taps.size() > before ? taps.back() : "";
    };
    EXPECT_EQ(clickAndWait(20, 20), "host");

    const auto dimmer = view({0, 0, 400, 300}, {0, 0, 0, 0});
    dimmer->setTouchThrough(true);
    settle(window);
    EXPECT_EQ(clickAndWait(20, 20), "host") << "a view that lets taps through is not there for them";
    const auto inside = view({200, 200, 50, 50}, green, dimmer);
    inside->setOnTap([&] { taps.emplace_back("inside"); });
    settle(window);
    EXPECT_EQ(clickAndWait(220, 220), "inside") << "but its children are";

    dimmer->setTouchThrough(false);
    dimmer->setOnTap([&] { taps.emplace_back("dimmer"); });
    const auto popup = view({100, 100, 100, 100}, red);
    settle(window);
    EXPECT_EQ(clickAndWait(20, 20), "dimmer");

    // No handler: the tap ends here all the same, and the next one shows that nothing else was on its way.
    click(150, 150);
    EXPECT_EQ(clickAndWait(220, 220), "inside");
    EXPECT_THAT(taps, ElementsAre("host", "host", "inside", "dimmer", "inside"));

    dimmer->setOnTap([&] {
        taps.emplace_back("closing");
        dimmer->removeFromSuperview();
        popup->removeFromSuperview();
    });
    EXPECT_EQ(clickAndWait(20, 20), "closing");
    settle(window);
    EXPECT_EQ(clickAndWait(20, 20), "host");
}

TEST_F(ViewsTest, AnimationsEndWhereTheyShould) {
    present();
    std::vector<int> order;
    const auto box = view({0, 0, 50, 50}, red);
    views().animate(
        0,
        [&] {
            box->setFrame({50, 0, 50, 50});
        },
        [&] { order.push_back(2); });
    order.push_back(1);
    ASSERT_TRUE(until([&] { return order.size() == 2; }));
    EXPECT_THAT(order, ElementsAre(1, 2)) << "done never comes inside the call";
    EXPECT_EQ(pixel(99, 25, redPixel), redPixel);

    views().animate(
        0.05,
        [&] {
            box->setFrame({200, 100, 100, 100});
        },
        [&] { order.push_back(3); });
    EXPECT_EQ(box->frame(), (Rect{200, 100, 100, 100}));
    settle(window);
    ASSERT_TRUE(until([&] { return order.size() == 3; }));
    EXPECT_EQ(pixel(299, 199, redPixel), redPixel);

    // A frame that is set meanwhile wins, and the view may go meanwhile.
    views().animate(
        0.05,
        [&] {
            box->setFrame({0, 0, 10, 10});
        },
        [&] { order.push_back(4); });
    box->setFrame({300, 0, 100, 100});
    auto other = view({0, 200, 50, 50}, green);
    views().animate(0.02, [&] { other->setFrame({0, 0, 10, 10}); });
    other->removeFromSuperview();
    other.reset();
    ASSERT_TRUE(until([&] { return order.size() == 4; }));
    EXPECT_EQ(pixel(399, 99, redPixel), redPixel);
}

TEST_F(ViewsTest, OffTheMainThreadEverythingIsAFault) {
    present();
    std::atomic<int> faults = 0;
    setFaultPolicy(FaultPolicy::contain, [&](const Fault&) { ++faults; });
    auto box = view({0, 0, 50, 50}, red);
    EXPECT_EQ(pixel(25, 25, redPixel), redPixel);
    std::thread([&] {
        entryPoint("test", [&] { box->setFrame({50, 50, 50, 50}); });
        entryPoint("test", [&] { views().makeView(); });
        entryPoint("test", [&] { box->setHidden(true); });
    }).join();
    EXPECT_EQ(faults, 3);
    EXPECT_EQ(box->frame(), (Rect{0, 0, 50, 50}));

    // One that ends there is reported, and its widget ends where it must.
    auto stray = views().makeView();
    std::thread([&] { stray.reset(); }).join();
    EXPECT_EQ(faults, 4);
    settle(window);
    EXPECT_EQ(pixel(25, 25), redPixel);
}

} // namespace
} // namespace zentavo::tests
