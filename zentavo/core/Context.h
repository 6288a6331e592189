#pragma once

#include <optional>
#include <string>

#include "zentavo/foundation/Value.h"
#include "zentavo/platform/Platform.h"

namespace zentavo {

/// Describes device, system, screen and host app in one nested map, which travels in every event. Asks the platform
/// once, when it is made.
class Context {
public:
    explicit Context(const platform::Platform& platform);

    /// The description, with this object's own "instanceId".
    Map execute() const;

    /// A host's own idea of the device's id; not part of the description.
    std::optional<std::string> deviceID;

private:
    Map staticContext_;
    std::string instanceId_;
};

} // namespace zentavo
