#include "ports/desktop/NotificationServer.h"

#include <string_view>
#include <utility>

namespace zentavo::desktop {

namespace {

constexpr const char* serverName = "org.freedesktop.Notifications";
constexpr const char* serverPath = "/org/freedesktop/Notifications";
constexpr const char* busName = "org.freedesktop.DBus";

SessionBus::Call serverCall(const char* method, Variant parameters, const char* answerType) {
    return {serverName, serverPath, serverName, method, std::move(parameters), answerType};
}

SessionBus::Call busCall(const char* method, Variant parameters, const char* answerType) {
    return {busName, "/org/freedesktop/DBus", busName, method, std::move(parameters), answerType};
}

bool contains(const Variant& texts, std::string_view wanted) {
    GVariantIter* each = nullptr;
    g_variant_get(texts.get(), "(as)", &each);
    const char* text = nullptr;
    bool found = false;
    while (g_variant_iter_next(each, "&s", &text) != FALSE) {
        found = found || text == wanted;
    }
    g_variant_iter_free(each);
    return found;
}

} // namespace

void NotificationServer::listen(Events events) {
    const std::weak_ptr<NotificationServer> weak = weak_from_this();
    bus_->watch(serverName, [weak, gone = std::move(events.gone)](bool present) {
        if (const auto self = weak.lock()) {
            self->capabilities_.reset();
            if (!present) {
                gone();
            }
        }
    });
    // A signal with other contents is none of the service's.
    bus_->listen(serverName, serverPath, serverName, "ActionInvoked",
                 [invoked = std::move(events.invoked)](const std::string&, const Variant& parameters) {
                     if (g_variant_is_of_type(parameters.get(), G_VARIANT_TYPE("(us)")) != FALSE) {
                         guint32 id = 0;
                         const char* key = nullptr;
                         g_variant_get(parameters.get(), "(u&s)", &id, &key);
                         invoked(id, key);
                     }
                 });
    bus_->listen(serverName, serverPath, serverName, "NotificationClosed",
                 [closed = std::move(events.closed)](const std::string&, const Variant& parameters) {
                     if (g_variant_is_of_type(parameters.get(), G_VARIANT_TYPE("(uu)")) != FALSE) {
                         guint32 id = 0;
                         guint32 reason = 0;
                         g_variant_get(parameters.get(), "(uu)", &id, &reason);
                         closed(id, reason);
                     }
                 });
}

void NotificationServer::available(std::function<void(Result<bool>)> answer) {
    bus_->call(busCall("NameHasOwner", Variant::share(g_variant_new("(s)", serverName)), "(b)"),
               [self = shared_from_this(), answer = std::move(answer)](const Result<Variant>& owned) {
                   if (!owned) {
                       return answer(owned.error());
                   }
                   gboolean has = FALSE;
                   g_variant_get(owned->get(), "(b)", &has);
                   if (has != FALSE) {
                       return answer(true);
                   }
                   self->bus_->call(busCall("ListActivatableNames", {}, "(as)"),
                                    [answer](const Result<Variant>& names) {
                                        answer(names ? Result<bool>(contains(*names, serverName)) : names.error());
                                    });
               });
}

void NotificationServer::capabilities(std::function<void(Result<ServerCapabilities>)> answer) {
    if (capabilities_) {
        return answer(*capabilities_);
    }
    bus_->call(serverCall("GetCapabilities", {}, "(as)"),
               [self = shared_from_this(), answer = std::move(answer)](const Result<Variant>& names) {
                   if (!names) {
                       return answer(names.error());
                   }
                   self->capabilities_ = {contains(*names, "actions"), contains(*names, "body-markup")};
                   answer(*self->capabilities_);
               });
}

void NotificationServer::show(const Variant& arguments, std::function<void(Result<std::uint32_t>)> answer) {
    bus_->call(serverCall("Notify", arguments, "(u)"), [answer = std::move(answer)](const Result<Variant>& id) {
        if (!id) {
            return answer(id.error());
        }
        guint32 number = 0;
        g_variant_get(id->get(), "(u)", &number);
        answer(number);
    });
}

void NotificationServer::close(std::uint32_t id) {
    auto call = serverCall("CloseNotification", Variant::share(g_variant_new("(u)", id)), "()");
    call.mayStart = false;
    bus_->call(std::move(call));
}

} // namespace zentavo::desktop
