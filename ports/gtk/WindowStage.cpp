#include "ports/gtk/WindowStage.h"

#include <algorithm>
#include <utility>

#include "ports/gtk/MainThread.h"
#include "zentavo/foundation/Fault.h"

namespace zentavo::gtk {

namespace {

constexpr const char* key = "zentavo-window-stage";

/// Gives `widget` the focus; text in it keeps its cursor and is not selected.
void setFocus(GtkWindow* window, GtkWidget* widget) {
    auto* text =
        G_TYPE_CHECK_INSTANCE_TYPE(widget, GTK_TYPE_EDITABLE) ? reinterpret_cast<GtkEditable*>(widget) : nullptr;
    const int cursor = text != nullptr ? gtk_editable_get_position(text) : 0;
    gtk_window_set_focus(window, widget);
    if (text != nullptr) {
        gtk_editable_set_position(text, cursor);
    }
}

bool isInside(GtkWidget* widget, GtkWidget* around) {
    return widget != nullptr && (widget == around || gtk_widget_is_ancestor(widget, around));
}

/// Another control in the view that holds `leaving`; null where there is none.
GtkWidget* neighbour(GtkWidget* leaving) {
    GtkWidget* around = gtk_widget_get_parent(leaving);
    for (GtkWidget* child = around != nullptr ? gtk_widget_get_first_child(around) : nullptr; child != nullptr;
         child = gtk_widget_get_next_sibling(child)) {
        if (child != leaving && gtk_widget_get_focusable(child) && gtk_widget_get_mapped(child)) {
            return child;
        }
    }
    return nullptr;
}

/// What of the focus is lost when its widget is moved inside the window.
class FocusGuard {
public:
    explicit FocusGuard(GtkWindow* window)
        : window_(window), focus_(Ref<GtkWidget>::share(gtk_window_get_focus(window))),
          default_(Ref<GtkWidget>::share(gtk_window_get_default_widget(window))) {
        // A window that sees them leave would look for others, a frame later.
        gtk_window_set_focus(window_, nullptr);
        gtk_window_set_default_widget(window_, nullptr);
    }
    ~FocusGuard() {
        if (default_) {
            gtk_window_set_default_widget(window_, default_.get());
        }
        if (focus_) {
            setFocus(window_, focus_.get());
        }
    }
    FocusGuard(const FocusGuard&) = delete;
    FocusGuard& operator=(const FocusGuard&) = delete;

private:
    GtkWindow* const window_;
    const Ref<GtkWidget> focus_;
    const Ref<GtkWidget> default_;
};

} // namespace

std::shared_ptr<WindowStage> WindowStage::of(GtkWindow* window) {
    auto* object = reinterpret_cast<GObject*>(window);
    if (const auto* held = static_cast<std::shared_ptr<WindowStage>*>(g_object_get_data(object, key))) {
        return *held;
    }
    // Its last holder may be a thread of the SDK; widgets end on the main thread all the same.
    const std::shared_ptr<WindowStage> stage(new WindowStage(window),
                                             [](WindowStage* last) { MainThread::run([last] { delete last; }); });
    g_object_set_data_full(object, key, new std::shared_ptr<WindowStage>(stage),
                           [](gpointer data) { delete static_cast<std::shared_ptr<WindowStage>*>(data); });
    return stage;
}

WindowStage::WindowStage(GtkWindow* window) : window_(window), overlay_(Ref<GtkWidget>::share(gtk_overlay_new())) {
    g_weak_ref_init(&hostFocus_, nullptr);
    root_.setTouchThrough(true);
    root_.setOnResize([this](int width, int height) { resized(width, height); });
    gtk_widget_set_name(root(), "zentavo.stage");
    gtk_overlay_add_overlay(reinterpret_cast<GtkOverlay*>(overlay_.get()), root());
    signals_.connect(window, "notify::child", &WindowStage::childChanged, this);
    signals_.connect(window, "destroy", &WindowStage::destroyed, this);
    for (const auto phase : {GTK_PHASE_CAPTURE, GTK_PHASE_BUBBLE}) {
        GtkEventController* keys = gtk_event_controller_key_new();
        gtk_event_controller_set_propagation_phase(keys, phase);
        signals_.connect(keys, "key-pressed", &WindowStage::keyPressed, this);
        gtk_widget_add_controller(reinterpret_cast<GtkWidget*>(window), keys);
    }
    if (GtkSettings* settings = gtk_settings_get_default()) {
        for (const char* property : {"notify::gtk-theme-name", "notify::gtk-application-prefer-dark-theme"}) {
            signals_.connect(settings, property, &WindowStage::themeChanged, this);
        }
    }
    wrapChild();
}

WindowStage::~WindowStage() {
    close();
    g_weak_ref_clear(&hostFocus_);
}

/// Puts the overlay between the window and what it shows.
void WindowStage::wrapChild() {
    GtkWidget* child = gtk_window_get_child(window_);
    if (child == overlay_.get()) {
        return;
    }
    auto* overlay = reinterpret_cast<GtkOverlay*>(overlay_.get());
    const auto held = Ref<GtkWidget>::share(child);
    const FocusGuard focus(window_);
    wrapping_ = true;
    gtk_overlay_set_child(overlay, nullptr);
    gtk_window_set_child(window_, overlay_.get());
    if (child != nullptr) {
        gtk_overlay_set_child(overlay, child);
    }
    wrapping_ = false;
}

/// A host may give its window another child at any time.
void WindowStage::childChanged(GObject*, GParamSpec*, gpointer data) {
    auto& self = *static_cast<WindowStage*>(data);
    if (!self.wrapping_ && self.window_ != nullptr) {
        self.wrapChild();
    }
}

void WindowStage::destroyed(GtkWidget*, gpointer self) { static_cast<WindowStage*>(self)->close(); }

void WindowStage::close() {
    if (std::exchange(window_, nullptr) == nullptr) {
        return;
    }
    signals_.clear();
    const auto views = std::exchange(shown_, nullptr);
    for (const auto& view : *views) {
        view->canvas().remove();
        entryPoint("view", [&] { view->windowGone(); });
    }
}

gboolean WindowStage::keyPressed(GtkEventControllerKey* keys, guint pressed, guint, GdkModifierType state,
                                 gpointer data) {
    const auto& self = *static_cast<WindowStage*>(data);
    if (pressed != GDK_KEY_Escape || (state & gtk_accelerator_get_default_mod_mask()) != 0) {
        return FALSE;
    }
    // A page of ours may want the key for itself, and is asked first; the host's widgets lie below, and come after us.
    const bool early =
        gtk_event_controller_get_propagation_phase(reinterpret_cast<GtkEventController*>(keys)) == GTK_PHASE_CAPTURE;
    if (early == isInside(gtk_window_get_focus(self.window_), self.root())) {
        return FALSE;
    }
    return std::any_of(self.shown_->rbegin(), self.shown_->rend(), [](const auto& view) { return view->dismiss(); });
}

platform::Rect WindowStage::bounds() const {
    int width = static_cast<int>(size_.width);
    int height = static_cast<int>(size_.height);
    if (window_ != nullptr && (width == 0 || height == 0)) {
        gtk_window_get_default_size(window_, &width, &height);
    }
    return {0, 0, static_cast<double>(std::max(width, 0)), static_cast<double>(std::max(height, 0))};
}

void WindowStage::present(const std::string& activationToken) {
    if (window_ == nullptr) {
        return;
    }
    if (!activationToken.empty()) {
        gtk_window_set_startup_id(window_, activationToken.c_str());
    }
    gtk_window_present(window_);
}

bool WindowStage::show(GtkView& view) {
    if (window_ == nullptr || !gtk_widget_get_visible(reinterpret_cast<GtkWidget*>(window_))) {
        return false;
    }
    view.removeFromSuperview();
    if (GtkWidget* focus = gtk_window_get_focus(window_); !isInside(focus, root())) {
        g_weak_ref_set(&hostFocus_, focus);
    }
    view.setShown();
    view.enter(shown_, root_);
    return true;
}

void WindowStage::giveFocusBack(GtkWidget* leaving) {
    auto* root = gtk_widget_get_root(leaving);
    const auto* held =
        root != nullptr
            ? static_cast<std::shared_ptr<WindowStage>*>(g_object_get_data(reinterpret_cast<GObject*>(root), key))
            : nullptr;
    if (held == nullptr || !isInside(gtk_root_get_focus(root), leaving)) {
        return;
    }
    const auto host = Ref<GtkWidget>::take(static_cast<GtkWidget*>(g_weak_ref_get(&(*held)->hostFocus_)));
    const bool there = host && gtk_widget_get_root(host.get()) == root;
    GtkWidget* next = neighbour(leaving);
    setFocus(reinterpret_cast<GtkWindow*>(root), next != nullptr ? next : there ? host.get() : nullptr);
}

void WindowStage::resized(int width, int height) {
    const platform::Rect before = bounds();
    size_ = {static_cast<double>(width), static_cast<double>(height)};
    if (window_ == nullptr) {
        return;
    }
    for (const auto& view : *shown_) {
        if (view->frame() == before) { // it fills the window, and goes on doing so
            view->takeFrame(bounds());
        }
    }
    if (size_ == platform::Size{before.width, before.height}) {
        return;
    }
    if (onChange_) {
        onChange_();
    }
    std::erase_if(onResize_, [](const auto& weak) { return weak.expired(); });
    for (const auto& weak : onResize_) {
        if (const auto onResize = weak.lock()) {
            (*onResize)();
        }
    }
}

void WindowStage::listenForResizes(const std::shared_ptr<std::function<void()>>& onResize) {
    // A window that keeps its size would else keep the traces of all who ever listened.
    std::erase_if(onResize_, [](const auto& weak) { return weak.expired(); });
    onResize_.push_back(onResize);
}

platform::Appearance WindowStage::appearance() const {
    if (window_ == nullptr) {
        return platform::Appearance::light;
    }
    GdkRGBA text{};
    G_GNUC_BEGIN_IGNORE_DEPRECATIONS
    gtk_style_context_get_color(gtk_widget_get_style_context(reinterpret_cast<GtkWidget*>(window_)), &text);
    G_GNUC_END_IGNORE_DEPRECATIONS
    return 0.3F * text.red + 0.6F * text.green + 0.1F * text.blue > 0.5F ? platform::Appearance::dark
                                                                         : platform::Appearance::light;
}

void WindowStage::themeChanged(GObject*, GParamSpec*, gpointer data) {
    if (auto& self = *static_cast<WindowStage*>(data); self.onChange_) {
        self.onChange_();
    }
}

} // namespace zentavo::gtk
