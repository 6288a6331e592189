#include "CartPage.h"

#include <gtkmm/button.h>
#include <gtkmm/label.h>

#include "CartIcon.h"
#include "Notice.h"
#include "ProductPicture.h"

namespace storefront {

CartPage::CartPage(Actions actions) : Gtk::Box(Gtk::Orientation::VERTICAL), actions_(std::move(actions)) {
    add_css_class("cart-page");
}

void CartPage::show(const Cart& cart) {
    while (auto* child = get_first_child()) {
        remove(*child);
    }
    if (cart.lines().empty()) {
        append(*Gtk::make_managed<Notice>(*Gtk::make_managed<CartIcon>(48), "Nothing in it yet",
                                          "What you add to the cart waits here."));
        return;
    }
    for (const Cart::Line& one : cart.lines()) {
        append(line(one));
    }
    auto& foot = *Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL);
    foot.add_css_class("product-foot");
    foot.set_vexpand(true);
    foot.set_valign(Gtk::Align::END);
    auto& total = *Gtk::make_managed<Gtk::Label>("Total " + priceText(cart.total()));
    total.set_hexpand(true);
    total.set_xalign(0);
    total.add_css_class("large-price");
    foot.append(total);
    auto& pay = *Gtk::make_managed<Gtk::Button>("Pay");
    pay.add_css_class("suggested-action");
    pay.signal_clicked().connect([this] { actions_.pay(); });
    foot.append(pay);
    append(foot);
}

Gtk::Widget& CartPage::line(const Cart::Line& line) {
    const Product& product = *line.product;
    auto& row = *Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL);
    row.add_css_class("row");
    auto& picture = *Gtk::make_managed<ProductPicture>(product.shape, product.colour);
    picture.set_content_width(56);
    picture.set_content_height(56);
    picture.set_overflow(Gtk::Overflow::HIDDEN);
    picture.add_css_class("thumbnail");
    row.append(picture);
    auto& text = *Gtk::make_managed<Gtk::Label>(product.name + "  ×  " + std::to_string(line.quantity));
    text.set_hexpand(true);
    text.set_xalign(0);
    text.add_css_class("product-name");
    row.append(text);
    auto& price = *Gtk::make_managed<Gtk::Label>(priceText(line.quantity * product.price));
    row.append(price);
    auto& remove = *Gtk::make_managed<Gtk::Button>();
    remove.set_icon_name("list-remove-symbolic");
    remove.set_tooltip_text("One less");
    remove.set_valign(Gtk::Align::CENTER);
    remove.add_css_class("flat");
    remove.signal_clicked().connect([this, &product] { actions_.remove(product); });
    row.append(remove);
    return row;
}

} // namespace storefront
