#include "ports/desktop/NotificationServer.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "ports/desktop/MessageBody.h"

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

bool contains(const Variant& names, std::string_view wanted) {
    const auto texts = body::texts(names);
    return std::find(texts.begin(), texts.end(), wanted) != texts.end();
}

} // namespace

void NotificationServer::listen(Events events) {
    const std::weak_ptr<NotificationServer> weak = weak_from_this();
    // Answered before the owner is told: a connection's own name is told apart from those of an earlier bus by this.
    bus_->call(busCall("GetId", {}, "(s)"), [weak](const Result<Variant>& id) {
        const auto self = weak.lock();
        if (self && id) {
            self->busId_ = body::text(*id);
        }
    });
    bus_->watchOwner(serverName,
                     [weak, came = std::move(events.came), gone = std::move(events.gone)](const std::string& owner) {
                         if (const auto self = weak.lock()) {
                             self->capabilities_.reset();
                             owner.empty() ? gone() : came(self->busId_ + owner);
                         }
                     });
    const auto listenForText = [this](const char* signal, auto handler) {
        bus_->listen(serverName, serverPath, serverName, signal,
                     [handler = std::move(handler)](const std::string&, const Variant& parameters) {
                         if (const auto said = readText(parameters)) {
                             handler(said->id, said->text);
                         }
                     });
    };
    listenForText("ActivationToken", std::move(events.activationToken));
    listenForText("ActionInvoked", std::move(events.invoked));
    bus_->listen(serverName, serverPath, serverName, "NotificationClosed",
                 [closed = std::move(events.closed)](const std::string&, const Variant& parameters) {
                     if (const auto signal = readClosed(parameters)) {
                         closed(signal->id, signal->reason);
                     }
                 });
}

std::optional<NotificationServer::Text> NotificationServer::readText(const Variant& signal) {
    if (g_variant_is_of_type(signal.get(), G_VARIANT_TYPE("(us)")) == FALSE) {
        return std::nullopt;
    }
    return Text{body::number(signal, 0), body::text(signal, 1)};
}

std::optional<NotificationServer::Closed> NotificationServer::readClosed(const Variant& signal) {
    if (g_variant_is_of_type(signal.get(), G_VARIANT_TYPE("(uu)")) == FALSE) {
        return std::nullopt;
    }
    return Closed{body::number(signal, 0), body::number(signal, 1)};
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
        answer(body::number(*id));
    });
}

void NotificationServer::close(std::uint32_t id) {
    auto call = serverCall("CloseNotification", Variant::share(g_variant_new("(u)", id)), "()");
    call.mayStart = false;
    bus_->call(std::move(call));
}

} // namespace zentavo::desktop
