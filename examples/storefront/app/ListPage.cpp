#include "ListPage.h"

#include <gtkmm/box.h>
#include <gtkmm/label.h>

#include "ProductPicture.h"

namespace storefront {

namespace {

Gtk::Widget& card(const Product& product) {
    auto& box = *Gtk::make_managed<Gtk::Box>(Gtk::Orientation::VERTICAL);
    box.add_css_class("product-card");
    box.set_overflow(Gtk::Overflow::HIDDEN);

    auto& picture = *Gtk::make_managed<ProductPicture>(product.shape, product.colour);
    picture.set_content_height(150);
    box.append(picture);

    const auto line = [&box](const Glib::ustring& text, const Glib::ustring& style) {
        auto& label = *Gtk::make_managed<Gtk::Label>(text);
        label.set_xalign(0);
        label.set_ellipsize(Pango::EllipsizeMode::END);
        label.add_css_class(style);
        box.append(label);
    };
    line(product.name, "product-name");
    line(product.tagline, "product-tagline");
    line(priceText(product.price), "product-price");
    return box;
}

} // namespace

ListPage::ListPage(std::function<void(const Product&)> chosen) {
    set_policy(Gtk::PolicyType::NEVER, Gtk::PolicyType::AUTOMATIC);
    cards_.add_css_class("product-cards");
    cards_.set_homogeneous(true);
    cards_.set_min_children_per_line(2);
    cards_.set_max_children_per_line(3);
    cards_.set_valign(Gtk::Align::START);
    cards_.set_selection_mode(Gtk::SelectionMode::NONE);
    cards_.set_activate_on_single_click(true);
    for (const Product& product : products()) {
        cards_.append(card(product));
    }
    cards_.signal_child_activated().connect([chosen = std::move(chosen)](Gtk::FlowBoxChild* child) {
        chosen(products()[static_cast<std::size_t>(child->get_index())]);
    });
    set_child(cards_);
}

} // namespace storefront
