#pragma once

#include <functional>

#include <gtkmm/box.h>

#include "Cart.h"

namespace storefront {

/// The cart's lines and the button that pays.
class CartPage : public Gtk::Box {
public:
    struct Actions {
        std::function<void(const Product&)> remove;
        std::function<void()> pay;
    };
    explicit CartPage(Actions actions);

    void show(const Cart& cart);

private:
    Gtk::Widget& line(const Cart::Line& line);
    const Actions actions_;
};

} // namespace storefront
