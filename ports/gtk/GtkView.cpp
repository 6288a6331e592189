#include "ports/gtk/GtkView.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "ports/gtk/FrameAnimation.h"
#include "ports/gtk/MainThread.h"
#include "ports/gtk/WindowStage.h"
#include "zentavo/foundation/Fault.h"

namespace zentavo::gtk {

namespace {

/// Points; what moves less to one side was meant for the place.
constexpr double swipeLength = 40;

} // namespace

GtkView::GtkView(std::shared_ptr<platform::MainQueue> mainQueue, GtkAccessibleRole role)
    : mainQueue_(std::move(mainQueue)), role_(role) {
    MainThread::require();
    canvas_ = std::make_shared<Canvas>();
    canvas_->setRole(role_);
    // What is pressed here is pressed nowhere else: not in what lies below, nor in the window around it.
    GtkGesture* click = gtk_gesture_click_new();
    gtk_gesture_single_set_button(reinterpret_cast<GtkGestureSingle*>(click), 0);
    auto* controller = reinterpret_cast<GtkEventController*>(click);
    gtk_event_controller_set_propagation_phase(controller, GTK_PHASE_TARGET);
    signals_.connect(click, "pressed", &GtkView::pressed, this);
    signals_.connect(click, "released", &GtkView::released, this);
    gtk_widget_add_controller(canvas_->widget(), controller);

    GtkEventController* scroll = gtk_event_controller_scroll_new(GTK_EVENT_CONTROLLER_SCROLL_BOTH_AXES);
    gtk_event_controller_set_propagation_phase(scroll, GTK_PHASE_TARGET);
    signals_.connect(
        scroll, "scroll", +[](GtkEventControllerScroll*, double, double, gpointer) -> gboolean { return true; }, this);
    gtk_widget_add_controller(canvas_->widget(), scroll);
}

GtkView::~GtkView() {
    entryPoint("view", [] { MainThread::require(); });
    MainThread::run([canvas = std::move(canvas_), children = children_] {
        for (const auto& child : *children) {
            child->canvas().remove();
        }
    });
}

void GtkView::setFrame(platform::Rect frame) {
    MainThread::require();
    const platform::Rect before = std::exchange(frame_, frame);
    if (FrameAnimation* recording = FrameAnimation::recording()) {
        recording->add(canvas_, before, frame);
        return;
    }
    FrameAnimation::forget(*canvas_);
    canvas_->setFrame(frame);
}
platform::Rect GtkView::frame() const {
    MainThread::require();
    return frame_;
}
void GtkView::takeFrame(platform::Rect frame) {
    frame_ = frame;
    canvas_->takeFrame(frame);
}
void GtkView::setHidden(bool hidden) {
    MainThread::require();
    if (hidden) {
        WindowStage::giveFocusBack(canvas_->widget());
    }
    gtk_widget_set_visible(canvas_->widget(), !hidden);
}
bool GtkView::isHidden() const {
    MainThread::require();
    return !gtk_widget_get_visible(canvas_->widget());
}
void GtkView::setBackground(platform::Colour colour) {
    MainThread::require();
    canvas_->setBackground(colour);
}
void GtkView::setCornerRadius(double radius) {
    MainThread::require();
    cornerRadius_ = radius;
    canvas_->setCornerRadius(radius);
}
double GtkView::cornerRadius() const {
    MainThread::require();
    return cornerRadius_;
}
void GtkView::setTouchThrough(bool through) {
    MainThread::require();
    canvas_->setTouchThrough(through);
}
void GtkView::setOnTap(std::function<void()> onTap) {
    MainThread::require();
    onTap_ = std::move(onTap);
    updateControl();
}
void GtkView::setOnSwipe(std::function<void(platform::Swipe)> onSwipe) {
    MainThread::require();
    onSwipe_ = std::move(onSwipe);
    updateControl();
}
void GtkView::setOnRemoved(std::function<void()> onRemoved) {
    MainThread::require();
    onRemoved_ = std::move(onRemoved);
}
void GtkView::setName(std::string name) {
    MainThread::require();
    gtk_widget_set_name(canvas_->widget(), name.c_str());
}
void GtkView::setSpokenName(std::string name) {
    MainThread::require();
    gtk_accessible_update_property(reinterpret_cast<GtkAccessible*>(canvas_->widget()), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                   name.c_str(), -1);
}

void GtkView::updateControl() {
    // What lies over the window itself lies behind the controls: nothing to stop at, and `dismiss` is its key.
    const bool control = onTap_ && !shown_;
    canvas_->setRole(control ? GTK_ACCESSIBLE_ROLE_BUTTON : role_);
    std::function<void()> press;
    std::function<void(GtkDirectionType)> turn;
    if (control) {
        press = [weak = weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->tapped();
            }
        };
    }
    if (control && onSwipe_) {
        // Content moves with the finger: what is to come from the right comes by a swipe to the left.
        turn = [weak = weak_from_this()](GtkDirectionType side) {
            if (const auto self = weak.lock()) {
                self->swiped(side == GTK_DIR_RIGHT ? platform::Swipe::left : platform::Swipe::right);
            }
        };
    }
    canvas_->setOnPress(std::move(press));
    canvas_->setOnArrow(std::move(turn));
}

bool GtkView::dismiss() {
    GtkWidget* widget = canvas_->widget();
    const bool reached =
        onTap_ && !isHidden() &&
        gtk_widget_contains(widget, gtk_widget_get_width(widget) / 2, gtk_widget_get_height(widget) / 2);
    if (reached) {
        tapped();
    }
    return reached;
}

void GtkView::enter(const std::shared_ptr<Children>& holder, Canvas& around) {
    holder_ = holder;
    holder->push_back(shared_from_this());
    updateControl();
    around.add(canvas_->widget());
}

void GtkView::addSubview(std::shared_ptr<platform::View> view) {
    MainThread::require();
    const auto child = std::dynamic_pointer_cast<GtkView>(view);
    if (!child) {
        fatalError("a view of another toolkit cannot be shown here");
    }
    if (child.get() == this || gtk_widget_is_ancestor(canvas_->widget(), child->canvas().widget())) {
        fatalError("a view cannot hold itself");
    }
    child->removeFromSuperview();
    child->enter(children_, *canvas_);
}

void GtkView::removeFromSuperview() {
    MainThread::require();
    const auto self = shared_from_this(); // what holds it lets go
    if (const auto holder = holder_.lock()) {
        std::erase(*holder, self);
    }
    holder_.reset();
    WindowStage::giveFocusBack(canvas_->widget());
    canvas_->remove();
    if (std::exchange(shown_, false)) {
        tellRemoved();
    }
}

std::vector<std::shared_ptr<platform::View>> GtkView::subviews() const {
    MainThread::require();
    return {children_->begin(), children_->end()};
}

void GtkView::windowGone() {
    for (const auto& child : Children(*children_)) {
        child->windowGone();
    }
    if (std::exchange(shown_, false)) {
        tellRemoved();
    }
}

void GtkView::tellRemoved() {
    mainQueue_->async([weak = weak_from_this()] {
        const auto self = weak.lock();
        const auto onRemoved = self ? self->onRemoved_ : nullptr;
        if (onRemoved) {
            onRemoved();
        }
    });
}

void GtkView::pressed(GtkGestureClick* gesture, int, double x, double, gpointer self) {
    static_cast<GtkView*>(self)->pressedAt_ = x;
    gtk_gesture_set_state(reinterpret_cast<GtkGesture*>(gesture), GTK_EVENT_SEQUENCE_CLAIMED);
}

void GtkView::released(GtkGestureClick* gesture, int count, double x, double y, gpointer self) {
    auto& view = *static_cast<GtkView*>(self);
    const guint button = gtk_gesture_single_get_current_button(reinterpret_cast<GtkGestureSingle*>(gesture));
    const double way = x - view.pressedAt_;
    if (view.onSwipe_ && std::abs(way) >= swipeLength) {
        view.swiped(way < 0 ? platform::Swipe::left : platform::Swipe::right);
        return;
    }
    // Let go elsewhere is a change of mind.
    if (count > 0 && button <= GDK_BUTTON_PRIMARY && gtk_widget_contains(view.canvas_->widget(), x, y)) {
        view.tapped();
    }
}

void GtkView::tapped() {
    mainQueue_->async([weak = weak_from_this()] {
        const auto self = weak.lock();
        const auto onTap = self ? self->onTap_ : nullptr;
        if (onTap) {
            onTap();
        }
    });
}

void GtkView::swiped(platform::Swipe direction) {
    mainQueue_->async([weak = weak_from_this(), direction] {
        const auto self = weak.lock();
        const auto onSwipe = self ? self->onSwipe_ : nullptr;
        if (onSwipe) {
            onSwipe(direction);
        }
    });
}

} // namespace zentavo::gtk
