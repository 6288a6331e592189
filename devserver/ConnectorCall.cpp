#include "devserver/ConnectorCall.h"

#include <initializer_list>
#include <utility>
#include <vector>

namespace zentavo::devserver {

namespace {

using Argument = std::pair<const char*, GVariant*>;

/// Version 1 takes the values in their order, version 2 one dictionary of them.
ConnectorCall callTo(const EndpointStore::Registration& registration, const char* method,
                     std::initializer_list<Argument> arguments) {
    const bool first = registration.version == 1;
    ConnectorCall call{{registration.service, "/org/unifiedpush/Connector",
                        first ? "org.unifiedpush.Connector1" : "org.unifiedpush.Connector2", method},
                       nullptr};
    if (first) {
        std::vector<GVariant*> values;
        for (const Argument& argument : arguments) {
            values.push_back(argument.second);
        }
        call.arguments = g_variant_new_tuple(values.data(), values.size());
        return call;
    }
    GVariantBuilder dictionary;
    g_variant_builder_init(&dictionary, G_VARIANT_TYPE_VARDICT);
    for (const auto& [name, value] : arguments) {
        g_variant_builder_add(&dictionary, "{sv}", name, value);
    }
    call.arguments = g_variant_new("(a{sv})", &dictionary);
    return call;
}

GVariant* text(const std::string& value) { return g_variant_new_string(value.c_str()); }

} // namespace

ConnectorCall ConnectorCall::message(const Distributor::Message& message) {
    return callTo(
        message.to, "Message",
        {{"token", text(message.to.token)},
         {"message", g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, message.bytes.data(), message.bytes.size(), 1)},
         {"id", text(message.id)}});
}

ConnectorCall ConnectorCall::newEndpoint(const EndpointStore::Registration& registration, const std::string& url) {
    return callTo(registration, "NewEndpoint", {{"token", text(registration.token)}, {"endpoint", text(url)}});
}

ConnectorCall ConnectorCall::unregistered(const EndpointStore::Registration& registration) {
    return callTo(registration, "Unregistered", {{"token", text(registration.token)}});
}

} // namespace zentavo::devserver
