#include "ports/gtk/GtkViews.h"

#include <utility>

#include "ports/gtk/FrameAnimation.h"
#include "ports/gtk/MainThread.h"
#include "zentavo/foundation/Fault.h"

namespace zentavo::gtk {

GtkViews::GtkViews(std::shared_ptr<platform::MainQueue> mainQueue, std::shared_ptr<WindowStage> stage)
    : mainQueue_(std::move(mainQueue)), stage_(std::move(stage)) {}

platform::Rect GtkViews::mainScreenBounds() const {
    MainThread::require();
    return stage_->bounds();
}

std::shared_ptr<platform::View> GtkViews::makeView() { return std::make_shared<GtkView>(mainQueue_); }

bool GtkViews::showOverWindow(std::shared_ptr<platform::View> view) {
    MainThread::require();
    const auto ours = std::dynamic_pointer_cast<GtkView>(view);
    if (!ours) {
        fatalError("a view of another toolkit cannot be shown here");
    }
    return stage_->show(*ours);
}

void GtkViews::animate(double seconds, std::function<void()> change, std::function<void()> done) {
    MainThread::require();
    const auto later = [queue = mainQueue_, done = std::move(done)] {
        if (done) {
            queue->async(done);
        }
    };
    if (seconds > 0) {
        return FrameAnimation::run(stage_->root(), seconds, change, later);
    }
    change();
    later();
}

} // namespace zentavo::gtk
