#pragma once

#include <memory>

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

    const double maximumContainerHeight;
    double currentContainerHeight() const noexcept { return currentContainerHeight_; }

    // Made when first asked for. Title and notes lie in the content, the content in the container.
    const std::shared_ptr<platform::View>& containerView();
    const std::shared_ptr<platform::View>& contentStackView();
    const std::shared_ptr<platform::View>& titleLabel();
    const std::shared_ptr<platform::View>& notesLabel();

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
    void place(double height);
    const std::shared_ptr<platform::View>& lazy(std::shared_ptr<platform::View>& view, const char* name,
                                                const std::shared_ptr<platform::View>& superview);

    platform::Views& views_;
    const platform::Rect screen_;
    double currentContainerHeight_ = defaultHeight;
    std::shared_ptr<platform::View> containerView_;
    std::shared_ptr<platform::View> contentStackView_;
    std::shared_ptr<platform::View> titleLabel_;
    std::shared_ptr<platform::View> notesLabel_;
};

} // namespace zentavo
