#include "zentavo/inapp/BottomSheetView.h"

#include <algorithm>

namespace zentavo {

namespace {

constexpr double settlingTime = 0.4; // seconds

} // namespace

BottomSheetView::BottomSheetView(platform::Views& views)
    : maximumContainerHeight(views.mainScreenBounds().height - freeHeight), views_(views),
      screen_(views.mainScreenBounds()) {
    resizes_ = views.listenForResizes([this] { handleResize(); });
}

/// A sheet at its full height goes on being so; where the window leaves it less room than it has, it takes what there is.
void BottomSheetView::handleResize() {
    const double before = maximumContainerHeight;
    screen_ = views_.mainScreenBounds();
    maximumContainerHeight = screen_.height - freeHeight;
    currentContainerHeight_ = currentContainerHeight_ >= before
                                  ? maximumContainerHeight
                                  : std::min(currentContainerHeight_, maximumContainerHeight);
    if (heightConstraint_ && bottomConstraint_ == 0) {
        place(currentContainerHeight_);
    }
}

template <class Kind>
const std::shared_ptr<Kind>& BottomSheetView::lazy(std::shared_ptr<Kind>& view,
                                                   std::shared_ptr<Kind> (platform::Views::*make)(), const char* name,
                                                   const std::shared_ptr<platform::View>& superview) {
    if (!view) {
        view = (views_.*make)();
        view->setName(name);
        if (superview) {
            superview->addSubview(view);
        }
    }
    return view;
}

const std::shared_ptr<platform::View>& BottomSheetView::containerView() {
    return lazy(containerView_, &platform::Views::makeView, "zentavo.sheet", nullptr);
}
const std::shared_ptr<platform::View>& BottomSheetView::contentStackView() {
    return lazy(contentStackView_, &platform::Views::makeView, "zentavo.sheet.content", containerView());
}
const std::shared_ptr<platform::Label>& BottomSheetView::titleLabel() {
    return lazy(titleLabel_, &platform::Views::makeLabel, "zentavo.sheet.title", contentStackView());
}
const std::shared_ptr<platform::Label>& BottomSheetView::notesLabel() {
    return lazy(notesLabel_, &platform::Views::makeLabel, "zentavo.sheet.notes", contentStackView());
}

bool BottomSheetView::present() {
    place(currentContainerHeight_);
    if (topViewController) {
        topViewController->addSubview(containerView());
        return true;
    }
    return views_.showOverWindow(containerView());
}

void BottomSheetView::drag(double height) { place(std::min(height, maximumContainerHeight)); }

void BottomSheetView::letGo(double height, bool movingDown) {
    const double settled = settledHeight(height, movingDown, maximumContainerHeight);
    if (settled <= 0) {
        return dismiss();
    }
    currentContainerHeight_ = settled;
    views_.animate(settlingTime, [&] { place(settled); });
}

void BottomSheetView::dismiss() {
    if (heightConstraint_) {
        place(*heightConstraint_, *heightConstraint_);
    }
    containerView()->removeFromSuperview();
}

double BottomSheetView::settledHeight(double height, bool movingDown, double maximum) noexcept {
    if (height < dismissibleHeight) {
        return 0;
    }
    return height < defaultHeight || (height < maximum && movingDown) ? defaultHeight : maximum;
}

void BottomSheetView::place(double height, double below) {
    heightConstraint_ = height;
    bottomConstraint_ = below;
    containerView()->setFrame({screen_.x, screen_.y + screen_.height - height + below, screen_.width, height});
}

} // namespace zentavo
