#include "ports/desktop/ConnectorCall.h"

#include <string_view>

#include "ports/desktop/MessageBody.h"
#include "ports/desktop/PushRegistration.h"

namespace zentavo::desktop {

namespace {

constexpr std::string_view firstInterface = "org.unifiedpush.Connector1";

} // namespace

const char* const ConnectorCall::xml = R"(<node>
  <interface name="org.unifiedpush.Connector1">
    <method name="Message">
      <arg name="token" type="s" direction="in"/>
      <arg name="message" type="ay" direction="in"/>
      <arg name="id" type="s" direction="in"/>
    </method>
    <method name="NewEndpoint">
      <arg name="token" type="s" direction="in"/>
      <arg name="endpoint" type="s" direction="in"/>
    </method>
    <method name="Unregistered"><arg name="token" type="s" direction="in"/></method>
  </interface>
  <interface name="org.unifiedpush.Connector2">
    <method name="Message">
      <arg name="arguments" type="a{sv}" direction="in"/><arg name="result" type="a{sv}" direction="out"/>
    </method>
    <method name="NewEndpoint">
      <arg name="arguments" type="a{sv}" direction="in"/><arg name="result" type="a{sv}" direction="out"/>
    </method>
    <method name="Unregistered">
      <arg name="arguments" type="a{sv}" direction="in"/><arg name="result" type="a{sv}" direction="out"/>
    </method>
  </interface>
</node>)";

Result<ConnectorCall> ConnectorCall::read(const MethodCall& call) {
    return read(call.interface(), call.method(), call.parameters());
}

Result<ConnectorCall> ConnectorCall::read(std::string_view interface, std::string_view name, const Variant& arguments) {
    ConnectorCall result;
    result.method = name == "Message"       ? Method::message
                    : name == "NewEndpoint" ? Method::newEndpoint
                                            : Method::unregistered;
    if (interface == firstInterface) {
        result.version = PushRegistration::plainVersion;
        result.token = body::text(arguments);
        if (result.method == Method::message) {
            result.message = body::bytes(arguments, 1);
            result.id = body::text(arguments, 2);
        } else if (result.method == Method::newEndpoint) {
            result.endpoint = body::text(arguments, 1);
        }
        return result;
    }
    body::Dictionary entries(arguments);
    result.version = PushRegistration::encryptedVersion;
    result.token = entries.text("token");
    result.message = entries.bytes("message");
    result.id = entries.text("id");
    result.endpoint = entries.text("endpoint");
    if (!entries.wrong().empty()) {
        return Error{entries.wrong()};
    }
    return result;
}

void ConnectorCall::answer(const MethodCall& call) {
    const bool first = call.interface() == firstInterface;
    call.answer(first ? Variant() : Variant::share(g_variant_new("(a{sv})", nullptr)));
}

} // namespace zentavo::desktop
