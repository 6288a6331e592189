// What can be tapped, for users who have no pointer, or do not see it.

#include "tests/gtk/GuiTest.h"

namespace zentavo::tests {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ControlsTest : public GuiTest {
protected:
    std::shared_ptr<platform::View> control(const std::string& name, platform::Rect frame,
                                            const std::shared_ptr<platform::View>& around) {
        auto made = view(frame, red, around);
        made->setName(name);
        made->setOnTap([this, name] { taps.push_back(name); });
        return made;
    }
    GtkWidget* widget(const std::string& name, GtkWidget* from = nullptr) {
        for (GtkWidget* child = gtk_widget_get_first_child(from != nullptr ? from : GTK_WIDGET(window));
             child != nullptr; child = gtk_widget_get_next_sibling(child)) {
            GtkWidget* found = gtk_widget_get_name(child) == name ? child : widget(name, child);
            if (found != nullptr) {
                return found;
            }
        }
        return nullptr;
    }
    GtkWidget* hostEntry() {
        GtkWidget* entry = gtk_entry_new();
        gtk_window_set_child(window, entry);
        gtk_window_present(window);
        settle(window);
        gtk_widget_grab_focus(entry);
        return entry;
    }

    std::vector<std::string> taps;
};

TEST_F(ControlsTest, TabStopsAtWhatCanBeTappedAndEnterAndSpacePressIt) {
    present();
    const auto card = view({0, 0, 400, 200}, green);
    view({0, 0, 50, 10}, red, card);
    // Neither the order in which they came nor who holds them counts, but where they stand.
    const auto row = view({0, 100, 400, 50}, green, card);
    control("third", {200, 0, 50, 20}, row);
    control("second", {20, 0, 50, 20}, row);
    control("hidden", {100, 0, 50, 20}, row)->setHidden(true);
    control("first", {20, 20, 50, 20}, card);
    settle(window);
    EXPECT_EQ(focus(), "") << "nothing asks for the focus by itself";
    for (const char* name : {"first", "second", "third"}) {
        press(GDK_KEY_Tab);
        EXPECT_EQ(focus(), name);
    }
    for (const unsigned key : {GDK_KEY_Return, GDK_KEY_space, GDK_KEY_KP_Enter, GDK_KEY_a}) {
        press(key);
    }
    EXPECT_THAT(taps, ElementsAre("third", "third", "third"));

    // Its keys go the way of its handler.
    card->subviews().back()->setOnTap(nullptr);
    gtk_window_set_focus(window, nullptr);
    press(GDK_KEY_Tab);
    EXPECT_EQ(focus(), "second");
}

TEST_F(ControlsTest, AFocusRingIsSeenByThoseWhoMoveByKeysOnly) {
    present();
    const auto card = view({0, 0, 400, 200}, green);
    control("button", {100, 100, 80, 40}, card);
    EXPECT_EQ(pixel(140, 120, redPixel), redPixel);
    click(140, 120);
    ASSERT_TRUE(until([&] { return taps.size() == 1; }));
    EXPECT_EQ(focus(), "") << "a click moves no focus";
    EXPECT_EQ(pixel(100, 120, redPixel), redPixel);

    press(GDK_KEY_Tab);
    constexpr Pixel white{255, 255, 255};
    EXPECT_EQ(pixel(100, 120, white), white);
    EXPECT_EQ(pixel(102, 120), (Pixel{0, 0, 0}));
    EXPECT_EQ(pixel(104, 120), redPixel);
    EXPECT_EQ(pixel(99, 120), greenPixel) << "nothing outside";
    EXPECT_EQ(pixel(0, 100), greenPixel) << "nor around what holds it";
    gtk_window_set_focus(window, nullptr);
    EXPECT_EQ(pixel(100, 120, redPixel), redPixel);
}

TEST_F(ControlsTest, ArrowsTurnWhatCanBeSwiped) {
    present();
    const auto card = view({0, 0, 400, 200}, green);
    std::vector<platform::Swipe> swipes;
    const auto slide = control("slide", {0, 0, 100, 100}, card);
    slide->setOnSwipe([&](platform::Swipe swipe) { swipes.push_back(swipe); });
    control("other", {200, 0, 100, 100}, card);
    settle(window);
    press(GDK_KEY_Tab);
    press(GDK_KEY_Right);
    press(GDK_KEY_Left);
    EXPECT_THAT(swipes, ElementsAre(platform::Swipe::left, platform::Swipe::right));
    EXPECT_EQ(focus(), "slide");
    slide->setOnSwipe(nullptr);
    press(GDK_KEY_Right);
    EXPECT_EQ(focus(), "other") << "they move the focus, as anywhere";
    EXPECT_THAT(taps, IsEmpty());
}

TEST_F(ControlsTest, EscapeIsATapOnWhatLiesBehind) {
    GtkWidget* entry = hostEntry();
    GtkWidget* focused = gtk_window_get_focus(window);
    std::vector<std::string> host;
    GtkEventController* keys = gtk_event_controller_key_new();
    g_signal_connect_swapped(keys, "key-pressed", G_CALLBACK(+[](std::vector<std::string>* seen) -> gboolean {
                                 seen->emplace_back("host");
                                 return FALSE;
                             }),
                             &host);
    gtk_widget_add_controller(entry, keys);

    const auto dimmer = view({0, 0, 400, 300}, {0, 0, 0, 0.5});
    dimmer->setTouchThrough(true);
    dimmer->setOnTap([&] { taps.emplace_back("dimmer"); });
    const auto popup = view({100, 190, 100, 100}, red);
    settle(window);
    EXPECT_EQ(gtk_window_get_focus(window), focused);
    press(GDK_KEY_Escape);
    EXPECT_THAT(taps, IsEmpty()) << "what lets taps through is not there";
    EXPECT_THAT(host, ElementsAre("host"));

    dimmer->setTouchThrough(false);
    press(GDK_KEY_Escape);
    EXPECT_THAT(taps, ElementsAre("dimmer"));
    EXPECT_THAT(host, ElementsAre("host")) << "the host lies below, and is not asked";
    const auto button = control("button", {0, 0, 50, 50}, popup);
    press(GDK_KEY_Tab);
    EXPECT_EQ(focus(), "button") << "the dimmer itself is no stop";
    press(GDK_KEY_Escape);
    EXPECT_THAT(taps, ElementsAre("dimmer", "dimmer"));

    dimmer->setHidden(true);
    press(GDK_KEY_Escape);
    EXPECT_EQ(taps.size(), 2U);
    popup->removeFromSuperview();
    EXPECT_EQ(gtk_window_get_focus(window), focused) << "what had the focus has it again";
}

TEST_F(ControlsTest, AccessibilityToolsAreToldWhatItIsAndWhatItIsCalled) {
    present();
    const auto card = view({0, 0, 400, 200}, green);
    const auto role = [&](const char* name) {
        return gtk_accessible_get_accessible_role(GTK_ACCESSIBLE(widget(name)));
    };
    const auto label = [&](const char* name) {
        char* text =
            gtk_test_accessible_check_property(GTK_ACCESSIBLE(widget(name)), GTK_ACCESSIBLE_PROPERTY_LABEL, "nobody's");
        const std::string seen = text != nullptr ? text : "";
        g_free(text);
        return seen;
    };
    control("button", {0, 0, 50, 50}, card)->setSpokenName("Send");
    const auto text = views().makeLabel();
    text->setName("text");
    text->setText("Your parcel");
    card->addSubview(text);
    const auto picture = views().makeImageView();
    picture->setName("picture");
    card->addSubview(picture);
    EXPECT_EQ(role("text"), GTK_ACCESSIBLE_ROLE_LABEL);
    EXPECT_EQ(label("text"), "Your parcel");
    EXPECT_EQ(role("picture"), GTK_ACCESSIBLE_ROLE_IMG);
    EXPECT_EQ(label("button"), "Send");
    EXPECT_NE(role("button"), GTK_ACCESSIBLE_ROLE_BUTTON) << "one that is on screen keeps its role";
    const auto button = card->subviews().front();
    card->addSubview(button);
    EXPECT_EQ(role("button"), GTK_ACCESSIBLE_ROLE_BUTTON);

    ASSERT_TRUE(gtk_widget_activate_action(widget("button"), "zentavo.press", nullptr));
    ASSERT_TRUE(until([&] { return taps.size() == 1; }));
    button->removeFromSuperview();
    button->setOnTap(nullptr);
    card->addSubview(button);
    EXPECT_NE(role("button"), GTK_ACCESSIBLE_ROLE_BUTTON);
}

} // namespace
} // namespace zentavo::tests
