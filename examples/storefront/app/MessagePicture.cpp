#include "MessagePicture.h"

#include <utility>

#include <gdkmm/texture.h>
#include <glibmm/bytes.h>
#include <glibmm/error.h>
#include <glibmm/main.h>
#include <gtkmm/adjustment.h>

#include "MainThread.h"

namespace storefront {

namespace {
constexpr std::size_t maximumBytes = 4U << 20U;
constexpr int side = 64;
constexpr unsigned layoutMilliseconds = 100;
} // namespace

MessagePicture::MessagePicture(zentavo::URL url, std::shared_ptr<zentavo::platform::URLSession> network,
                               std::shared_ptr<zentavo::platform::DispatchQueue> queue)
    : url_(std::move(url)), network_(std::move(network)), queue_(std::move(queue)) {
    set_size_request(side, side);
    set_valign(Gtk::Align::START);
    set_can_shrink(true);
    set_overflow(Gtk::Overflow::HIDDEN);
    add_css_class("thumbnail");
    signal_map().connect([this] { listen(); });
}

MessagePicture::~MessagePicture() {
    for (sigc::connection& each : scrolling_) {
        each.disconnect();
    }
}

void MessagePicture::listen() {
    scroller_ = dynamic_cast<Gtk::ScrolledWindow*>(get_ancestor(Gtk::ScrolledWindow::get_type()));
    if (scroller_ == nullptr) {
        return load();
    }
    if (asked_) {
        return;
    }
    if (scrolling_.empty()) {
        const auto adjustment = scroller_->get_vadjustment();
        scrolling_ = {adjustment->signal_value_changed().connect([this] { lookSoon(); }),
                      adjustment->signal_changed().connect([this] { lookSoon(); })};
    }
    lookSoon();
}

/// The adjustment is told first, and what lies in the scroller has its place by then; rows that fly past are left alone.
void MessagePicture::lookSoon() {
    if (std::exchange(looking_, true)) {
        return;
    }
    Glib::signal_timeout().connect_once(
        [this, alive = std::weak_ptr(alive_)] {
            if (!alive.expired()) {
                looking_ = false;
                look();
            }
        },
        layoutMilliseconds);
}

void MessagePicture::look() {
    if (!get_mapped() || asked_) {
        return;
    }
    if (get_height() == 0) { // not laid out yet
        return lookSoon();
    }
    double x = 0;
    double top = 0;
    if (translate_coordinates(*scroller_, 0, 0, x, top) && top < scroller_->get_height() && top + get_height() > 0) {
        load();
    }
}

void MessagePicture::load() {
    if (std::exchange(asked_, true)) {
        return;
    }
    for (sigc::connection& each : scrolling_) {
        each.disconnect();
    }
    auto request = std::make_shared<zentavo::platform::URLRequest>(url_);
    request->maximumAnswerBytes = maximumBytes;
    network_->start(std::move(request), queue_,
                    [this, alive = std::weak_ptr(alive_)](zentavo::platform::URLResult result) {
                        if (!result.data || !result.response || result.response->status != 200) {
                            return;
                        }
                        onMainThread([this, alive, bytes = *std::move(result.data)] {
                            if (!alive.expired()) {
                                show(bytes);
                            }
                        });
                    });
}

void MessagePicture::show(const std::string& bytes) {
    try {
        set_paintable(Gdk::Texture::create_from_bytes(Glib::Bytes::create(bytes.data(), bytes.size())));
    } catch (const Glib::Error&) {
        // No picture; the grey field stays.
    }
}

} // namespace storefront
