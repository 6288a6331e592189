#pragma once

#include "devserver/Distributor.h"
#include "devserver/SessionBus.h"

namespace zentavo::devserver {

/// One call to an app that takes pushes, in the version by which it registered. `arguments` is floating, for
/// `SessionBus::call`.
struct ConnectorCall {
    SessionBus::Target target;
    GVariant* arguments;

    static ConnectorCall message(const Distributor::Message& message);
    static ConnectorCall newEndpoint(const EndpointStore::Registration& registration, const std::string& url);
    static ConnectorCall unregistered(const EndpointStore::Registration& registration);
};

} // namespace zentavo::devserver
