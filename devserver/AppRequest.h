#pragma once

#include "devserver/EndpointStore.h"
#include "devserver/GLibPointers.h"

namespace zentavo::devserver {

/// What an app asks of the distributor, in the form of either version of the interface. `arguments` has the types that the
/// interface promises; what it says is still to be judged. The error says what is wrong with it.
struct AppRequest {
    static Result<EndpointStore::Registration> toRegister(int version, GVariant* arguments);
    /// Only token and version count.
    static Result<EndpointStore::Registration> toUnregister(int version, GVariant* arguments);
};

} // namespace zentavo::devserver
