#include "Tour.h"

#include <cstdio>

#include <glibmm/main.h>
#include <webkit/webkit.h>

#include "MainThread.h"
#include "examples/storefront/support/Screenshot.h"
#include "examples/support/TracePost.h"

namespace storefront {

namespace {

// Milliseconds.
constexpr unsigned lookEvery = 40;
constexpr unsigned patience = 30'000;
constexpr unsigned atRest = 400; // what has come and not moved for so long is complete

/// The page of the message on screen, or null.
WebKitWebView* webViewIn(GtkWidget* widget) {
    if (WEBKIT_IS_WEB_VIEW(widget)) {
        return WEBKIT_WEB_VIEW(widget);
    }
    for (GtkWidget* child = gtk_widget_get_first_child(widget); child != nullptr;
         child = gtk_widget_get_next_sibling(child)) {
        if (auto* found = webViewIn(child)) {
            return found;
        }
    }
    return nullptr;
}

/// What the window shows; nothing before its first frame.
std::vector<unsigned char> pixelsOf(ShopWindow& window) {
    GdkTexture* texture = screenshot(GTK_WINDOW(window.gobj()));
    if (texture == nullptr) {
        return {};
    }
    const auto line = static_cast<std::size_t>(gdk_texture_get_width(texture)) * 4;
    std::vector<unsigned char> pixels(line * static_cast<std::size_t>(gdk_texture_get_height(texture)));
    gdk_texture_download(texture, pixels.data(), line);
    g_object_unref(texture);
    return pixels;
}

void say(const std::string& line) {
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

} // namespace

Tour::Tour(ShopWindow& window, std::shared_ptr<zentavo::Zentavo> sdk,
           std::shared_ptr<zentavo::platform::Platform> platform, std::string server, std::filesystem::path folder)
    : window_(window), sdk_(std::move(sdk)), platform_(std::move(platform)), server_(std::move(server)),
      folder_(std::move(folder)) {
    std::filesystem::create_directories(folder_);
    // In place of the app's own, which the server's page would miss.
    sdk_->setDeliveryTraceCallback(
        [this, alive = std::weak_ptr(alive_),
         post = examples::TracePost(platform_, server_)](const zentavo::DeliveryTrace& trace) {
            post(trace);
            onMainThread([this, alive, text = trace.text()] {
                if (!alive.expired()) {
                    lastTrace_ = text;
                    say("      sdk    | " + text);
                }
            });
        });

    page("01-products", [this] { window_.showList(); });
    page("02-product", [this] { window_.showProduct(products().front()); });
    page("03-cart", [this] {
        window_.cart().add(products()[0]);
        window_.cart().add(products()[2]);
        window_.showCart();
    });
    inbox(
        "04-inbox", [this](InboxPage&) { window_.showInbox(); }, "messages");
    inbox(
        "05-inbox-catalog", [](InboxPage& page) { page.filter("sales"); }, "messages");
    inbox(
        "06-inbox-opened-and-removed",
        [](InboxPage& page) {
            const auto rows = page.rows();
            page.open(*rows.at(0));
            page.remove(*rows.at(1));
        },
        "messages");
    inbox(
        "", [](InboxPage& page) { page.filter("orders"); }, "messages");
    inbox(
        "07-inbox-empty",
        [](InboxPage& page) {
            for (MessageRow* row : page.rows()) {
                page.remove(*row);
            }
        },
        "empty");
    inbox(
        "", [](InboxPage& page) { page.filter(""); }, "messages");
    inbox(
        "08-inbox-all-read", [](InboxPage& page) { page.markAllAsRead(); }, "messages");
    inboxOutage("09-inbox-out-of-reach");
    page("", [this] { window_.showList(); });
    message("10-full-screen", "promo_full_screen");
    message("11-gamified", "promo_gamified");
    message("12-bar-top", "promo_bar_top");
    message("13-bar-top-percent", "promo_bar_top_percent");
    message("14-bar-bottom", "promo_bar_bottom");
    message("15-bar-bottom-percent", "promo_bar_bottom_percent");
    message("16-centred", "promo_centred");
    message("17-hand-written", "promo_code_mode");
    nothing("promo_slide_in");
    nothing("promo_inline");
}

Tour::~Tour() { sdk_->setDeliveryTraceCallback(nullptr); }

void Tour::page(std::string name, std::function<void()> act) {
    steps_.push_back({std::move(name), std::move(act), [] { return true; }, [] {}});
}

void Tour::inbox(std::string name, std::function<void(InboxPage&)> act, std::string state) {
    steps_.push_back({std::move(name), [this, act = std::move(act)] { act(window_.inbox()); },
                      [this, state = std::move(state)] { return window_.inbox().state() == state; }, [] {}});
}

void Tour::inboxOutage(std::string name) {
    // What the page still asks for because of the step before must not meet the outage.
    steps_.push_back({"", [] {}, [this] { return window_.inbox().isSure(); }, [] {}});
    steps_.push_back({std::move(name),
                      [this] {
                          ask("POST",
                              "/_dev/fault?status=503&body=busy&times=100"
                              "&path=/access/api/app-inbox/message/performance",
                              [this] { window_.inbox().refresh(); });
                      },
                      [this] { return window_.inbox().state() == "problem"; },
                      [this] { ask("DELETE", "/_dev/fault"); }});
}

void Tour::ask(const std::string& method, const std::string& path, std::function<void()> then) {
    auto request = std::make_shared<zentavo::platform::URLRequest>(*zentavo::URL::parse(server_ + path));
    request->method = method;
    platform_->urlSession->start(std::move(request),
                                 platform_->queues->make("tour", zentavo::platform::QueueKind::serial),
                                 [alive = std::weak_ptr(alive_), then](const zentavo::platform::URLResult&) {
                                     onMainThread([alive, then] {
                                         if (!alive.expired()) {
                                             then();
                                         }
                                     });
                                 });
}

void Tour::message(std::string name, const std::string& event) {
    steps_.push_back({std::move(name), [this, event] { window_.events().happened(event); },
                      [this] { return isMessageThere(); }, [this] { closeMessage(); }, true});
    steps_.push_back({"", [] {}, [this] { return !sdk_->isShowingTemplate(); }, [] {}});
}

void Tour::nothing(const std::string& event) {
    steps_.push_back({"", [this, event] { window_.events().happened(event); },
                      [this, trace = "for \"" + event + '"'] { return lastTrace_.find(trace) != std::string::npos; },
                      [this, event] {
                          if (sdk_->isShowingTemplate()) {
                              say("  !! " + event + " must show nothing");
                              good_ = false;
                          }
                      }});
}

void Tour::start(std::function<void(bool)> done) {
    done_ = std::move(done);
    next();
}

void Tour::next() {
    if (steps_.empty()) {
        done_(good_);
        return;
    }
    if (!steps_.front().name.empty()) {
        say("  " + steps_.front().name);
    }
    before_ = pixelsOf(window_);
    steps_.front().act();
    await(0);
}

void Tour::soon(std::function<void()> block) {
    Glib::signal_timeout().connect_once(
        [alive = std::weak_ptr(alive_), block = std::move(block)] {
            if (!alive.expired()) {
                block();
            }
        },
        lookEvery);
}

void Tour::await(unsigned waited) {
    if (steps_.front().arrived()) {
        watch(0, 0);
    } else if (waited < patience) {
        soon([this, waited] { await(waited + lookEvery); });
    } else {
        say("  !! " + steps_.front().name + " did not come" + (lastTrace_.empty() ? "" : ": " + lastTrace_));
        good_ = false;
        steps_.pop_front();
        next();
    }
}

void Tour::watch(unsigned waited, unsigned still) {
    auto now = pixelsOf(window_);
    const bool come = !now.empty() && !(steps_.front().another && now == before_);
    still = come && now == last_ ? still + lookEvery : 0;
    last_ = std::move(now);
    if (still < atRest && waited < patience) {
        soon([this, waited, still] { watch(waited + lookEvery, still); });
    } else {
        leave();
    }
}

void Tour::leave() {
    const Step step = std::move(steps_.front());
    steps_.pop_front();
    if (!step.name.empty()) {
        const auto file = folder_ / (step.name + ".png");
        if (!saveScreenshot(GTK_WINDOW(window_.gobj()), file.string())) {
            say("  !! no picture " + file.string());
            good_ = false;
        }
    }
    step.leave();
    next();
}

bool Tour::isMessageThere() const {
    WebKitWebView* page = webViewIn(GTK_WIDGET(window_.gobj()));
    return sdk_->isShowingTemplate() && page != nullptr && webkit_web_view_is_loading(page) == FALSE &&
           gtk_widget_get_width(GTK_WIDGET(page)) > 1;
}

void Tour::closeMessage() {
    if (auto* view = webViewIn(GTK_WIDGET(window_.gobj()))) {
        // Both kinds of page: whichever this is, the other's message means nothing to it.
        webkit_web_view_evaluate_javascript(view,
                                            "for (const type of ['zentavo-cdp-webview-closed', 'mt.Action.close'])"
                                            "  window.webkit.messageHandlers.eventHandler.postMessage({type});",
                                            -1, nullptr, nullptr, nullptr, nullptr, nullptr);
    }
}

} // namespace storefront
