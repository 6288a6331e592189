// A small shop that shows the SDK in an app with a window: its events, in-app messages over it, and the inbox.
//
//     zentavo-storefront [--server URL] [--data DIR] [--tour DIR]
//
// --tour walks through it without a hand on it, and leaves pictures in DIR.

#include <cstdio>
#include <memory>
#include <string>

#include <gtkmm/application.h>
#include <gtkmm/cssprovider.h>
#include <gtkmm/stylecontext.h>
#include <ports/gtk/Attach.h>
#include <ports/linux/LinuxPlatform.h>
#include <zentavo/Zentavo.h>

#include "ShopWindow.h"
#include "Style.h"
#include "Tour.h"
#include "examples/support/TracePost.h"

namespace {

struct Options {
    std::string server = "http://127.0.0.1:8787";
    std::string data;
    std::string tour;
};

bool read(int argc, char** argv, Options& options) {
    for (int i = 1; i < argc; ++i) {
        const std::string name = argv[i];
        std::string* value = name == "--server" ? &options.server
                             : name == "--data" ? &options.data
                             : name == "--tour" ? &options.tour
                                                : nullptr;
        if (value == nullptr || ++i == argc) {
            std::fprintf(stderr, "usage: %s [--server URL] [--data DIR] [--tour DIR]\n", argv[0]);
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
    // The default platform serves a host that has no wishes; this one chooses where its data is.
    const auto platform = zentavo::linux_port::makeLinuxPlatform({options.data, {}});
    const auto sdk = std::make_shared<zentavo::Zentavo>(platform);
    zentavo::Zentavo::setShared(sdk);
    sdk->setEndpoints(zentavo::Endpoints::all(options.server));
    // So that the dev server's page can say why a message was not shown.
    sdk->setDeliveryTraceCallback(examples::TracePost(platform, options.server));

    const auto app = Gtk::Application::create("example.nordlys.shop", Gio::Application::Flags::NON_UNIQUE);
    std::unique_ptr<storefront::ShopWindow> window;
    std::unique_ptr<storefront::Tour> tour;
    int status = 0;
    app->signal_activate().connect([&] {
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
        if (options.tour.empty()) {
            window->showList();
            return;
        }
        tour = std::make_unique<storefront::Tour>(*window, sdk, platform, options.server, options.tour);
        tour->start([&](bool good) {
            std::printf("tour: %s\n", good ? "all as it should be" : "FAILED");
            status = good ? 0 : 1;
            window->close();
        });
    });
    const int ended = app->run();
    return ended != 0 ? ended : status;
}
