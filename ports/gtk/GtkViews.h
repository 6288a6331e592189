#pragma once

#include <memory>

#include "ports/gtk/WindowStage.h"

namespace zentavo::gtk {

/// The views over one window of the host. A view that fills the window goes on filling it when the window is resized.
class GtkViews final : public platform::Views {
public:
    GtkViews(std::shared_ptr<platform::MainQueue> mainQueue, std::shared_ptr<WindowStage> stage);

    platform::Rect mainScreenBounds() const override;
    /// A desktop keeps nothing for itself inside a window.
    platform::Insets safeAreaInsets() const override { return {}; }
    std::shared_ptr<platform::View> makeView() override;
    bool showOverWindow(std::shared_ptr<platform::View> view) override;
    void animate(double seconds, std::function<void()> change, std::function<void()> done) override;

private:
    const std::shared_ptr<platform::MainQueue> mainQueue_;
    const std::shared_ptr<WindowStage> stage_;
};

} // namespace zentavo::gtk
