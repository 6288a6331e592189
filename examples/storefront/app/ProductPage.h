#pragma once

#include <functional>

#include <gtkmm/box.h>

#include "Product.h"

namespace storefront {

/// One product, large.
class ProductPage : public Gtk::Box {
public:
    explicit ProductPage(std::function<void(const Product&)> bought);

    void show(const Product& product);

private:
    const std::function<void(const Product&)> bought_;
};

} // namespace storefront
