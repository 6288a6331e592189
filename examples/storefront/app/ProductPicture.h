#pragma once

#include <gtkmm/drawingarea.h>

#include "Product.h"

namespace storefront {

/// A drawn picture of a product on a tinted ground; it fills whatever room it gets.
class ProductPicture : public Gtk::DrawingArea {
public:
    ProductPicture(Shape shape, const std::string& colour);

private:
    void draw(const Cairo::RefPtr<Cairo::Context>& context, int width, int height) const;

    const Shape shape_;
    Gdk::RGBA colour_;
};

} // namespace storefront
