#include "MessagePicture.h"

#include <gdkmm/texture.h>
#include <glibmm/bytes.h>
#include <glibmm/error.h>

#include "MainThread.h"

namespace storefront {

namespace {
constexpr std::size_t maximumBytes = 4U << 20U;
constexpr int side = 64;
} // namespace

MessagePicture::MessagePicture(zentavo::URL url, std::shared_ptr<zentavo::platform::URLSession> network,
                               std::shared_ptr<zentavo::platform::DispatchQueue> queue)
    : url_(std::move(url)), network_(std::move(network)), queue_(std::move(queue)) {
    set_size_request(side, side);
    set_valign(Gtk::Align::START);
    set_can_shrink(true);
    set_overflow(Gtk::Overflow::HIDDEN);
    add_css_class("thumbnail");
    signal_map().connect([this] { load(); });
}

void MessagePicture::load() {
    if (std::exchange(asked_, true)) {
        return;
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
