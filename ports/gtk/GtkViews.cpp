#include "ports/gtk/GtkViews.h"

#include <utility>

#include "ports/gtk/FrameAnimation.h"
#include "ports/gtk/GtkImageView.h"
#include "ports/gtk/GtkTextLabel.h"
#include "ports/gtk/MainThread.h"
#include "ports/gtk/TextLayout.h"
#include "zentavo/foundation/Fault.h"

namespace zentavo::gtk {

GtkViews::GtkViews(std::shared_ptr<platform::MainQueue> mainQueue, std::shared_ptr<WindowStage> stage)
    : mainQueue_(std::move(mainQueue)), stage_(std::move(stage)) {}

platform::Rect GtkViews::mainScreenBounds() const {
    MainThread::require();
    return stage_->bounds();
}

std::shared_ptr<platform::View> GtkViews::makeView() { return std::make_shared<GtkView>(mainQueue_); }

std::shared_ptr<platform::Label> GtkViews::makeLabel() { return std::make_shared<GtkTextLabel>(mainQueue_); }

std::shared_ptr<platform::ImageView> GtkViews::makeImageView() { return std::make_shared<GtkImageView>(mainQueue_); }

platform::Size GtkViews::textSize(const std::string& text, platform::Font font, double width, int lines) const {
    MainThread::require();
    TextLayout layout(stage_->root());
    layout.set(text, font, lines, platform::TextAlignment::natural);
    return layout.size(width);
}

platform::Appearance GtkViews::appearance() const {
    MainThread::require();
    return stage_->appearance();
}

void GtkViews::setOnChange(std::function<void()> onChange) {
    MainThread::require();
    onChange_ = onChange ? std::make_shared<std::function<void()>>(std::move(onChange)) : nullptr;
    // Another handler, or none, takes back what is posted for this one.
    stage_->setOnChange([queue = mainQueue_, weak = std::weak_ptr(onChange_)] {
        queue->async([weak] {
            if (const auto handler = weak.lock()) {
                (*handler)();
            }
        });
    });
}

std::shared_ptr<const void> GtkViews::listenForResizes(std::function<void()> onResize) {
    MainThread::require();
    struct Listener {
        std::function<void()> onResize;
        bool isPosted = false;
    };
    const auto listener = std::make_shared<Listener>(Listener{std::move(onResize)});
    auto onStage = std::make_shared<std::function<void()>>([queue = mainQueue_, weak = std::weak_ptr(listener)] {
        const auto living = weak.lock();
        if (!living || std::exchange(living->isPosted, true)) {
            return;
        }
        queue->async([weak] {
            if (const auto told = weak.lock()) {
                told->isPosted = false;
                told->onResize();
            }
        });
    });
    stage_->listenForResizes(onStage);
    return std::make_shared<std::pair<std::shared_ptr<Listener>, decltype(onStage)>>(listener, onStage);
}

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
