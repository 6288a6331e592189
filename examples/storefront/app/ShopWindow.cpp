#include "ShopWindow.h"

#include <algorithm>
#include <cstdint>

#include <gtkmm/image.h>
#include <gtkmm/overlay.h>

#include "CartIcon.h"

namespace storefront {

using zentavo::URL;

namespace {

constexpr int width = 460; // so that the inbox finds room for its filters
constexpr int height = 760;

/// A button of the bar: a sign, and over it how many.
void dress(Gtk::Button& button, Gtk::Label& badge, Gtk::Widget& sign, const Glib::ustring& tooltip) {
    auto& overlay = *Gtk::make_managed<Gtk::Overlay>();
    overlay.set_child(sign);
    badge.add_css_class("badge");
    badge.set_halign(Gtk::Align::END);
    badge.set_valign(Gtk::Align::START);
    badge.set_visible(false);
    overlay.add_overlay(badge);
    button.set_child(overlay);
    button.set_tooltip_text(tooltip);
    button.add_css_class("flat");
}

void count(Gtk::Label& badge, std::int64_t number) {
    badge.set_visible(number > 0);
    badge.set_text(number > 99 ? "99+" : std::to_string(number));
}

} // namespace

ShopWindow::ShopWindow(std::shared_ptr<zentavo::Zentavo> sdk,
                       const std::shared_ptr<zentavo::platform::Platform>& platform)
    : events_(sdk), list_([this](const Product& product) { showProduct(product); }),
      product_([this](const Product& product) {
          cart_.add(product);
          events_.addedToCart(product);
      }),
      cartPage_({[this](const Product& product) {
                     events_.removedFromCart(product);
                     cart_.remove(product);
                 },
                 [this] { pay(); }}),
      inbox_({sdk,
              {platform->urlSession, platform->queues->make("storefront", zentavo::platform::QueueKind::serial)},
              [this](const URL& url) { go(url); },
              [this](std::int64_t number) { count(inboxBadge_, number); }}) {
    set_title("Nordlys");
    set_default_size(width, height);
    title_.add_css_class("shop-title");
    header_.set_title_widget(title_);
    back_.set_icon_name("go-previous-symbolic");
    back_.add_css_class("flat");
    back_.signal_clicked().connect([this] { showList(); });
    header_.pack_start(back_);
    auto& letter = *Gtk::make_managed<Gtk::Image>();
    letter.set_from_icon_name("mail-unread-symbolic");
    dress(inboxButton_, inboxBadge_, letter, "Inbox");
    inboxButton_.signal_clicked().connect([this] { showInbox(); });
    dress(cartButton_, cartBadge_, *Gtk::make_managed<CartIcon>(16), "Cart");
    cartButton_.signal_clicked().connect([this] { showCart(); });
    header_.pack_end(cartButton_);
    header_.pack_end(inboxButton_);
    set_titlebar(header_);

    pages_.add(list_, "list");
    pages_.add(product_, "product");
    pages_.add(cartPage_, "cart");
    pages_.add(inbox_, "inbox");
    pages_.set_transition_type(Gtk::StackTransitionType::SLIDE_LEFT_RIGHT);
    set_child(pages_);

    cart_.onChange = [this] {
        count(cartBadge_, cart_.count());
        cartPage_.show(cart_);
    };
    cartPage_.show(cart_);
}

void ShopWindow::showPage(const Glib::ustring& name, const Glib::ustring& title, bool back) {
    pages_.set_visible_child(name);
    title_.set_text(title);
    back_.set_visible(back);
}

void ShopWindow::showList() {
    showPage("list", "Nordlys", false);
    events_.screen("Products", "All products", "list");
}

void ShopWindow::showProduct(const Product& product) {
    product_.show(product);
    showPage("product", product.name, true);
    events_.screen("Product", product.name, "product");
    events_.viewed(product);
}

void ShopWindow::showCart() {
    showPage("cart", "Cart", true);
    events_.screen("Cart", "Cart", "cart");
}

void ShopWindow::showInbox() {
    showPage("inbox", "Inbox", true);
    events_.screen("Inbox", "Inbox", "inbox");
    inbox_.refresh();
}

void ShopWindow::pay() {
    events_.purchased(cart_);
    cart_.clear();
    showList();
}

void ShopWindow::go(const URL& route) {
    const auto place = route.scheme() == "shop" ? route.host() : std::string_view();
    const auto sku = route.path().empty() ? std::string_view() : route.path().substr(1);
    const auto product = std::ranges::find(products(), sku, &Product::sku);
    if (place == "product" && product != products().end()) {
        showProduct(*product);
    } else if (place == "cart") {
        showCart();
    } else if (place == "inbox") {
        showInbox();
    } else if (route.isHTTP()) {
        gtk_show_uri(Gtk::Window::gobj(), route.text().c_str(), GDK_CURRENT_TIME);
    } else {
        showList(); // of this shop, though not a place that it has
    }
}

} // namespace storefront
