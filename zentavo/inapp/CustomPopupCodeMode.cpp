#include "zentavo/inapp/CustomPopupCodeMode.h"

namespace zentavo {

void CustomPopupCodeMode::loadFinished() {
    if (!javascript.empty()) {
        run(javascript);
    }
    if (onLoaded) {
        onLoaded();
    }
}

} // namespace zentavo
