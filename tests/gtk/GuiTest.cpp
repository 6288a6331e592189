#include "tests/gtk/GuiTest.h"

#include "ports/gtk/Attach.h"

namespace zentavo::tests {

bool until(const std::function<bool()>& done) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(15);
    while (!done() && std::chrono::steady_clock::now() < end) {
        // A short wake-up, for what `done` looks at may change without an event of the loop.
        const guint wake = g_timeout_add(
            5, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
        g_main_context_iteration(nullptr, TRUE);
        g_source_remove(wake);
    }
    return done();
}

void settle(GtkWindow* window) {
    int ticks = 0;
    gtk_widget_add_tick_callback(
        GTK_WIDGET(window),
        [](GtkWidget*, GdkFrameClock*, gpointer data) -> gboolean {
            return ++*static_cast<int*>(data) < 3 ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
        },
        &ticks, nullptr);
    until([&] { return ticks == 3; });
    while (g_main_context_iteration(nullptr, FALSE)) {
    }
}

GuiTest::GuiTest() {
    static const bool ready = [] {
        g_setenv("GTK_A11Y", "test", TRUE); // what accessibility tools are told can be read
        gtk_init();
        GtkCssProvider* style = gtk_css_provider_new();
        gtk_css_provider_load_from_data(style, ".content { background: #0000ff; } * { transition: none; }", -1);
        gtk_style_context_add_provider_for_display(gdk_display_get_default(), GTK_STYLE_PROVIDER(style),
                                                   GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
        return true;
    }();
    EXPECT_TRUE(ready);
    window = GTK_WINDOW(gtk_window_new());
    gtk_window_set_default_size(window, 400, 300);
    content = gtk_label_new("");
    gtk_widget_add_css_class(content, "content");
    gtk_window_set_child(window, content);
    sdk = std::make_shared<Zentavo>(memory.platform());
    Zentavo::setShared(sdk);
    EXPECT_TRUE(gtk::attach(window));
}

GuiTest::~GuiTest() {
    setFaultPolicy(FaultPolicy::stop);
    interface_ = nullptr;
    closeWindow();
    until([] { return !g_main_context_iteration(nullptr, FALSE); });
    Zentavo::setShared(nullptr);
}

void GuiTest::present() {
    gtk_window_present(window);
    EXPECT_EQ(pixel(200, 150, background), background);
}

void GuiTest::closeWindow() {
    if (window != nullptr) {
        gtk_window_destroy(std::exchange(window, nullptr));
    }
}

const std::shared_ptr<const platform::UserInterface>& GuiTest::interface() {
    interface_ = memory.platform()->userInterface();
    return interface_;
}

std::shared_ptr<platform::View> GuiTest::view(platform::Rect frame, platform::Colour colour,
                                              const std::shared_ptr<platform::View>& around) {
    auto made = views().makeView();
    made->setFrame(frame);
    made->setBackground(colour);
    if (around) {
        around->addSubview(made);
    } else {
        EXPECT_TRUE(views().showOverWindow(made));
    }
    return made;
}

void GuiTest::press(unsigned key) {
    GtkEventController* keys = gtk_event_controller_key_new();
    bool released = false;
    g_signal_connect_swapped(keys, "key-released", G_CALLBACK(+[](bool* seen) { *seen = true; }), &released);
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    gtk_widget_add_controller(GTK_WIDGET(window), keys);
    keyboard.press(window, key);
    EXPECT_TRUE(until([&] { return released; }));
    gtk_widget_remove_controller(GTK_WIDGET(window), keys);
    settle(window);
}

std::string GuiTest::focus() const {
    GtkWidget* focused = gtk_window_get_focus(window);
    return focused != nullptr ? gtk_widget_get_name(focused) : "";
}

bool GuiTest::eventually(const std::function<bool()>& done) {
    return until([&] {
        memory.queues->runUntilIdle();
        return done();
    });
}

Pixel GuiTest::pixel(int x, int y, Pixel expected) {
    until([&] { return pixel(x, y) == expected; });
    return pixel(x, y);
}

} // namespace zentavo::tests
