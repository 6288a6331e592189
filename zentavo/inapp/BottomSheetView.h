#pragma once

#include <memory>
#include <optional>

#include "zentavo/platform/Label.h"
#include "zentavo/platform/Views.h"

namespace zentavo {

/// A sheet at the lower edge of the screen, which the user drags between two heights, or down and away. Heights in
/// points. Main queue only; `views` must outlive it.
class BottomSheetView {
public:
    static constexpr double defaultHeight = 300;
    /// A sheet that is let go below this goes away.
    static constexpr double dismissibleHeight = 200;
    /// What stays free above the highest sheet.
    static constexpr double freeHeight = 64;

    explicit BottomSheetView(platform::Views& views);

    /// Follows the window.
    double maximumContainerHeight;
    double currentContainerHeight() const noexcept { return currentContainerHeight_; }

    /// What the sheet is put into; null for the host's window. Takes effect in `present`.
    std::shared_ptr<platform::View> topViewController;
    /// How high the container stands now, between its two heights too while a finger holds it. None until presented.
    std::optional<double> containerViewHeightConstraint() const noexcept { return heightConstraint_; }
    /// How far the container's lower edge lies below that of the screen: 0 while the sheet is up, its own height once
    /// it is dismissed. None until presented.
    std::optional<double> containerViewBottomConstraint() const noexcept { return bottomConstraint_; }

    // Made when first asked for. Title and notes lie in the content, the content in the container.
    const std::shared_ptr<platform::View>& containerView();
    const std::shared_ptr<platform::View>& contentStackView();
    const std::shared_ptr<platform::Label>& titleLabel();
    const std::shared_ptr<platform::Label>& notesLabel();

    /// False when there is no window to show it over.
    bool present();
    /// The finger holds the sheet at `height`; it follows, but not beyond the maximum.
    void drag(double height);
    /// The finger has let go at `height`, moving down or not. The sheet settles, or goes away.
    void letGo(double height, bool movingDown);
    void dismiss();

    /// Where a sheet settles that is let go at `height`; 0 where it goes away.
    static double settledHeight(double height, bool movingDown, double maximum) noexcept;

private:
    void handleResize();
    void place(double height, double below = 0);
    template <class Kind>
    const std::shared_ptr<Kind>& lazy(std::shared_ptr<Kind>& view, std::shared_ptr<Kind> (platform::Views::*make)(),
                                      const char* name, const std::shared_ptr<platform::View>& superview);

    platform::Views& views_;
    platform::Rect screen_;
    std::shared_ptr<const void> resizes_;
    double currentContainerHeight_ = defaultHeight;
    std::optional<double> heightConstraint_;
    std::optional<double> bottomConstraint_;
    std::shared_ptr<platform::View> containerView_;
    std::shared_ptr<platform::View> contentStackView_;
    std::shared_ptr<platform::Label> titleLabel_;
    std::shared_ptr<platform::Label> notesLabel_;
};

} // namespace zentavo
