#include "ProductPage.h"

#include <gtkmm/button.h>
#include <gtkmm/label.h>

#include "ProductPicture.h"

namespace storefront {

ProductPage::ProductPage(std::function<void(const Product&)> bought)
    : Gtk::Box(Gtk::Orientation::VERTICAL), bought_(std::move(bought)) {
    add_css_class("product-page");
}

void ProductPage::show(const Product& product) {
    while (auto* child = get_first_child()) {
        remove(*child);
    }
    auto& picture = *Gtk::make_managed<ProductPicture>(product.shape, product.colour);
    picture.set_vexpand(true);
    picture.add_css_class("large-picture");
    picture.set_overflow(Gtk::Overflow::HIDDEN);
    append(picture);

    const auto line = [this](const Glib::ustring& text, const Glib::ustring& style) {
        auto& label = *Gtk::make_managed<Gtk::Label>(text);
        label.set_xalign(0);
        label.set_wrap(true);
        label.add_css_class(style);
        append(label);
    };
    line(product.name, "page-title");
    line(product.tagline, "product-tagline");
    line(product.description, "product-description");

    auto& foot = *Gtk::make_managed<Gtk::Box>(Gtk::Orientation::HORIZONTAL);
    foot.add_css_class("product-foot");
    auto& price = *Gtk::make_managed<Gtk::Label>(priceText(product.price));
    price.set_hexpand(true);
    price.set_xalign(0);
    price.add_css_class("large-price");
    foot.append(price);
    auto& buy = *Gtk::make_managed<Gtk::Button>("Add to cart");
    buy.add_css_class("suggested-action");
    buy.signal_clicked().connect([this, &product] { bought_(product); });
    foot.append(buy);
    append(foot);
}

} // namespace storefront
