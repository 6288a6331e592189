#include "tests/devserver/FakeConnector.h"

#include <cstring>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

namespace zentavo::devserver {

namespace {

constexpr std::chrono::seconds patience{10};

constexpr const char* description = R"(<node>
  <interface name="org.unifiedpush.Connector1">
    <method name="Message">
      <arg type="s" direction="in"/><arg type="ay" direction="in"/><arg type="s" direction="in"/>
    </method>
    <method name="NewEndpoint"><arg type="s" direction="in"/><arg type="s" direction="in"/></method>
    <method name="Unregistered"><arg type="s" direction="in"/></method>
  </interface>
  <interface name="org.unifiedpush.Connector2">
    <method name="Message"><arg type="a{sv}" direction="in"/><arg type="a{sv}" direction="out"/></method>
    <method name="NewEndpoint"><arg type="a{sv}" direction="in"/><arg type="a{sv}" direction="out"/></method>
    <method name="Unregistered"><arg type="a{sv}" direction="in"/><arg type="a{sv}" direction="out"/></method>
  </interface>
</node>)";

/// Of text or bytes; empty where there is none.
std::string content(const GLibPointer<GVariant>& value) {
    if (!value) {
        return {};
    }
    if (g_variant_is_of_type(value.get(), G_VARIANT_TYPE_STRING)) {
        return g_variant_get_string(value.get(), nullptr);
    }
    gsize size = 0;
    const void* bytes = g_variant_get_fixed_array(value.get(), &size, 1);
    return {static_cast<const char*>(bytes), size};
}

} // namespace

PrivateBus::PrivateBus() {
    std::string pattern = ::testing::TempDir() + "zentavo-bus-XXXXXX";
    folder_ = mkdtemp(pattern.data());
    std::ofstream(folder_ + "/bus.conf")
        << "<busconfig><type>session</type><listen>unix:path=" << folder_ << "/socket</listen><servicedir>" << folder_
        << "</servicedir><auth>EXTERNAL</auth><policy context=\"default\">"
           "<allow send_destination=\"*\"/><allow receive_sender=\"*\"/><allow own=\"*\"/>"
           "</policy></busconfig>";
    // A test that crashes leaves no bus behind either.
    daemon_ = std::make_unique<e2e::Process>(
        std::vector<std::string>{"/usr/bin/setpriv", "--pdeathsig", "KILL", "/usr/bin/dbus-daemon", "--nofork",
                                 "--nopidfile", "--print-address", "--config-file=" + folder_ + "/bus.conf"});
    address_ = daemon_->readLine(patience);
    EXPECT_TRUE(address_.starts_with("unix:path=")) << address_;
}

PrivateBus::~PrivateBus() {
    daemon_.reset();
    std::filesystem::remove_all(folder_);
}

FakeConnector::FakeConnector(const std::string& address, std::string name)
    : name_(std::move(name)), interfaces_(g_dbus_node_info_new_for_xml(description, nullptr)) {
    connection_.reset(g_dbus_connection_new_for_address_sync(
        address.c_str(),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr));
    const auto started = bus_.start(address, name_, patience, [this](GDBusConnection* connection) -> Result<void> {
        static constexpr GDBusInterfaceVTable handlers{&FakeConnector::called, nullptr, nullptr, {}};
        for (GDBusInterfaceInfo** each = interfaces_->interfaces; *each != nullptr; ++each) {
            g_dbus_connection_register_object(connection, "/org/unifiedpush/Connector", *each, &handlers, this, nullptr,
                                              nullptr);
        }
        return {};
    });
    EXPECT_TRUE(started && connection_);
}

void FakeConnector::called(GDBusConnection*, const char*, const char*, const char* interface, const char* method,
                           GVariant* arguments, GDBusMethodInvocation* invocation, void* self) {
    auto& connector = *static_cast<FakeConnector*>(self);
    Call call;
    call.version = std::strcmp(interface, "org.unifiedpush.Connector1") == 0 ? 1 : 2;
    call.method = method;
    const GLibPointer<GVariant> first(g_variant_get_child_value(arguments, 0));
    const auto take = [&](std::size_t index, const char* key) {
        if (call.version == 2) {
            return content(GLibPointer<GVariant>(g_variant_lookup_value(first.get(), key, nullptr)));
        }
        const bool there = index < g_variant_n_children(arguments);
        return content(GLibPointer<GVariant>(there ? g_variant_get_child_value(arguments, index) : nullptr));
    };
    call.token = take(0, "token");
    call.value = take(1, call.method == "Message" ? "message" : "endpoint");
    call.id = take(2, "id");
    if (connector.answers) {
        g_dbus_method_invocation_return_value(invocation,
                                              call.version == 1 ? nullptr : g_variant_new_parsed("(@a{sv} {},)"));
    } else {
        g_object_unref(invocation);
    }
    MutexLock lock(connector.mutex_);
    connector.calls_.push_back(std::move(call));
    lock.unlock();
    connector.came_.notify_one();
}

FakeConnector::Call FakeConnector::next() {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    MutexLock lock(mutex_);
    while (calls_.empty()) {
        if (came_.wait_until(lock, deadline) == std::cv_status::timeout) {
            return {};
        }
    }
    Call call = std::move(calls_.front());
    calls_.pop_front();
    return call;
}

std::string FakeConnector::ask(int version, const char* method, const std::string& arguments) const {
    Failure failure;
    const std::string interface = "org.unifiedpush.Distributor" + std::to_string(version);
    const GLibPointer<GVariant> answer(g_dbus_connection_call_sync(
        connection_.get(), distributor, "/org/unifiedpush/Distributor", interface.c_str(), method,
        g_variant_new_parsed(arguments.c_str()), nullptr, G_DBUS_CALL_FLAGS_NONE, 10'000, nullptr, failure.out()));
    return answer ? GLibPointer<char>(g_variant_print(answer.get(), FALSE)).get()
                  : GLibPointer<char>(g_dbus_error_get_remote_error(failure.get())).get();
}

bool FakeConnector::registers(int version, const std::string& token) const {
    const std::string arguments = version == 1 ? "('" + name_ + "', '" + token + "', 'A test')"
                                               : "({'service': <'" + name_ + "'>, 'token': <'" + token + "'>},)";
    return ask(version, "Register", arguments).find("'REGISTRATION_SUCCEEDED'") != std::string::npos;
}

} // namespace zentavo::devserver
