#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "ports/gtk/Canvas.h"

namespace zentavo::gtk {

/// Moves canvases to other frames, a little with every tick of the screen. Main thread only.
class FrameAnimation {
public:
    /// The one that frames are set for now, inside `run`; null when they are set at once.
    static FrameAnimation* recording() noexcept;
    /// Another frame was set for `canvas`: what moves it lets go.
    static void forget(const Canvas& canvas);

    /// Calls `change`, moves what that gave other frames within `seconds` by the clock of `screen`, and then calls `done`.
    static void run(GtkWidget* screen, double seconds, const std::function<void()>& change, std::function<void()> done);

    void add(const std::shared_ptr<Canvas>& canvas, platform::Rect from, platform::Rect to);

private:
    struct Move {
        std::weak_ptr<Canvas> canvas;
        platform::Rect from;
        platform::Rect to;
    };

    static gboolean tick(GtkWidget* screen, GdkFrameClock* clock, gpointer self);
    /// 0 is the beginning of the way, 1 its end.
    void place(double way) const;

    std::vector<Move> moves_;
    std::function<void()> done_;
    gint64 begin_ = 0;    ///< microseconds of the frame clock; 0 before the first tick
    gint64 duration_ = 0; ///< microseconds
};

} // namespace zentavo::gtk
