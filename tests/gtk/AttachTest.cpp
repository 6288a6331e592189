// What attach promises to the host whose window it is.

#include "ports/gtk/Attach.h"

#include "tests/gtk/GuiTest.h"

namespace zentavo::tests {
namespace {

using platform::Rect;

class AttachTest : public GuiTest {
protected:
    /// A window of the host's own, not yet attached to.
    GtkWindow* makeWindow(GtkWidget* child) {
        auto* made = GTK_WINDOW(gtk_window_new());
        gtk_window_set_default_size(made, 300, 200);
        gtk_window_set_child(made, child);
        return made;
    }
};

TEST_F(AttachTest, DisturbsNeitherFocusNorTextNorLayout) {
    GtkWidget* box = gtk_box_new(GTK_ORIENTATION_VERTICAL, 6);
    GtkWidget* first = gtk_entry_new();
    GtkWidget* second = gtk_entry_new();
    GtkWidget* button = gtk_button_new_with_label("Order");
    for (GtkWidget* each : {first, second, button}) {
        gtk_box_append(GTK_BOX(box), each);
    }
    GtkWindow* host = makeWindow(box);
    gtk_window_set_default_widget(host, button);
    gtk_window_present(host);
    settle(host);
    gtk_editable_set_text(GTK_EDITABLE(second), "half a word");
    gtk_widget_grab_focus(second);
    gtk_editable_set_position(GTK_EDITABLE(second), 5);
    GtkWidget* focus = gtk_window_get_focus(host);
    ASSERT_NE(focus, nullptr);
    graphene_rect_t before;
    ASSERT_TRUE(gtk_widget_compute_bounds(second, GTK_WIDGET(host), &before));

    ASSERT_TRUE(gtk::attach(host, *sdk));
    settle(host);
    EXPECT_EQ(gtk_window_get_focus(host), focus);
    EXPECT_EQ(gtk_window_get_default_widget(host), button);
    EXPECT_STREQ(gtk_editable_get_text(GTK_EDITABLE(second)), "half a word");
    EXPECT_EQ(gtk_editable_get_position(GTK_EDITABLE(second)), 5);
    EXPECT_FALSE(gtk_editable_get_selection_bounds(GTK_EDITABLE(second), nullptr, nullptr));
    graphene_rect_t after;
    ASSERT_TRUE(gtk_widget_compute_bounds(second, GTK_WIDGET(host), &after));
    EXPECT_TRUE(graphene_rect_equal(&before, &after));

    // Neither does what is shown, not even by its size.
    const auto shown = view({0, 0, 2000, 2000}, red);
    settle(host);
    EXPECT_EQ(gtk_window_get_focus(host), focus);
    EXPECT_EQ(gtk_widget_get_width(GTK_WIDGET(host)), 300);
    gtk_window_destroy(host);
}

TEST_F(AttachTest, FollowsTheWindow) {
    EXPECT_EQ(views().mainScreenBounds(), (Rect{0, 0, 400, 300})) << "before the window is shown: what it asks for";
    EXPECT_FALSE(views().showOverWindow(views().makeView())) << "nobody would see it";
    present();
    EXPECT_EQ(views().mainScreenBounds(), (Rect{0, 0, 400, 300}));
    const auto dimmer = view(views().mainScreenBounds(), red);
    const auto popup = view({150, 100, 100, 100}, green);
    settle(window);

    gtk_window_set_default_size(window, 500, 360);
    ASSERT_TRUE(until([&] { return views().mainScreenBounds() == Rect{0, 0, 500, 360}; }));
    EXPECT_EQ(dimmer->frame(), (Rect{0, 0, 500, 360})) << "what fills the window goes on filling it";
    EXPECT_EQ(popup->frame(), (Rect{150, 100, 100, 100}));
    EXPECT_EQ(pixel(499, 359, redPixel), redPixel);

    // A host that changes pages by changing the window's child.
    GtkWidget* page = gtk_label_new("");
    gtk_widget_add_css_class(page, "content");
    gtk_window_set_child(window, page);
    settle(window);
    EXPECT_EQ(pixel(499, 359, redPixel), redPixel);
    dimmer->removeFromSuperview();
    EXPECT_EQ(pixel(499, 359, background), background);
    EXPECT_EQ(gtk_widget_get_root(page), GTK_ROOT(window));
}

TEST_F(AttachTest, SurvivesTheWindow) {
    present();
    const auto shown = view({0, 0, 50, 50}, red);
    const auto inner = view({0, 0, 50, 50}, red, shown);
    const std::weak_ptr<platform::View> forgotten = view({0, 0, 50, 50}, red);
    closeWindow();
    EXPECT_TRUE(forgotten.expired()) << "the window held it";
    EXPECT_FALSE(views().showOverWindow(shown));
    shown->setFrame({1, 1, 2, 2});
    inner->removeFromSuperview();
    shown->removeFromSuperview();
    bool done = false;
    views().animate(
        0.1,
        [&] {
            shown->setFrame({0, 0, 9, 9});
        },
        [&] { done = true; });
    EXPECT_TRUE(until([&] { return done; }));
    const auto left = interface(); // of the window that is gone

    window = makeWindow(gtk_label_new(""));
    ASSERT_TRUE(gtk::attach(window)) << "another window takes its place";
    gtk_window_present(window);
    settle(window);
    EXPECT_EQ(views().mainScreenBounds(), (Rect{0, 0, 300, 200}));
    EXPECT_TRUE(views().showOverWindow(shown));
    EXPECT_EQ(pixel(5, 5, redPixel), redPixel);
    EXPECT_FALSE(left->views->showOverWindow(shown));
}

TEST_F(AttachTest, AttachingAgainChangesNothingAndNoWindowIsNone) {
    present();
    GtkWidget* overlay = gtk_window_get_child(window);
    const auto first = view({0, 0, 50, 50}, red);
    ASSERT_TRUE(gtk::attach(window));
    EXPECT_EQ(gtk_window_get_child(window), overlay);
    const auto second = view({0, 0, 20, 20}, green);
    EXPECT_EQ(pixel(19, 19, greenPixel), greenPixel);
    EXPECT_EQ(pixel(20, 20, redPixel), redPixel);

    EXPECT_FALSE(gtk::attach(nullptr));
    EXPECT_THAT(memory.systemLog->entries(), ::testing::SizeIs(1));
    EXPECT_TRUE(views().showOverWindow(first)) << "what was attached stays";
}

} // namespace
} // namespace zentavo::tests
