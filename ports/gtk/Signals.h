#pragma once

#include <memory>
#include <utility>
#include <vector>

#include <glib-object.h>

namespace zentavo::gtk {

/// The handlers that one object of ours has on objects of the toolkit; they are taken away when it goes. It holds none of
/// the emitters: one that is gone took its handlers along.
class Signals {
public:
    Signals() = default;
    Signals(const Signals&) = delete;
    Signals& operator=(const Signals&) = delete;
    ~Signals() { clear(); }

    /// `handler` has the signature that the signal asks for, with `data` as its last argument.
    template <class Handler>
    gulong connect(gpointer emitter, const char* signal, Handler* handler, gpointer data) {
        const gulong id = g_signal_connect_data(emitter, signal, reinterpret_cast<GCallback>(handler), data, nullptr,
                                                static_cast<GConnectFlags>(0));
        handlers_.push_back(std::make_unique<Connection>(Connection{emitter, id}));
        g_object_add_weak_pointer(static_cast<GObject*>(emitter), &handlers_.back()->emitter);
        return id;
    }

    void clear() {
        for (const auto& each : std::exchange(handlers_, {})) {
            if (each->emitter != nullptr) {
                g_object_remove_weak_pointer(static_cast<GObject*>(each->emitter), &each->emitter);
                g_signal_handler_disconnect(each->emitter, each->id);
            }
        }
    }

private:
    struct Connection {
        gpointer emitter; ///< null once it is gone; the toolkit writes here, so the place must not move
        gulong id;
    };
    std::vector<std::unique_ptr<Connection>> handlers_;
};

} // namespace zentavo::gtk
