#include "ports/desktop/SessionBus.h"

#include <atomic>
#include <csignal>
#include <map>
#include <memory>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include <gio/gio.h>
#include <pthread.h>

#include "zentavo/foundation/Mutex.h"

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

/// Lives until its thread has ended. What is not guarded belongs to the thread.
class SessionBus::Core : public std::enable_shared_from_this<Core> {
public:
    /// A handler that is due once, or never when the bus goes before.
    template <class Handler>
    struct Posted {
        Core& core;
        Handler handler;
        Expected expected = Expected::nothing; ///< of a call
    };

    explicit Core(std::string address)
        : address_(std::move(address)), context_(g_main_context_new()), loop_(g_main_loop_new(context_, FALSE)),
          pump_(g_source_new(pumpFunctions(), sizeof(Pump))) {
        reinterpret_cast<Pump*>(pump_)->core = this;
        g_source_attach(pump_, context_);
    }
    ~Core() {
        g_source_destroy(pump_);
        g_source_unref(pump_);
        g_main_loop_unref(loop_);
        g_main_context_unref(context_);
    }

    void run(Block block) {
        MutexLock lock(mutex_);
        ready_.push_back(std::move(block));
        wake();
    }
    void run(Block block, std::chrono::milliseconds delay) {
        const gint64 due = g_get_monotonic_time() + std::chrono::microseconds(delay).count();
        MutexLock lock(mutex_);
        timers_.emplace(due, std::move(block));
        wake();
    }

    void stop() {
        stopping_ = true;
        MutexLock lock(mutex_);
        std::thread thread = std::move(thread_);
        started_ = true;
        wake();
        lock.unlock();
        if (!thread.joinable()) {
            return;
        }
        if (thread.get_id() == std::this_thread::get_id()) {
            thread.detach();
        } else {
            thread.join();
        }
    }

    /// Null without a bus; then `whyNot` says why.
    GDBusConnection* connection() {
        if (connection_ == nullptr && whyNot_.message.empty()) {
            connect();
        }
        return connection_;
    }
    const Error& whyNot() const { return whyNot_; }
    bool stopping() const noexcept { return stopping_; }
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
    /// Hands blocks over under a lock of ours, not the library's: sanitizers see into ours alone.
    struct Pump {
        GSource base;
        Core* core;
    };
    static GSourceFuncs* pumpFunctions() {
        static GSourceFuncs functions{nullptr,
                                      nullptr,
                                      [](GSource* source, GSourceFunc, gpointer) -> gboolean {
                                          reinterpret_cast<Pump*>(source)->core->runWhatIsDue();
                                          return G_SOURCE_CONTINUE;
                                      },
                                      nullptr,
                                      nullptr,
                                      nullptr};
        return &functions;
    }

    void wake() ZENTAVO_REQUIRES(mutex_) {
        g_source_set_ready_time(pump_, 0);
        if (!started_) {
            start();
        }
    }

    void runWhatIsDue() {
        MutexLock lock(mutex_);
        const gint64 now = g_get_monotonic_time();
        const auto waiting = timers_.upper_bound(now);
        for (auto timer = timers_.begin(); timer != waiting; ++timer) {
            ready_.push_back(std::move(timer->second));
        }
        timers_.erase(timers_.begin(), waiting);
        auto blocks = std::exchange(ready_, {});
        g_source_set_ready_time(pump_, timers_.empty() ? -1 : timers_.begin()->first);
        lock.unlock();
        for (const Block& block : blocks) {
            if (!stopping_) {
                block();
            }
        }
        // Here, since a loop that has not begun forgets that it was asked to end.
        if (stopping_) {
            g_main_loop_quit(loop_);
        }
    }

    void start() ZENTAVO_REQUIRES(mutex_) {
        started_ = true;
        // The host's signals are for the host's threads.
        sigset_t all;
        sigset_t before;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before);
        try {
            thread_ = std::thread([self = shared_from_this()] { self->work(); });
            pthread_setname_np(thread_.native_handle(), "zentavo-bus");
        } catch (const std::system_error&) {
            // Whoever asks for something next tries again; what was asked for waits.
            started_ = false;
        }
        pthread_sigmask(SIG_SETMASK, &before, nullptr);
    }

    void work() {
        g_main_context_push_thread_default(context_);
        g_main_loop_run(loop_);
        for (const Block& undo : std::exchange(undo_, {})) {
            undo();
        }
        if (connection_ != nullptr) {
            g_dbus_connection_flush_sync(connection_, nullptr, nullptr);
            g_dbus_connection_close_sync(connection_, nullptr, nullptr);
            g_clear_object(&connection_);
        }
        // What the library had still to tell us, or to free.
        while (g_main_context_iteration(context_, FALSE) != FALSE) {
        }
        g_main_context_pop_thread_default(context_);
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
    GMainContext* const context_;
    GMainLoop* const loop_;
    GSource* const pump_;
    GDBusConnection* connection_ = nullptr;
    Error whyNot_;
    std::vector<Block> undo_;
    std::map<std::string, guint> owned_;
    std::atomic<bool> stopping_ = false;
    Mutex mutex_;
    bool started_ ZENTAVO_GUARDED_BY(mutex_) = false;
    std::thread thread_ ZENTAVO_GUARDED_BY(mutex_);
    std::vector<Block> ready_ ZENTAVO_GUARDED_BY(mutex_);
    /// By when they are due, in microseconds of the monotonic clock.
    std::multimap<gint64, Block> timers_ ZENTAVO_GUARDED_BY(mutex_);
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
