#include "zentavo/push/templates/StyleBasicController.h"

namespace zentavo {

void StyleBasicController::build() { view->addSubview(templateBigImage->view()); }

layout::PushFrames StyleBasicController::arrange(const layout::PushParts& parts) const {
    return layout::pushColumn(parts);
}

} // namespace zentavo
