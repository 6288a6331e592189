#include "tests/desktop/FakeNotificationServer.h"

#include "tests/desktop/TakeName.h"

namespace zentavo::tests {

using desktop::MethodCall;
using desktop::Variant;

namespace {

constexpr const char* serverName = "org.freedesktop.Notifications";
constexpr const char* serverPath = "/org/freedesktop/Notifications";
constexpr const char* xml = R"(<node><interface name="org.freedesktop.Notifications">
  <method name="GetCapabilities"><arg type="as" direction="out"/></method>
  <method name="Notify">
    <arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="s" direction="in"/>
    <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="as" direction="in"/>
    <arg type="a{sv}" direction="in"/><arg type="i" direction="in"/><arg type="u" direction="out"/>
  </method>
  <method name="CloseNotification"><arg type="u" direction="in"/></method>
</interface></node>)";

FakeNotificationServer::Shown read(const Variant& parameters) {
    const char* app = nullptr;
    const char* icon = nullptr;
    const char* summary = nullptr;
    const char* body = nullptr;
    GVariantIter* actions = nullptr;
    GVariantIter* hints = nullptr;
    FakeNotificationServer::Shown shown;
    g_variant_get(parameters.get(), "(&su&s&s&sasa{sv}i)", &app, &shown.replaces, &icon, &summary, &body, &actions,
                  &hints, &shown.timeout);
    shown.app = app;
    shown.icon = icon;
    shown.summary = summary;
    shown.body = body;
    const char* key = nullptr;
    const char* label = nullptr;
    while (g_variant_iter_next(actions, "&s", &key) != FALSE && g_variant_iter_next(actions, "&s", &label) != FALSE) {
        shown.actions.emplace_back(key, label);
    }
    GVariant* value = nullptr;
    while (g_variant_iter_next(hints, "{&sv}", &key, &value) != FALSE) {
        char* text = g_variant_print(value, FALSE);
        shown.hints[key] = text;
        g_free(text);
        g_variant_unref(value);
    }
    g_variant_iter_free(actions);
    g_variant_iter_free(hints);
    return shown;
}

} // namespace

std::string FakeNotificationServer::Shown::keyOf(const std::string& label) const {
    for (const auto& [key, its] : actions) {
        if (its == label) {
            return key;
        }
    }
    return "no button " + label;
}

FakeNotificationServer::FakeNotificationServer(const std::string& address, std::vector<std::string> capabilities)
    : capabilities_(std::move(capabilities)), bus_(address) {
    bus_.serve(serverPath, xml, [this](const MethodCall& call) { answer(call); });
    takeName(bus_, serverName);
}

void FakeNotificationServer::answer(const MethodCall& call) {
    const std::string method = call.method();
    if (method == "Notify") {
        return notify(call);
    }
    MutexLock lock(mutex_);
    if (method == "GetCapabilities") {
        ++queries_;
        lock.unlock();
        GVariantBuilder names;
        g_variant_builder_init(&names, G_VARIANT_TYPE("as"));
        for (const std::string& name : capabilities_) {
            g_variant_builder_add(&names, "s", name.c_str());
        }
        return call.answer(Variant::share(g_variant_new("(as)", &names)));
    }
    std::uint32_t id = 0;
    g_variant_get(call.parameters().get(), "(u)", &id);
    closed_.push_back(id);
    lock.unlock();
    call.answer();
}

void FakeNotificationServer::notify(const MethodCall& call) {
    Shown shown = read(call.parameters());
    MutexLock lock(mutex_);
    if (refusal_) {
        return call.refuse(*refusal_);
    }
    shown.id = shown.replaces != 0 ? shown.replaces : 1000 + static_cast<std::uint32_t>(shown_.size());
    const std::uint32_t id = shown.id;
    shown_.push_back(std::move(shown));
    if (holding_) {
        held_.emplace_back(call, id);
        return;
    }
    lock.unlock();
    call.answer(Variant::share(g_variant_new("(u)", id)));
}

void FakeNotificationServer::press(std::uint32_t id, const std::string& key) {
    emit("ActionInvoked", Variant::share(g_variant_new("(us)", id, key.c_str())));
    close(id, 2);
}

void FakeNotificationServer::close(std::uint32_t id, std::uint32_t reason) {
    emit("NotificationClosed", Variant::share(g_variant_new("(uu)", id, reason)));
}

void FakeNotificationServer::emit(const std::string& signal, Variant parameters) {
    bus_.emit(serverPath, serverName, signal, std::move(parameters));
}

void FakeNotificationServer::refuse(std::optional<std::string> reason) {
    MutexLock lock(mutex_);
    refusal_ = std::move(reason);
}

void FakeNotificationServer::hold() {
    MutexLock lock(mutex_);
    holding_ = true;
}

void FakeNotificationServer::release() {
    MutexLock lock(mutex_);
    holding_ = false;
    const auto held = std::exchange(held_, {});
    lock.unlock();
    for (const auto& [call, id] : held) {
        call.answer(Variant::share(g_variant_new("(u)", id)));
    }
}

std::vector<FakeNotificationServer::Shown> FakeNotificationServer::shown() const {
    MutexLock lock(mutex_);
    return shown_;
}

std::vector<std::uint32_t> FakeNotificationServer::closed() const {
    MutexLock lock(mutex_);
    return closed_;
}

unsigned FakeNotificationServer::capabilityQueries() const {
    MutexLock lock(mutex_);
    return queries_;
}

} // namespace zentavo::tests
