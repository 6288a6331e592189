#include "ports/desktop/SessionBus.h"

#include <map>
#include <memory>
#include <utility>
#include <vector>

#include <gio/gio.h>

#include "ports/desktop/LoopThread.h"

namespace zentavo::desktop {

namespace {

/// A handler on its way through a C interface, which destroys it by `drop`.
template <class Handler>
void drop(gpointer data) {
    delete static_cast<Handler*>(data);
}

bool is(SessionBus::Expected expected, const GError* error) {
    const auto says = [error](GDBusError code) { return g_error_matches(error, G_DBUS_ERROR, code) != FALSE; };
    switch (expected) {
    case SessionBus::Expected::unknownMethod: // libraries do not agree on its name
        return says(G_DBUS_ERROR_UNKNOWN_METHOD) || says(G_DBUS_ERROR_UNKNOWN_INTERFACE);
    case SessionBus::Expected::refusedArguments:
        return says(G_DBUS_ERROR_INVALID_ARGS);
    case SessionBus::Expected::nothing:
        break;
    }
    return false;
}

Error taken(GError* error) {
    // What the other side calls its error stands in front of the text; a reader has no use for that.
    g_dbus_error_strip_remote_error(error);
    // Copied by the library, which wrote it on a thread of its own: sanitizers do not see how it was handed over.
    char* message = g_strdup(error->message);
    g_error_free(error);
    Error result{message};
    g_free(message);
    return result;
}

const char* orNull(const std::string& text) { return text.empty() ? nullptr : text.c_str(); }

} // namespace

/// The connection, and what is to be undone with it. All of it belongs to the thread.
class SessionBus::Core final : public LoopThread {
public:
    /// A handler that is due once, or never when the bus goes before.
    template <class Handler>
    struct Posted {
        Core& core;
        Handler handler;
        Expected expected = Expected::nothing; ///< of a call
    };

    explicit Core(std::string address) : LoopThread("zentavo-bus"), address_(std::move(address)) {}

    /// Null without a bus; then `whyNot` says why.
    GDBusConnection* connection() {
        if (connection_ == nullptr && whyNot_.message.empty()) {
            connect();
        }
        return connection_;
    }
    const Error& whyNot() const { return whyNot_; }
    void keep(Block undo) { undo_.push_back(std::move(undo)); }
    void owned(const std::string& name, guint id) {
        owned_[name] = id;
        keep([this, name] { disown(name); });
    }
    void disown(const std::string& name) {
        if (const auto found = owned_.extract(name)) {
            g_bus_unown_name(found.mapped());
        }
    }

    void serve(GDBusConnection* connection, const std::string& path, const char* interfaces,
               const MethodHandler& handler) {
        // The text is ours: one that cannot be read is a mistake that the first test sees.
        GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(interfaces, nullptr);
        g_assert(node != nullptr);
        static constexpr GDBusInterfaceVTable methods{
            [](GDBusConnection*, const char*, const char*, const char*, const char*, GVariant*,
               GDBusMethodInvocation* invocation,
               gpointer data) { (*static_cast<MethodHandler*>(data))(MethodCall(invocation)); },
            nullptr,
            nullptr,
            {}};
        for (GDBusInterfaceInfo** each = node->interfaces; *each != nullptr; ++each) {
            const guint id = g_dbus_connection_register_object(
                connection, path.c_str(), *each, &methods, new MethodHandler(handler), drop<MethodHandler>, nullptr);
            keep([connection, id] { g_dbus_connection_unregister_object(connection, id); });
        }
        g_dbus_node_info_unref(node);
    }

private:
    void leave() override {
        for (const Block& undo : std::exchange(undo_, {})) {
            undo();
        }
        if (connection_ != nullptr) {
            g_dbus_connection_flush_sync(connection_, nullptr, nullptr);
            g_dbus_connection_close_sync(connection_, nullptr, nullptr);
            g_clear_object(&connection_);
        }
    }

    void connect() {
        GError* error = nullptr;
        std::string address = address_;
        if (address.empty()) {
            char* found = g_dbus_address_get_for_bus_sync(G_BUS_TYPE_SESSION, nullptr, &error);
            address = found != nullptr ? found : "";
            g_free(found);
        }
        if (error == nullptr) {
            // One of our own: the library's shared one ends the process with the bus.
            connection_ = g_dbus_connection_new_for_address_sync(
                address.c_str(),
                static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                                  G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
                nullptr, nullptr, &error);
        }
        if (connection_ == nullptr) {
            whyNot_ = {"there is no message bus: " + taken(error).message};
        }
    }

    const std::string address_;
    GDBusConnection* connection_ = nullptr;
    Error whyNot_;
    std::vector<Block> undo_;
    std::map<std::string, guint> owned_;
};

SessionBus::SessionBus(std::string address) : core_(std::make_shared<Core>(std::move(address))) {}

SessionBus::~SessionBus() { core_->stop(); }

void SessionBus::run(Block block) { core_->run(std::move(block)); }

void SessionBus::after(std::chrono::milliseconds delay, Block block) { core_->run(std::move(block), delay); }

void SessionBus::call(Call call, Answer answer) {
    run([core = core_.get(), call = std::move(call), answer = std::move(answer)]() mutable {
        GDBusConnection* connection = core->connection();
        if (connection == nullptr) {
            if (answer) {
                answer(core->whyNot());
            }
            return;
        }
        GVariantType* type = g_variant_type_new(call.answerType);
        g_dbus_connection_call(
            connection, call.destination.c_str(), call.path.c_str(), call.interface.c_str(), call.method.c_str(),
            call.parameters.get(), type, call.mayStart ? G_DBUS_CALL_FLAGS_NONE : G_DBUS_CALL_FLAGS_NO_AUTO_START,
            static_cast<int>(call.timeout.count()), nullptr,
            [](GObject* source, GAsyncResult* result, gpointer data) {
                const std::unique_ptr<Core::Posted<Answer>> waiting(static_cast<Core::Posted<Answer>*>(data));
                GError* error = nullptr;
                GVariant* values = g_dbus_connection_call_finish(G_DBUS_CONNECTION(source), result, &error);
                const bool wasExpected = error != nullptr && is(waiting->expected, error);
                const auto outcome = values != nullptr ? Result<Variant>(Variant::take(values)) : taken(error);
                if (waiting->handler && !waiting->core.stopping()) {
                    waiting->handler(wasExpected ? Result<Variant>(Variant()) : outcome);
                }
            },
            new Core::Posted<Answer>{*core, std::move(answer), call.expected});
        g_variant_type_free(type);
    });
}

void SessionBus::emit(std::string path, std::string interface, std::string signal, Variant parameters) {
    run([core = core_.get(), path = std::move(path), interface = std::move(interface), signal = std::move(signal),
         parameters = std::move(parameters)] {
        if (GDBusConnection* connection = core->connection()) {
            g_dbus_connection_emit_signal(connection, nullptr, path.c_str(), interface.c_str(), signal.c_str(),
                                          parameters.get(), nullptr);
        }
    });
}

void SessionBus::listen(std::string sender, std::string path, std::string interface, std::string signal,
                        SignalHandler handler) {
    run([core = core_.get(), sender = std::move(sender), path = std::move(path), interface = std::move(interface),
         signal = std::move(signal), handler = std::move(handler)]() mutable {
        GDBusConnection* connection = core->connection();
        if (connection == nullptr) {
            return;
        }
        const guint id = g_dbus_connection_signal_subscribe(
            connection, orNull(sender), interface.c_str(), signal.c_str(), orNull(path), nullptr,
            G_DBUS_SIGNAL_FLAGS_NONE,
            [](GDBusConnection*, const char* from, const char*, const char*, const char*, GVariant* parameters,
               gpointer data) {
                (*static_cast<SignalHandler*>(data))(from != nullptr ? from : "", Variant::share(parameters));
            },
            new SignalHandler(std::move(handler)), drop<SignalHandler>);
        core->keep([connection, id] { g_dbus_connection_signal_unsubscribe(connection, id); });
    });
}

void SessionBus::watch(std::string name, PresenceHandler handler) {
    watchOwner(std::move(name), [handler = std::move(handler)](const std::string& owner) { handler(!owner.empty()); });
}

void SessionBus::watchOwner(std::string name, OwnerHandler handler) {
    run([core = core_.get(), name = std::move(name), handler = std::move(handler)]() mutable {
        GDBusConnection* connection = core->connection();
        if (connection == nullptr) {
            return handler("");
        }
        const guint id = g_bus_watch_name_on_connection(
            connection, name.c_str(), G_BUS_NAME_WATCHER_FLAGS_NONE,
            [](GDBusConnection*, const char*, const char* owner, gpointer data) {
                (*static_cast<OwnerHandler*>(data))(owner);
            },
            [](GDBusConnection*, const char*, gpointer data) { (*static_cast<OwnerHandler*>(data))(""); },
            new OwnerHandler(std::move(handler)), drop<OwnerHandler>);
        core->keep([id] { g_bus_unwatch_name(id); });
    });
}

void SessionBus::own(std::string name, PresenceHandler handler) {
    run([core = core_.get(), name = std::move(name), handler = std::move(handler)]() mutable {
        GDBusConnection* connection = core->connection();
        if (!handler) {
            handler = [](bool) {};
        }
        if (connection == nullptr) {
            return handler(false);
        }
        const guint id = g_bus_own_name_on_connection(
            connection, name.c_str(), G_BUS_NAME_OWNER_FLAGS_NONE,
            [](GDBusConnection*, const char*, gpointer data) { (*static_cast<PresenceHandler*>(data))(true); },
            [](GDBusConnection*, const char*, gpointer data) { (*static_cast<PresenceHandler*>(data))(false); },
            new PresenceHandler(std::move(handler)), drop<PresenceHandler>);
        core->owned(name, id);
    });
}

void SessionBus::disown(std::string name, Block left) {
    run([core = core_.get(), name = std::move(name)] { core->disown(name); });
    // Any question will do: the bus answers after what it has sent us already.
    call({.destination = "org.freedesktop.DBus",
          .path = "/org/freedesktop/DBus",
          .interface = "org.freedesktop.DBus",
          .method = "GetId",
          .parameters = {},
          .answerType = "(s)"},
         [left = std::move(left)](const Result<Variant>&) { left(); });
}

void SessionBus::serve(std::string path, const char* interfaces, MethodHandler handler) {
    run([core = core_.get(), path = std::move(path), interfaces, handler = std::move(handler)] {
        if (GDBusConnection* connection = core->connection()) {
            core->serve(connection, path, interfaces, handler);
        }
    });
}

void SessionBus::serveOn(GDBusConnection* connection, std::string path, const char* interfaces, MethodHandler handler) {
    const std::shared_ptr<GDBusConnection> kept(static_cast<GDBusConnection*>(g_object_ref(connection)),
                                                g_object_unref);
    run([core = core_.get(), kept, path = std::move(path), interfaces, handler = std::move(handler)] {
        core->serve(kept.get(), path, interfaces, handler);
        core->keep([kept] {});
    });
}

} // namespace zentavo::desktop
