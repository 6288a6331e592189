#include "ports/desktop/ConnectorCall.h"

#include <string_view>

#include "ports/desktop/PushRegistration.h"

namespace zentavo::desktop {

namespace {

constexpr std::string_view firstInterface = "org.unifiedpush.Connector1";

std::string textOf(GVariant* value) {
    gsize size = 0;
    const char* text = g_variant_get_string(value, &size);
    return {text, size};
}

std::string bytesOf(GVariant* value) {
    gsize size = 0;
    const auto* bytes = static_cast<const char*>(g_variant_get_fixed_array(value, &size, 1));
    return size > 0 ? std::string(bytes, size) : std::string();
}

/// The second version's one argument.
class Dictionary {
public:
    explicit Dictionary(const Variant& parameters)
        : entries_(Variant::take(g_variant_get_child_value(parameters.get(), 0))) {}

    std::string text(const char* name) { return read(name, G_VARIANT_TYPE_STRING, textOf); }
    std::string bytes(const char* name) { return read(name, G_VARIANT_TYPE_BYTESTRING, bytesOf); }
    const std::string& wrong() const { return wrong_; }

private:
    std::string read(const char* name, const GVariantType* type, std::string (*convert)(GVariant*)) {
        const auto value = Variant::take(g_variant_lookup_value(entries_.get(), name, nullptr));
        if (!value) {
            return "";
        }
        if (g_variant_is_of_type(value.get(), type) == FALSE) {
            wrong_ = std::string(name) + " is of the wrong kind";
            return "";
        }
        return convert(value.get());
    }

    const Variant entries_;
    std::string wrong_;
};

std::string child(const Variant& parameters, std::size_t index, std::string (*convert)(GVariant*) = textOf) {
    return convert(Variant::take(g_variant_get_child_value(parameters.get(), index)).get());
}

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
    ConnectorCall result;
    const std::string name = call.method();
    result.method = name == "Message"       ? Method::message
                    : name == "NewEndpoint" ? Method::newEndpoint
                                            : Method::unregistered;
    const Variant parameters = call.parameters();
    if (call.interface() == firstInterface) {
        result.version = PushRegistration::plainVersion;
        result.token = child(parameters, 0);
        if (result.method == Method::message) {
            result.message = child(parameters, 1, bytesOf);
            result.id = child(parameters, 2);
        } else if (result.method == Method::newEndpoint) {
            result.endpoint = child(parameters, 1);
        }
        return result;
    }
    Dictionary entries(parameters);
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
