#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ports/gtk/Canvas.h"
#include "ports/gtk/Signals.h"
#include "zentavo/platform/MainQueue.h"
#include "zentavo/platform/Views.h"

namespace zentavo::gtk {

/// A view as a widget. Every member is a fault off the main thread.
class GtkView : public virtual platform::View, public std::enable_shared_from_this<GtkView> {
public:
    using Children = std::vector<std::shared_ptr<GtkView>>;

    /// `role` is what it is for accessibility tools, as long as it cannot be tapped.
    explicit GtkView(std::shared_ptr<platform::MainQueue> mainQueue,
                     GtkAccessibleRole role = GTK_ACCESSIBLE_ROLE_GROUP);
    ~GtkView() override;
    GtkView(const GtkView&) = delete;
    GtkView& operator=(const GtkView&) = delete;

    void setFrame(platform::Rect frame) override;
    platform::Rect frame() const override;
    void setHidden(bool hidden) override;
    bool isHidden() const override;
    void setBackground(platform::Colour colour) override;
    void setCornerRadius(double radius) override;
    double cornerRadius() const override;
    void setTouchThrough(bool through) override;
    void setOnTap(std::function<void()> onTap) override;
    void setOnSwipe(std::function<void(platform::Swipe)> onSwipe) override;
    void setOnRemoved(std::function<void()> onRemoved) override;
    void addSubview(std::shared_ptr<platform::View> view) override;
    void removeFromSuperview() override;
    std::vector<std::shared_ptr<platform::View>> subviews() const override;
    void setName(std::string name) override;
    void setSpokenName(std::string name) override;

    // --- For the port ------------------------------------------------------------------------------------------------

    /// The canvas may outlive the view by a moment: a view that ends on another thread leaves it to the main thread.
    Canvas& canvas() const noexcept { return *canvas_; }
    /// Is about to stand directly over a window: the stage says so.
    void setShown() noexcept { shown_ = true; }
    /// As a click beside what lies above it; false where that would not reach it, or do nothing.
    bool dismiss();
    /// Enters `holder` on top, and `around` with its widget.
    void enter(const std::shared_ptr<Children>& holder, Canvas& around);
    /// Takes another frame while what is around it is being laid out.
    void takeFrame(platform::Rect frame);
    /// The window around it is gone, for good.
    void windowGone();

protected:
    const std::shared_ptr<platform::MainQueue> mainQueue_;

private:
    static void pressed(GtkGestureClick* gesture, int count, double x, double y, gpointer self);
    static void released(GtkGestureClick* gesture, int count, double x, double y, gpointer self);
    void tapped();
    void swiped(platform::Swipe direction);
    void tellRemoved();
    /// After what makes it a control, or none, has changed.
    void updateControl();

    const GtkAccessibleRole role_;
    std::shared_ptr<Canvas> canvas_;
    platform::Rect frame_;
    double cornerRadius_ = 0;
    std::function<void()> onTap_;
    std::function<void(platform::Swipe)> onSwipe_;
    std::function<void()> onRemoved_;
    double pressedAt_ = 0; ///< where across the view the last press began
    bool shown_ = false;
    const std::shared_ptr<Children> children_ = std::make_shared<Children>();
    /// The list that this view stands in: another view's children, or the window's.
    std::weak_ptr<Children> holder_;
    Signals signals_;
};

} // namespace zentavo::gtk
