#pragma once

#include <functional>

#include <gtkmm/flowbox.h>
#include <gtkmm/scrolledwindow.h>

#include "Product.h"

namespace storefront {

/// All products, as cards.
class ListPage : public Gtk::ScrolledWindow {
public:
    explicit ListPage(std::function<void(const Product&)> chosen);

private:
    Gtk::FlowBox cards_;
};

} // namespace storefront
