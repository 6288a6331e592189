#include "MessageRow.h"

#include <utility>

#include <glibmm/datetime.h>
#include <gtkmm/button.h>
#include <gtkmm/gestureswipe.h>

#include "MessagePicture.h"

namespace storefront {

namespace {

constexpr double swipeSpeed = 400; // points a second

/// "2026-11-03T09:00:00.000Z" as "3 November".
Glib::ustring dayText(const std::string& iso) {
    const auto time = Glib::DateTime::create_from_iso8601(iso);
    return time ? time.to_local().format("%-d %B") : "";
}

} // namespace

MessageRow::MessageRow(zentavo::InboxItem item, const Pictures& pictures, std::function<void(MessageRow&)> remove)
    : item_(std::move(item)), unread_(item_.status == unreadStatus), heading_(item_.heading) {
    add_css_class("message");
    auto& content = *Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL);
    content.add_css_class("row");

    dot_.add_css_class("unread-dot");
    dot_.set_valign(Gtk::Align::START);
    dot_.set_opacity(unread_ ? 1 : 0);
    content.append(dot_);

    auto& text = *Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL);
    text.set_hexpand(true);
    heading_.set_xalign(0);
    heading_.set_ellipsize(Pango::EllipsizeMode::END);
    heading_.add_css_class(unread_ ? "unread-heading" : "read-heading");
    text.append(heading_);
    auto& body = *Gtk::make_managed<Gtk::Label>(item_.content);
    body.set_xalign(0);
    body.set_wrap(true);
    body.set_lines(2);
    body.set_ellipsize(Pango::EllipsizeMode::END);
    body.add_css_class("message-text");
    text.append(body);
    auto& day = *Gtk::make_managed<Gtk::Label>(dayText(item_.dateCreated));
    day.set_xalign(0);
    day.add_css_class("message-day");
    text.append(day);
    content.append(text);

    if (item_.imageUrl) {
        content.append(*Gtk::make_managed<MessagePicture>(*item_.imageUrl, pictures.network, pictures.queue));
    }
    auto& bin = *Gtk::make_managed<Gtk::Button>();
    bin.set_icon_name("user-trash-symbolic");
    bin.set_tooltip_text("Remove");
    bin.set_valign(Gtk::Align::CENTER);
    bin.add_css_class("flat");
    bin.signal_clicked().connect([this, remove] { remove(*this); });
    content.append(bin);

    const auto swipe = Gtk::GestureSwipe::create();
    swipe->set_propagation_phase(Gtk::PropagationPhase::CAPTURE);
    swipe->signal_swipe().connect([this, remove](double across, double) {
        if (across < -swipeSpeed) {
            remove(*this);
        }
    });
    content.add_controller(swipe);
    set_child(content);
}

bool MessageRow::hide() {
    set_visible(false);
    return !std::exchange(hidden_, true);
}

void MessageRow::bringBack() {
    hidden_ = false;
    set_visible(true);
}

void MessageRow::showUnread() {
    unread_ = true;
    dot_.set_opacity(1);
    heading_.remove_css_class("read-heading");
    heading_.add_css_class("unread-heading");
}

void MessageRow::showRead() {
    unread_ = false;
    dot_.set_opacity(0);
    heading_.remove_css_class("unread-heading");
    heading_.add_css_class("read-heading");
}

} // namespace storefront
