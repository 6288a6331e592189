#include "zentavo/core/UserDefaultsManager.h"

#include "zentavo/core/ZentavoState.h"

namespace zentavo {

std::shared_ptr<platform::Preferences> UserDefaultsManager::userDefaults() {
    return Zentavo::shared()->state()->store();
}

} // namespace zentavo
