#pragma once

#include <functional>
#include <memory>
#include <string>

#include "ports/gtk/WindowStage.h"

namespace zentavo::gtk {

/// The views over one window of the host. A view that fills the window goes on filling it when the window is resized.
class GtkViews final : public platform::Views {
public:
    GtkViews(std::shared_ptr<platform::MainQueue> mainQueue, std::shared_ptr<WindowStage> stage);

    platform::Rect mainScreenBounds() const override;
    /// A desktop keeps nothing for itself inside a window.
    platform::Insets safeAreaInsets() const override { return {}; }
    platform::Appearance appearance() const override;
    void setOnChange(std::function<void()> onChange) override;
    std::shared_ptr<const void> listenForResizes(std::function<void()> onResize) override;
    std::shared_ptr<platform::View> makeView() override;
    std::shared_ptr<platform::Label> makeLabel() override;
    std::shared_ptr<platform::ImageView> makeImageView() override;
    platform::Size textSize(const std::string& text, platform::Font font, double width, int lines) const override;
    bool showOverWindow(std::shared_ptr<platform::View> view) override;
    void animate(double seconds, std::function<void()> change, std::function<void()> done) override;

private:
    const std::shared_ptr<platform::MainQueue> mainQueue_;
    const std::shared_ptr<WindowStage> stage_;
    std::shared_ptr<std::function<void()>> onChange_;
};

} // namespace zentavo::gtk
