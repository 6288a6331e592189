// What app.cpp is, for an app on a desktop and its extensions.
#include <iostream>
#include <memory>
#include <string>

#include <gtk/gtk.h>
#include <ports/desktop/DesktopAnswers.h>
#include <ports/desktop/NotificationService.h>
#include <ports/gtk/Attach.h>
#include <ports/gtk/NotificationContentHost.h>
#include <ports/linux/LinuxPlatform.h>
#include <zentavo/Zentavo.h>
#include <zentavo/push/templates/PushTemplateBaseController.h>

namespace samples {

GtkWidget* makeShop();

void attaching(GtkApplication* application) {
    GtkWidget* window = gtk_application_window_new(application);
    gtk_window_set_child(GTK_WINDOW(window), makeShop());
    zentavo::gtk::attach(GTK_WINDOW(window));
    gtk_window_present(GTK_WINDOW(window));
}

using namespace zentavo;

int contentExtension(const std::shared_ptr<Zentavo>& sdk) {
    zentavo::gtk::NotificationContentHost host(sdk,
                                               [](auto context, const auto& notification) {
                                                   return PushTemplateBaseController::handleNotification(
                                                              context, notification) != nullptr;
                                               },
                                               {.title = "News from Nordlys"});
    return host.run();
}

void token(const std::shared_ptr<Zentavo>& sdk) {
    zentavo::desktop::setRemoteNotificationsHandlers({
        [sdk](std::string token) {
            sdk->registerForNotification({reinterpret_cast<const std::uint8_t*>(token.data()), token.size()});
        },
        [](std::string reason) { std::cerr << "no pushes: " << reason << '\n'; },
    });
}

void start(const std::shared_ptr<platform::Platform>& platform, const std::shared_ptr<Zentavo>& sdk,
           const Configuration& configuration, GtkWindow* window, const desktop::RemoteNotificationsHandlers& handlers,
           std::shared_ptr<ZentavoUNUserNotificationCenter>& delegate) {
    sdk->activate(configuration);
    gtk::attach(window);
    delegate = std::make_shared<ZentavoUNUserNotificationCenter>(sdk);
    platform->userInterface()->userNotifications->setDelegate(delegate); // a click that started the app is told now
    desktop::setRemoteNotificationsHandlers(handlers);                   // the token, as above
    sdk->requestNotificationPermission();                                // registers, where notifications can be shown
}

} // namespace samples

int main() {
    const auto platform = zentavo::linux_port::makeLinuxPlatform();
    const auto sdk = std::make_shared<zentavo::Zentavo>(platform);
    return zentavo::desktop::runNotificationService(
        platform, [sdk] { return std::make_shared<zentavo::ZentavoNotificationService>(sdk); });
}
