#include "ports/desktop/AppEndpoint.h"

#include "ports/desktop/AppInterfaces.h"
#include "ports/desktop/Callers.h"
#include "ports/desktop/MessageBody.h"
#include "ports/desktop/NotificationCodec.h"
#include "ports/desktop/PushEndpoint.h"
#include "ports/desktop/RecentResponses.h"

namespace zentavo::desktop {

namespace {

struct App {
    std::shared_ptr<FreedesktopUserNotifications> notifications;
    std::shared_ptr<RemoteNotifications> remote;
    std::shared_ptr<RecentResponses> recent;

    void willPresent(const MethodCall& call, const std::string& text) const {
        const auto notification = codec::readNotification(text);
        if (!notification) {
            return call.refuseArguments("no notification: " + notification.error().message);
        }
        notifications->presentation(*notification, [call](std::uint32_t options) {
            call.answer(Variant::share(g_variant_new("(u)", options)));
        });
    }

    void respond(const MethodCall& call, const std::string& text) const {
        auto sent = codec::readResponse(text);
        if (!sent) {
            return call.refuseArguments("no response: " + sent.error().message);
        }
        if (recent->add(sent->id)) {
            notifications->respond(std::move(sent->response));
        }
        call.answer();
    }

    void answer(const MethodCall& call) const {
        const std::string text = body::text(call.parameters());
        const std::string method = call.method();
        if (method == "WillPresent") {
            willPresent(call, text);
        } else if (method == "Respond") {
            respond(call, text);
        } else if (method == "TokenChanged") {
            if (!isPushToken(text)) {
                return call.refuseArguments("pushes cannot be sent there");
            }
            remote->tokenChanged(text);
            call.answer();
        } else {
            remote->failed(text);
            call.answer();
        }
    }
};

/// The connection on which the host's application object has the name; null where there is none.
GDBusConnection* connectionOfHost(const std::string& name) {
    GApplication* host = g_application_get_default();
    if (host == nullptr || g_application_get_is_registered(host) == FALSE ||
        (g_application_get_flags(host) & G_APPLICATION_NON_UNIQUE) != 0) {
        return nullptr;
    }
    const char* id = g_application_get_application_id(host);
    return id != nullptr && id == name ? g_application_get_dbus_connection(host) : nullptr;
}

} // namespace

void AppEndpoint::open(SessionBus& bus, const BusNames& names,
                       const std::shared_ptr<FreedesktopUserNotifications>& notifications,
                       const std::shared_ptr<RemoteNotifications>& remote,
                       const std::shared_ptr<platform::SystemLog>& log) {
    // The bus keeps its handlers, and they must not keep the bus.
    const auto handler = Callers::only(bus, {names.notificationService},
                                       [weak = std::weak_ptr(notifications), remote,
                                        recent = std::make_shared<RecentResponses>()](const MethodCall& call) {
                                           if (const auto self = weak.lock()) {
                                               App{self, remote, recent}.answer(call);
                                           }
                                       });
    bus.serve(app_interface::path, app_interface::xml, handler);
    if (GDBusConnection* hosts = connectionOfHost(names.app)) {
        return bus.serveOn(hosts, app_interface::path, app_interface::xml, handler);
    }
    bus.own(names.app, [log, name = names.app](bool ours) {
        if (!ours) {
            log->write(platform::LogLevel::info, "Clicks on notifications do not come here while another program, or "
                                                 "nobody, has the name " +
                                                     name + " on the message bus");
        }
    });
}

} // namespace zentavo::desktop
