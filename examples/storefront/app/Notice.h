#pragma once

#include <functional>

#include <gtkmm/box.h>

namespace storefront {

/// What a page shows where it has nothing else: a sign, a line, an explanation, and perhaps a way on.
class Notice : public Gtk::Box {
public:
    Notice(Gtk::Widget& sign, const Glib::ustring& title, const Glib::ustring& text, const Glib::ustring& action = {},
           std::function<void()> act = {});
};

} // namespace storefront
