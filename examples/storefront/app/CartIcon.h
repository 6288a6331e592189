#pragma once

#include <gtkmm/drawingarea.h>

namespace storefront {

/// A shopping cart in the colour of text; icon themes need not have one.
class CartIcon : public Gtk::DrawingArea {
public:
    explicit CartIcon(int side);
};

} // namespace storefront
