#pragma once

#include <memory>
#include <string>
#include <vector>

#include "zentavo/platform/ImageView.h"
#include "zentavo/platform/Label.h"
#include "zentavo/platform/MainQueue.h"
#include "zentavo/platform/Views.h"

namespace zentavo::testing {

/// A view that only remembers. Every member asserts that it is called on the main queue, as the views of real toolkits
/// demand it: elsewhere it is a fault.
class ZENTAVO_EXPORT MemoryView : public virtual platform::View, public std::enable_shared_from_this<MemoryView> {
public:
    explicit MemoryView(std::shared_ptr<platform::MainQueue> mainQueue);
    ~MemoryView() override;

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

    // --- What a test sees and does -----------------------------------------------------------------------------------

    platform::Colour background() const noexcept { return background_; }
    bool isTouchThrough() const noexcept { return touchThrough_; }
    const std::string& name() const noexcept { return name_; }
    const std::string& spokenName() const noexcept { return spokenName_; }
    /// The user taps this view; without effect on one that is hidden, lets taps through or is nowhere on screen.
    void tap();
    /// The user swipes over this view; without effect as for `tap`.
    void swipe(platform::Swipe direction);
    /// Whether it is in the window, and neither it nor what holds it is hidden.
    bool isVisible() const;

protected:
    /// A fault off the main queue.
    void onMainQueue() const;
    const std::shared_ptr<platform::MainQueue> mainQueue_;

private:
    friend class MemoryViews;
    using Children = std::vector<std::shared_ptr<platform::View>>;
    void enter(std::shared_ptr<Children> holder, MemoryView* superview);
    void tellRemoved();

    platform::Rect frame_;
    platform::Colour background_;
    double cornerRadius_ = 0;
    bool hidden_ = false;
    bool touchThrough_ = false;
    std::string name_;
    std::string spokenName_;
    std::function<void()> onTap_;
    std::function<void(platform::Swipe)> onSwipe_;
    std::function<void()> onRemoved_;
    std::shared_ptr<Children> children_ = std::make_shared<Children>();
    /// The list that this view stands in: another view's children, or the window's.
    std::weak_ptr<Children> holder_;
    MemoryView* superview_ = nullptr;
};

/// A screen of 390 x 844 points with a window as large. Main queue only.
class ZENTAVO_EXPORT MemoryViews : public platform::Views {
public:
    explicit MemoryViews(std::shared_ptr<platform::MainQueue> mainQueue);

    platform::Rect mainScreenBounds() const override { return bounds_; }
    platform::Insets safeAreaInsets() const override { return safeArea_; }
    platform::Appearance appearance() const override { return appearance_; }
    void setOnChange(std::function<void()> onChange) override;
    std::shared_ptr<const void> listenForResizes(std::function<void()> onResize) override;
    std::shared_ptr<platform::View> makeView() override;
    std::shared_ptr<platform::Label> makeLabel() override;
    std::shared_ptr<platform::ImageView> makeImageView() override;
    /// Letters are half as wide as their font's size, lines a quarter higher; words do not count.
    platform::Size textSize(const std::string& text, platform::Font font, double width, int lines) const override;
    bool showOverWindow(std::shared_ptr<platform::View> view) override;
    void animate(double seconds, std::function<void()> change, std::function<void()> done) override;

    // --- What a test sees and does -----------------------------------------------------------------------------------

    void setScreen(platform::Rect bounds, platform::Insets safeArea = {});
    /// Whether there is a window to show anything over; there is at first.
    void setWindow(bool there) noexcept { window_ = there; }
    /// The window goes, and what lies over it with it.
    void closeWindow();
    void setAppearance(platform::Appearance appearance);
    /// What lies over the window now, the topmost last.
    std::vector<std::shared_ptr<platform::View>> shown() const { return *overWindow_; }
    /// The view of this name over the window or inside what is; null when there is none.
    std::shared_ptr<MemoryView> named(const std::string& name) const;
    /// The durations of the animations so far, in seconds.
    const std::vector<double>& animations() const noexcept { return animations_; }

private:
    void tellChange();

    const std::shared_ptr<platform::MainQueue> mainQueue_;
    platform::Rect bounds_{0, 0, 390, 844};
    platform::Insets safeArea_;
    bool window_ = true;
    platform::Appearance appearance_ = platform::Appearance::light;
    std::shared_ptr<std::function<void()>> onChange_;
    std::vector<std::weak_ptr<std::function<void()>>> resizeListeners_;
    const std::shared_ptr<MemoryView::Children> overWindow_ = std::make_shared<MemoryView::Children>();
    std::vector<double> animations_;
};

} // namespace zentavo::testing
