#pragma once

#include <memory>

#include <gtkmm/applicationwindow.h>
#include <gtkmm/button.h>
#include <gtkmm/headerbar.h>
#include <gtkmm/label.h>
#include <gtkmm/stack.h>
#include <zentavo/Zentavo.h>

#include "Cart.h"
#include "CartPage.h"
#include "InboxPage.h"
#include "ListPage.h"
#include "ProductPage.h"
#include "ShopEvents.h"

namespace storefront {

/// The shop: a list of products, one of them, the cart and the inbox, and a bar to go between them.
class ShopWindow : public Gtk::ApplicationWindow {
public:
    ShopWindow(std::shared_ptr<zentavo::Zentavo> sdk, const std::shared_ptr<zentavo::platform::Platform>& platform);

    /// Goes where a link or an in-app message points: "shop://product/SKU", "shop://cart", "shop://inbox"; other places of
    /// the shop are its list. http is the desktop's.
    void go(const zentavo::URL& route);

    void showList();
    void showProduct(const Product& product);
    void showCart();
    void showInbox();

    InboxPage& inbox() { return inbox_; }
    Cart& cart() { return cart_; }
    const ShopEvents& events() const { return events_; }

private:
    void showPage(const Glib::ustring& name, const Glib::ustring& title, bool back);
    void pay();

    const ShopEvents events_;
    Cart cart_;

    Gtk::HeaderBar header_;
    Gtk::Label title_;
    Gtk::Button back_;
    Gtk::Button cartButton_;
    Gtk::Button inboxButton_;
    Gtk::Label cartBadge_;
    Gtk::Label inboxBadge_;
    Gtk::Stack pages_;
    ListPage list_;
    ProductPage product_;
    CartPage cartPage_;
    InboxPage inbox_;
};

} // namespace storefront
