// A small shop that shows the SDK in an app with a window: its events, in-app messages over it, and the inbox.
//
//     zentavo-storefront [--server URL] [--data DIR] [--tour DIR] [LINK]
//
// A LINK is a place of the shop ("shop://cart"); a shop that is open already goes there. --tour walks through the shop
// without a hand on it, and leaves pictures in DIR. Without the other two the environment decides, see ShopSettings.h.

#include <cstdio>
#include <memory>
#include <string>

#include <gtkmm/application.h>
#include <gtkmm/cssprovider.h>
#include <gtkmm/stylecontext.h>
#include <ports/gtk/Attach.h>
#include <zentavo/Zentavo.h>

#include "Notifications.h"
#include "ShopWindow.h"
#include "Style.h"
#include "Tour.h"
#include "examples/storefront/support/ShopSettings.h"
#include "examples/support/TracePost.h"

namespace {

struct Options {
    storefront::ShopSettings shop = storefront::ShopSettings::fromEnvironment();
    std::string tour;
    std::string link;
};

bool read(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        const std::string name = argv[i];
        if (!name.starts_with("-") && options.link.empty()) {
            options.link = name;
            continue;
        }
        std::string* value = name == "--server" ? &options.shop.server
                             : name == "--data" ? &options.shop.data
                             : name == "--tour" ? &options.tour
                                                : nullptr;
        if (value == nullptr || ++i == argc) {
            std::fprintf(stderr, "usage: %s [--server URL] [--data DIR] [--tour DIR] [LINK]\n", argv[0]);
            return false;
        }
        *value = argv[i];
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    Options options;
    if (!read(argc, argv, options)) {
        return 2;
    }
    // One shop at a time: a second one hands its link over to the first. The name must be another than the shop's own,
    // at which the SDK is told what the user does with notifications.
    const auto app = Gtk::Application::create("example.nordlys.shop.Window", Gio::Application::Flags::HANDLES_OPEN);
    std::shared_ptr<zentavo::platform::Platform> platform;
    std::shared_ptr<zentavo::Zentavo> sdk;
    std::unique_ptr<storefront::ShopWindow> window;
    std::unique_ptr<storefront::Notifications> notifications;
    std::unique_ptr<storefront::Tour> tour;
    int status = 0;
    app->signal_startup().connect([&] {
        platform = storefront::makePlatform(options.shop);
        sdk = storefront::makeSdk(options.shop, platform);
        // So that the dev server's page can say why a message was not shown.
        sdk->setDeliveryTraceCallback(examples::TracePost(platform, options.shop.server));
        const auto style = Gtk::CssProvider::create();
        style->load_from_data(storefront::style);
        Gtk::StyleContext::add_provider_for_display(Gdk::Display::get_default(), style,
                                                    GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
        sdk->activate({/*portalId*/ "33167", /*propsId*/ "555", /*appGroupId*/ "group.shop", /*applicationId*/ "42"});
        sdk->setCustomerProperties("c1", {});
        sdk->appInboxInit(/*destinationId*/ "77", /*audienceType*/ "customer");

        window = std::make_unique<storefront::ShopWindow>(sdk, platform);
        app->add_window(*window);
        window->present();
        zentavo::gtk::attach(GTK_WINDOW(window->gobj()));
        sdk->setHandleChangeRouteTemplate([&window](const std::string& route) {
            if (const auto url = zentavo::URL::parse(route)) {
                window->go(*url);
            }
        });
        window->inbox().askForUnread();
        if (options.tour.empty()) { // it walks where nobody brings pushes
            notifications = std::make_unique<storefront::Notifications>(sdk, platform);
        }
    });
    app->signal_activate().connect([&] {
        window->present();
        if (options.tour.empty()) {
            window->showList();
            return;
        }
        tour = std::make_unique<storefront::Tour>(*window, sdk, platform, options.shop.server, options.tour);
        tour->start([&](bool good) {
            std::printf("tour: %s\n", good ? "all as it should be" : "FAILED");
            status = good ? 0 : 1;
            window->close();
        });
    });
    app->signal_open().connect([&](const Gio::Application::type_vec_files& links, const Glib::ustring&) {
        window->present();
        if (const auto url = zentavo::URL::parse(links.front()->get_uri())) {
            window->go(*url);
        }
    });
    char* words[] = {argv[0], options.link.data(), nullptr};
    const int ended = app->run(options.link.empty() ? 1 : 2, words);
    return ended != 0 ? ended : status;
}
