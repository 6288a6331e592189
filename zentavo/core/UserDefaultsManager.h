#pragma once

#include <memory>

#include "zentavo/foundation/Export.h"
#include "zentavo/platform/Preferences.h"

namespace zentavo {

/// The one preference store behind everything that the SDK remembers.
class ZENTAVO_EXPORT UserDefaultsManager {
public:
    /// The store of the shared instance; null until it is activated.
    static std::shared_ptr<platform::Preferences> userDefaults();
};

} // namespace zentavo
