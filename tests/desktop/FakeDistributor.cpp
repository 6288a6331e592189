#include "tests/desktop/FakeDistributor.h"

#include "tests/desktop/TakeName.h"

namespace zentavo::tests {

namespace {

using desktop::Variant;

constexpr const char* first = R"(<interface name="org.unifiedpush.Distributor1">
  <method name="Register">
    <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="s" direction="in"/>
    <arg type="s" direction="out"/><arg type="s" direction="out"/>
  </method>
  <method name="Unregister"><arg type="s" direction="in"/></method>
</interface>)";
constexpr const char* second = R"(<interface name="org.unifiedpush.Distributor2">
  <method name="Register"><arg type="a{sv}" direction="in"/><arg type="a{sv}" direction="out"/></method>
  <method name="Unregister"><arg type="a{sv}" direction="in"/><arg type="a{sv}" direction="out"/></method>
</interface>)";

/// Texts are read where the bus's thread looks: it keeps no copy.
const char* interfacesOf(int versions) {
    static const std::string one = std::string("<node>") + first + "</node>";
    static const std::string two = std::string("<node>") + second + "</node>";
    static const std::string both = std::string("<node>") + first + second + "</node>";
    return (versions == 1 ? one : versions == 2 ? two : both).c_str();
}

std::string entry(GVariant* entries, const char* name) {
    const char* text = "";
    g_variant_lookup(entries, name, "&s", &text);
    return text;
}

} // namespace

FakeDistributor::FakeDistributor(const std::string& address, const std::string& name, int versions) : bus_(address) {
    bus_.serve("/org/unifiedpush/Distributor", interfacesOf(versions),
               [this](const desktop::MethodCall& call) { answer(call); });
    takeName(bus_, "org.unifiedpush.Distributor." + name);
}

void FakeDistributor::answer(const desktop::MethodCall& call) {
    if (silent) {
        unanswered_.push_back(call);
    }
    const Variant parameters = call.parameters();
    Asked request;
    request.method = call.method();
    const bool registers = request.method == "Register";
    const char* why = failure;
    const char* result = why == nullptr ? "REGISTRATION_SUCCEEDED" : "REGISTRATION_FAILED";
    if (call.interface() == "org.unifiedpush.Distributor1") {
        request.version = 1;
        const char* texts[] = {"", "", ""};
        if (registers) {
            g_variant_get(parameters.get(), "(&s&s&s)", &texts[0], &texts[1], &texts[2]);
        } else {
            g_variant_get(parameters.get(), "(&s)", &texts[1]);
        }
        request.service = texts[0];
        request.token = texts[1];
        request.description = texts[2];
        asked.put(request);
        if (silent) {
            return;
        }
        return call.answer(registers ? Variant::share(g_variant_new("(ss)", result, why != nullptr ? why : ""))
                                     : Variant());
    }
    const Variant entries = Variant::take(g_variant_get_child_value(parameters.get(), 0));
    request.version = 2;
    request.service = entry(entries.get(), "service");
    request.token = entry(entries.get(), "token");
    request.description = entry(entries.get(), "description");
    request.vapid = entry(entries.get(), "vapid");
    asked.put(request);
    if (silent) {
        return;
    }
    GVariantDict answer;
    g_variant_dict_init(&answer, nullptr);
    if (registers) {
        g_variant_dict_insert(&answer, "success", "s", result);
    }
    if (registers && why != nullptr) {
        g_variant_dict_insert(&answer, "reason", "s", why);
    }
    call.answer(Variant::share(g_variant_new("(@a{sv})", g_variant_dict_end(&answer))));
}

std::string FakeDistributor::message(int version, const std::string& service, const std::string& token,
                                     const std::string& body, const std::string& id) {
    const Variant bytes = Variant::share(g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, body.data(), body.size(), 1));
    return call(version, service, "Message", g_variant_new("(s@ays)", token.c_str(), bytes.get(), id.c_str()),
                g_variant_new_parsed("({'token': <%s>, 'message': <%@ay>, 'id': <%s>},)", token.c_str(), bytes.get(),
                                     id.c_str()));
}

std::string FakeDistributor::newEndpoint(int version, const std::string& service, const std::string& token,
                                         const std::string& endpoint) {
    return call(version, service, "NewEndpoint", g_variant_new("(ss)", token.c_str(), endpoint.c_str()),
                g_variant_new_parsed("({'token': <%s>, 'endpoint': <%s>},)", token.c_str(), endpoint.c_str()));
}

std::string FakeDistributor::unregistered(int version, const std::string& service, const std::string& token) {
    return call(version, service, "Unregistered", g_variant_new("(s)", token.c_str()),
                g_variant_new_parsed("({'token': <%s>},)", token.c_str()));
}

std::string FakeDistributor::call(int version, const std::string& service, const char* method, GVariant* tuple,
                                  GVariant* dictionary) {
    const Variant one = Variant::share(tuple);
    const Variant two = Variant::share(dictionary);
    const auto answered = std::make_shared<Awaited<std::string>>();
    bus_.call({.destination = service,
               .path = "/org/unifiedpush/Connector",
               .interface = version == 1 ? "org.unifiedpush.Connector1" : "org.unifiedpush.Connector2",
               .method = method,
               .parameters = version == 1 ? one : two,
               .answerType = version == 1 ? "()" : "(a{sv})"},
              [answered](const Result<Variant>& answer) { answered->put(answer ? "" : answer.error().message); });
    return answered->next();
}

} // namespace zentavo::tests
