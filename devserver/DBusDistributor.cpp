#include "devserver/DBusDistributor.h"

#include <cstring>
#include <optional>
#include <stdexcept>
#include <utility>

#include "devserver/AppRequest.h"
#include "devserver/ConnectorCall.h"
#include "devserver/Text.h"

namespace zentavo::devserver {

namespace {

constexpr const char* objectPath = "/org/unifiedpush/Distributor";
constexpr const char* firstInterface = "org.unifiedpush.Distributor1";
constexpr const char* description = R"(<node>
  <interface name="org.unifiedpush.Distributor1">
    <method name="Register">
      <arg name="service" type="s" direction="in"/>
      <arg name="token" type="s" direction="in"/>
      <arg name="description" type="s" direction="in"/>
      <arg name="result" type="s" direction="out"/>
      <arg name="reason" type="s" direction="out"/>
    </method>
    <method name="Unregister"><arg name="token" type="s" direction="in"/></method>
  </interface>
  <interface name="org.unifiedpush.Distributor2">
    <method name="Register">
      <arg name="arguments" type="a{sv}" direction="in"/>
      <arg name="result" type="a{sv}" direction="out"/>
    </method>
    <method name="Unregister">
      <arg name="arguments" type="a{sv}" direction="in"/>
      <arg name="result" type="a{sv}" direction="out"/>
    </method>
  </interface>
</node>)";

void refuse(GDBusMethodInvocation* invocation, const std::string& why) {
    g_dbus_method_invocation_return_error_literal(invocation, G_DBUS_ERROR, G_DBUS_ERROR_INVALID_ARGS, why.c_str());
}

} // namespace

/// Messages on their way, and the thread that waits for all of them.
class DBusDistributor::Batch {
public:
    explicit Batch(std::size_t count) : left_(count), reasons_(count, "the server ends") {}

    void answered(std::size_t index, std::string reason) {
        MutexLock lock(mutex_);
        reasons_[index] = std::move(reason);
        --left_;
        lock.unlock();
        changed_.notify_one();
    }
    std::vector<std::string> wait() {
        MutexLock lock(mutex_);
        while (left_ > 0) {
            changed_.wait(lock);
        }
        return reasons_;
    }

private:
    Mutex mutex_;
    ConditionVariable changed_;
    std::size_t left_ ZENTAVO_GUARDED_BY(mutex_);
    std::vector<std::string> reasons_ ZENTAVO_GUARDED_BY(mutex_);
};

DBusDistributor::DBusDistributor(const Settings& settings, std::shared_ptr<EndpointStore> store)
    : settings_(settings), store_(std::move(store)), interfaces_(g_dbus_node_info_new_for_xml(description, nullptr)) {}

DBusDistributor::~DBusDistributor() { bus_.stop(); }

Result<void> DBusDistributor::open() {
    const std::string address = settings_.bus.empty() ? SessionBus::address() : settings_.bus;
    if (address.empty()) {
        return Error{"there is no session bus"};
    }
    if (g_dbus_is_name(settings_.name.c_str()) == FALSE || g_dbus_is_address(address.c_str()) == FALSE) {
        return Error{inQuotes(settings_.name) + " or " + inQuotes(address) + " is none that a bus can have"};
    }
    return bus_.start(address, settings_.name, settings_.patience,
                      [this](GDBusConnection* connection) { return publish(connection); });
}

Result<void> DBusDistributor::publish(GDBusConnection* connection) {
    static constexpr GDBusInterfaceVTable handlers{&DBusDistributor::called, nullptr, nullptr, {}};
    for (GDBusInterfaceInfo** each = interfaces_->interfaces; *each != nullptr; ++each) {
        Failure failure;
        if (g_dbus_connection_register_object(connection, objectPath, *each, &handlers, this, nullptr, failure.out()) ==
            0) {
            return Error{failure.get()->message};
        }
    }
    return {};
}

void DBusDistributor::called(GDBusConnection*, const char*, const char*, const char* interface, const char* method,
                             GVariant* arguments, GDBusMethodInvocation* invocation, void* self) {
    auto& distributor = *static_cast<DBusDistributor*>(self);
    const int version = std::strcmp(interface, firstInterface) == 0 ? 1 : 2;
    const bool registers = std::strcmp(method, "Register") == 0;
    const auto request =
        registers ? AppRequest::toRegister(version, arguments) : AppRequest::toUnregister(version, arguments);
    if (!request) {
        refuse(invocation, request.error().message);
    } else if (registers) {
        distributor.registerApp(*request, invocation);
    } else {
        distributor.unregisterApp(*request, invocation);
    }
}

void DBusDistributor::registerApp(const EndpointStore::Registration& wanted, GDBusMethodInvocation* invocation) {
    Result<EndpointStore::Registration> kept = Error{};
    try {
        kept = store_->add(wanted);
    } catch (const std::runtime_error& error) {
        kept = Error{error.what()};
    }
    const char* const result = kept ? "REGISTRATION_SUCCEEDED" : "REGISTRATION_FAILED";
    const std::string reason = kept ? "" : kept.error().message;
    if (wanted.version == 1) {
        g_dbus_method_invocation_return_value(invocation, g_variant_new("(ss)", result, reason.c_str()));
    } else {
        GVariantBuilder answer;
        g_variant_builder_init(&answer, G_VARIANT_TYPE_VARDICT);
        g_variant_builder_add(&answer, "{sv}", "success", g_variant_new_string(result));
        if (!kept) {
            // Of the few words that there are for reasons, all others promise that the user or time can help.
            g_variant_builder_add(&answer, "{sv}", "reason", g_variant_new_string("INTERNAL_ERROR"));
        }
        g_dbus_method_invocation_return_value(invocation, g_variant_new("(a{sv})", &answer));
    }
    if (kept) {
        tellEndpoint(*kept);
    }
}

void DBusDistributor::unregisterApp(const EndpointStore::Registration& wanted, GDBusMethodInvocation* invocation) {
    std::optional<EndpointStore::Registration> known;
    try {
        known = store_->find(wanted.token);
        store_->remove(wanted.token);
    } catch (const std::runtime_error& error) {
        g_dbus_method_invocation_return_error_literal(invocation, G_DBUS_ERROR, G_DBUS_ERROR_FAILED, error.what());
        return;
    }
    // A token that nobody has is as good as unregistered.
    g_dbus_method_invocation_return_value(invocation,
                                          wanted.version == 1 ? nullptr : g_variant_new_parsed("(@a{sv} {},)"));
    if (known) {
        tellUnregistered(*known);
    }
}

std::vector<std::string> DBusDistributor::deliver(const std::vector<Message>& messages) {
    const auto batch = std::make_shared<Batch>(messages.size());
    const bool taken = bus_.async([this, batch, messages] {
        for (std::size_t i = 0; i < messages.size(); ++i) {
            if (bus_.pending() >= maximumCalls) {
                batch->answered(i, "too many messages are under way");
                continue;
            }
            const ConnectorCall call = ConnectorCall::message(messages[i]);
            bus_.call(call.target, call.arguments, settings_.patience, [this, batch, i](const GError* error) {
                batch->answered(i, error != nullptr ? reasonOf(*error) : "");
            });
        }
    });
    return taken ? batch->wait() : std::vector<std::string>(messages.size(), "the server ends");
}

void DBusDistributor::tellEndpoint(const EndpointStore::Registration& registration) {
    bus_.async([this, registration] {
        if (bus_.pending() < maximumCalls) {
            const auto call = ConnectorCall::newEndpoint(registration, settings_.endpoints + registration.id);
            bus_.call(call.target, call.arguments, settings_.patience, nullptr);
        }
    });
}

void DBusDistributor::tellUnregistered(const EndpointStore::Registration& registration) {
    bus_.async([this, registration] {
        if (bus_.pending() < maximumCalls) {
            const auto call = ConnectorCall::unregistered(registration);
            bus_.call(call.target, call.arguments, settings_.patience, nullptr);
        }
    });
}

void DBusDistributor::stop() { bus_.stop(); }

std::string DBusDistributor::reasonOf(const GError& error) const {
    if (g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_TIMED_OUT) != FALSE) {
        return "the app did not answer within " + std::to_string(settings_.patience.count()) + " ms";
    }
    if (g_error_matches(&error, G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE) {
        return "the server ends";
    }
    if (g_error_matches(&error, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) != FALSE) {
        return "the app does not run, and the bus knows no way to start it";
    }
    return "the app refused: " + utf8Text(error.message);
}

Result<std::unique_ptr<Distributor>> Distributor::start(const Settings& settings,
                                                        std::shared_ptr<EndpointStore> store) {
    auto distributor = std::make_unique<DBusDistributor>(settings, std::move(store));
    if (auto opened = distributor->open(); !opened) {
        return opened.error();
    }
    return std::unique_ptr<Distributor>(std::move(distributor));
}

} // namespace zentavo::devserver
