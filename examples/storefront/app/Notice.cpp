#include "Notice.h"

#include <gtkmm/button.h>
#include <gtkmm/label.h>

namespace storefront {

Notice::Notice(Gtk::Widget& sign, const Glib::ustring& title, const Glib::ustring& text, const Glib::ustring& action,
               std::function<void()> act)
    : Gtk::Box(Gtk::Orientation::VERTICAL) {
    add_css_class("notice");
    set_vexpand(true);
    set_valign(Gtk::Align::CENTER);
    append(sign);
    auto& head = *Gtk::make_managed<Gtk::Label>(title);
    head.add_css_class("page-title");
    append(head);
    auto& body = *Gtk::make_managed<Gtk::Label>(text);
    body.set_wrap(true);
    body.set_justify(Gtk::Justification::CENTER);
    append(body);
    if (act) {
        auto& button = *Gtk::make_managed<Gtk::Button>(action);
        button.set_halign(Gtk::Align::CENTER);
        button.signal_clicked().connect(act);
        append(button);
    }
}

} // namespace storefront
