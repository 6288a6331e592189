#include "zentavo/push/templates/SmallImageController.h"

namespace zentavo {

void SmallImageController::build() {
    templateBigImage->view()->setCornerRadius(10);
    view->addSubview(templateBigImage->view());
}

layout::PushFrames SmallImageController::arrange(const layout::PushParts& parts) const {
    return layout::pushSmallImage(parts, pictureOnLeft());
}

bool SmallImageController::pictureOnLeft() const {
    const std::string side = data.smallImageSettings ? data.smallImageSettings->imageAlignment : "";
    if (side == "left" || side == "right") {
        return side == "left";
    }
    return isRightToLeft(); // where the texts end
}

} // namespace zentavo
