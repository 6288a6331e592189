#include "ports/gtk/Canvas.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <string_view>
#include <utility>

namespace zentavo::gtk {

namespace {

/// As far as a toolkit's coordinates are safe to calculate with.
constexpr double furthest = 32767;

struct CanvasWidget {
    GtkWidget parent;
    platform::Rect frame;
    platform::Colour background;
    double cornerRadius;
    bool touchThrough;
    // Null once the canvas is gone.
    const std::function<void(int, int)>* onResize;
    const std::function<void(GtkSnapshot*, int, int)>* onDraw;
    const std::function<void()>* onPress;
    const std::function<void(GtkDirectionType)>* onArrow;
};
struct CanvasWidgetClass {
    GtkWidgetClass parent;
};

GtkWidgetClass* parentClass = nullptr;
GType canvasType();

CanvasWidget* canvasOf(GtkWidget* widget) {
    return G_TYPE_CHECK_INSTANCE_TYPE(widget, canvasType()) ? reinterpret_cast<CanvasWidget*>(widget) : nullptr;
}

// What keys and accessibility tools do with it.
constexpr const char* pressAction = "zentavo.press";
constexpr const char* leftAction = "zentavo.left";
constexpr const char* rightAction = "zentavo.right";

double bounded(double length) { return std::isfinite(length) ? std::clamp(length, -furthest, furthest) : 0; }

void measure(GtkWidget*, GtkOrientation, int, int* minimum, int* natural, int* minimumBaseline, int* naturalBaseline) {
    *minimum = *natural = 0;
    *minimumBaseline = *naturalBaseline = -1;
}

void allocate(GtkWidget* widget, int width, int height, int) {
    if (const auto* onResize = canvasOf(widget)->onResize; onResize != nullptr && *onResize) {
        (*onResize)(width, height);
    }
    for (GtkWidget* child = gtk_widget_get_first_child(widget); child != nullptr;
         child = gtk_widget_get_next_sibling(child)) {
        if (!gtk_widget_should_layout(child)) {
            continue;
        }
        // Nobody's wishes count here, but the toolkit insists on having been asked for them.
        gtk_widget_measure(child, GTK_ORIENTATION_HORIZONTAL, -1, nullptr, nullptr, nullptr, nullptr);
        gtk_widget_measure(child, GTK_ORIENTATION_VERTICAL, -1, nullptr, nullptr, nullptr, nullptr);
        const CanvasWidget* canvas = canvasOf(child);
        if (canvas == nullptr) {
            gtk_widget_allocate(child, width, height, -1, nullptr);
            continue;
        }
        const double left = std::round(bounded(canvas->frame.x));
        const double top = std::round(bounded(canvas->frame.y));
        const double right = std::round(bounded(canvas->frame.x) + bounded(canvas->frame.width));
        const double bottom = std::round(bounded(canvas->frame.y) + bounded(canvas->frame.height));
        const graphene_point_t origin{static_cast<float>(left), static_cast<float>(top)};
        gtk_widget_allocate(child, std::max(0, static_cast<int>(right - left)),
                            std::max(0, static_cast<int>(bottom - top)), -1, gsk_transform_translate(nullptr, &origin));
    }
}

/// Along the inside of the edge, dark in light: to be seen on whatever colours the sender chose.
void drawFocusRing(GtkWidget* widget, GtkSnapshot* snapshot) {
    constexpr float width = 2;
    auto radius = static_cast<float>(canvasOf(widget)->cornerRadius);
    graphene_rect_t edge{
        {0, 0}, {static_cast<float>(gtk_widget_get_width(widget)), static_cast<float>(gtk_widget_get_height(widget))}};
    for (const GdkRGBA& colour : {GdkRGBA{1, 1, 1, 1}, GdkRGBA{0, 0, 0, 1}}) {
        GskRoundedRect ring;
        gsk_rounded_rect_init_from_rect(&ring, &edge, radius);
        const std::array widths{width, width, width, width};
        const std::array colours{colour, colour, colour, colour};
        gtk_snapshot_append_border(snapshot, &ring, widths.data(), colours.data());
        graphene_rect_inset(&edge, width, width);
        radius = std::max(0.0F, radius - width);
    }
}

void draw(GtkWidget* widget, GtkSnapshot* snapshot) {
    const platform::Colour& colour = canvasOf(widget)->background;
    if (colour.alpha > 0) {
        const GdkRGBA rgba{static_cast<float>(colour.red), static_cast<float>(colour.green),
                           static_cast<float>(colour.blue), static_cast<float>(colour.alpha)};
        const graphene_rect_t all{
            {0, 0},
            {static_cast<float>(gtk_widget_get_width(widget)), static_cast<float>(gtk_widget_get_height(widget))}};
        gtk_snapshot_append_color(snapshot, &rgba, &all);
    }
    if (const auto* onDraw = canvasOf(widget)->onDraw; onDraw != nullptr && *onDraw) {
        (*onDraw)(snapshot, gtk_widget_get_width(widget), gtk_widget_get_height(widget));
    }
    for (GtkWidget* child = gtk_widget_get_first_child(widget); child != nullptr;
         child = gtk_widget_get_next_sibling(child)) {
        gtk_widget_snapshot_child(widget, child, snapshot);
    }
    // The flag is set for all that hold it as well.
    if (gtk_widget_is_focus(widget) && (gtk_widget_get_state_flags(widget) & GTK_STATE_FLAG_FOCUS_VISIBLE) != 0) {
        drawFocusRing(widget, snapshot);
    }
}

void stateChanged(GtkWidget* widget, GtkStateFlags) { gtk_widget_queue_draw(widget); }

void act(GtkWidget* widget, const char* action, GVariant*) {
    const CanvasWidget& canvas = *canvasOf(widget);
    if (action == std::string_view(pressAction)) {
        if (canvas.onPress != nullptr && *canvas.onPress) {
            (*canvas.onPress)();
        }
    } else if (canvas.onArrow != nullptr && *canvas.onArrow) {
        (*canvas.onArrow)(action == std::string_view(leftAction) ? GTK_DIR_LEFT : GTK_DIR_RIGHT);
    }
}

gboolean contains(GtkWidget* widget, double x, double y) {
    return !canvasOf(widget)->touchThrough && parentClass->contains(widget, x, y);
}

void dispose(GObject* object) {
    auto* widget = reinterpret_cast<GtkWidget*>(object);
    while (GtkWidget* child = gtk_widget_get_first_child(widget)) {
        gtk_widget_unparent(child);
    }
    reinterpret_cast<GObjectClass*>(parentClass)->dispose(object);
}

void initialiseClass(gpointer type, gpointer) {
    parentClass = static_cast<GtkWidgetClass*>(g_type_class_peek_parent(type));
    static_cast<GObjectClass*>(type)->dispose = dispose;
    auto* widget = static_cast<GtkWidgetClass*>(type);
    widget->measure = measure;
    widget->size_allocate = allocate;
    widget->snapshot = draw;
    widget->contains = contains;
    widget->state_flags_changed = stateChanged;
    for (const char* action : {pressAction, leftAction, rightAction}) {
        gtk_widget_class_install_action(widget, action, nullptr, act);
    }
    for (const guint key : {GDK_KEY_Return, GDK_KEY_ISO_Enter, GDK_KEY_KP_Enter, GDK_KEY_space, GDK_KEY_KP_Space}) {
        gtk_widget_class_add_binding_action(widget, key, GdkModifierType{}, pressAction, nullptr);
    }
    for (const auto& [key, action] : {std::pair{GDK_KEY_Left, leftAction},
                                      {GDK_KEY_KP_Left, leftAction},
                                      {GDK_KEY_Right, rightAction},
                                      {GDK_KEY_KP_Right, rightAction}}) {
        gtk_widget_class_add_binding_action(widget, key, GdkModifierType{}, action, nullptr);
    }
    // A name that no theme has rules for.
    gtk_widget_class_set_css_name(widget, "zentavo-canvas");
}

GType canvasType() {
    static const GType type =
        g_type_register_static_simple(GTK_TYPE_WIDGET, "ZentavoCanvas", sizeof(CanvasWidgetClass), initialiseClass,
                                      sizeof(CanvasWidget), nullptr, static_cast<GTypeFlags>(0));
    return type;
}

void layOutAgain(GtkWidget* widget) {
    if (GtkWidget* around = gtk_widget_get_parent(widget)) {
        gtk_widget_queue_allocate(around);
    }
}

} // namespace

Canvas::Canvas() : widget_(Ref<GtkWidget>::share(static_cast<GtkWidget*>(g_object_new(canvasType(), nullptr)))) {
    canvasOf(widget())->onResize = &onResize_;
    canvasOf(widget())->onDraw = &onDraw_;
    canvasOf(widget())->onPress = &onPress_;
    canvasOf(widget())->onArrow = &onArrow_;
    setOnPress(nullptr);
    setOnArrow(nullptr);
}

Canvas::~Canvas() {
    canvasOf(widget())->onResize = nullptr;
    canvasOf(widget())->onDraw = nullptr;
    canvasOf(widget())->onPress = nullptr;
    canvasOf(widget())->onArrow = nullptr;
    remove();
}

void Canvas::setFrame(platform::Rect frame) {
    takeFrame(frame);
    layOutAgain(widget());
}

void Canvas::takeFrame(platform::Rect frame) { canvasOf(widget())->frame = frame; }

void Canvas::setBackground(platform::Colour colour) {
    canvasOf(widget())->background = colour;
    gtk_widget_queue_draw(widget());
}

void Canvas::setCornerRadius(double radius) {
    canvasOf(widget())->cornerRadius = std::max(0.0, bounded(radius));
    // The style, not only the drawing: from it the toolkit knows where the pointer is inside.
    if (!style_) {
        style_ = Ref<GtkCssProvider>::take(gtk_css_provider_new());
        G_GNUC_BEGIN_IGNORE_DEPRECATIONS
        gtk_style_context_add_provider(gtk_widget_get_style_context(widget()),
                                       reinterpret_cast<GtkStyleProvider*>(style_.get()),
                                       GTK_STYLE_PROVIDER_PRIORITY_USER + 1);
        G_GNUC_END_IGNORE_DEPRECATIONS
    }
    std::array<char, G_ASCII_DTOSTR_BUF_SIZE> number{};
    g_ascii_formatd(number.data(), static_cast<int>(number.size()), "%.2f", canvasOf(widget())->cornerRadius);
    const std::string style = std::string("* { border-radius: ") + number.data() + "px; }";
    G_GNUC_BEGIN_IGNORE_DEPRECATIONS
    gtk_css_provider_load_from_data(style_.get(), style.c_str(), -1);
    G_GNUC_END_IGNORE_DEPRECATIONS
    gtk_widget_set_overflow(widget(), radius > 0 ? GTK_OVERFLOW_HIDDEN : GTK_OVERFLOW_VISIBLE);
}

void Canvas::setTouchThrough(bool through) { canvasOf(widget())->touchThrough = through; }

void Canvas::add(GtkWidget* child) { gtk_widget_insert_before(child, widget(), nullptr); }

void Canvas::remove() {
    if (gtk_widget_get_parent(widget()) != nullptr) {
        gtk_widget_unparent(widget());
    }
}

void Canvas::setOnDraw(std::function<void(GtkSnapshot*, int, int)> onDraw) { onDraw_ = std::move(onDraw); }

void Canvas::redraw() { gtk_widget_queue_draw(widget()); }

void Canvas::setOnResize(std::function<void(int, int)> onResize) { onResize_ = std::move(onResize); }

void Canvas::setRole(GtkAccessibleRole role) {
    if (gtk_widget_get_root(widget()) == nullptr) {
        g_object_set(widget(), "accessible-role", role, nullptr);
    }
}

void Canvas::setOnPress(std::function<void()> onPress) {
    onPress_ = std::move(onPress);
    gtk_widget_set_focusable(widget(), onPress_ != nullptr);
    gtk_widget_action_set_enabled(widget(), pressAction, onPress_ != nullptr);
}

void Canvas::setOnArrow(std::function<void(GtkDirectionType)> onArrow) {
    onArrow_ = std::move(onArrow);
    gtk_widget_action_set_enabled(widget(), leftAction, onArrow_ != nullptr);
    gtk_widget_action_set_enabled(widget(), rightAction, onArrow_ != nullptr);
}

} // namespace zentavo::gtk
