#include "ports/gtk/FrameAnimation.h"

#include <algorithm>
#include <utility>

#include "zentavo/foundation/Fault.h"

namespace zentavo::gtk {

namespace {

FrameAnimation* current = nullptr;
std::vector<FrameAnimation*> running;

double between(double from, double to, double way) { return from + (to - from) * way; }

bool same(const std::weak_ptr<Canvas>& held, const Canvas& canvas) {
    const auto living = held.lock();
    return !living || living.get() == &canvas;
}

} // namespace

FrameAnimation* FrameAnimation::recording() noexcept { return current; }

void FrameAnimation::forget(const Canvas& canvas) {
    for (FrameAnimation* each : running) {
        std::erase_if(each->moves_, [&](const Move& move) { return same(move.canvas, canvas); });
    }
}

void FrameAnimation::run(GtkWidget* screen, double seconds, const std::function<void()>& change,
                         std::function<void()> done) {
    auto animation = std::make_unique<FrameAnimation>();
    animation->done_ = std::move(done);
    animation->duration_ = static_cast<gint64>(std::clamp(seconds, 0.0, 60.0) * G_USEC_PER_SEC);
    struct Recording { // ends also where `change` is left by a fault
        FrameAnimation* const outer;
        ~Recording() { current = outer; }
    };
    {
        const Recording recording{std::exchange(current, animation.get())};
        change();
    }
    if (!gtk_widget_get_mapped(screen)) { // nobody is watching, and nothing ticks
        animation->place(1);
        animation->done_();
        return;
    }
    running.push_back(animation.get());
    gtk_widget_add_tick_callback(screen, &FrameAnimation::tick, animation.release(), [](gpointer data) {
        auto* self = static_cast<FrameAnimation*>(data);
        std::erase(running, self);
        // The screen may have gone in the middle.
        entryPoint("view", [&] {
            self->place(1);
            self->done_();
        });
        delete self;
    });
}

void FrameAnimation::add(const std::shared_ptr<Canvas>& canvas, platform::Rect from, platform::Rect to) {
    forget(*canvas);
    std::erase_if(moves_, [&](const Move& move) { return same(move.canvas, *canvas); });
    moves_.push_back({canvas, from, to});
}

gboolean FrameAnimation::tick(GtkWidget*, GdkFrameClock* clock, gpointer data) {
    auto& self = *static_cast<FrameAnimation*>(data);
    const gint64 now = gdk_frame_clock_get_frame_time(clock);
    if (self.begin_ == 0) {
        self.begin_ = now;
    }
    if (now - self.begin_ >= self.duration_) {
        return G_SOURCE_REMOVE;
    }
    const double rest = 1 - static_cast<double>(now - self.begin_) / static_cast<double>(self.duration_);
    self.place(1 - rest * rest * rest); // fast at first, settling at the end
    return G_SOURCE_CONTINUE;
}

void FrameAnimation::place(double way) const {
    for (const Move& move : moves_) {
        if (const auto canvas = move.canvas.lock()) {
            canvas->setFrame({between(move.from.x, move.to.x, way), between(move.from.y, move.to.y, way),
                              between(move.from.width, move.to.width, way),
                              between(move.from.height, move.to.height, way)});
        }
    }
}

} // namespace zentavo::gtk
