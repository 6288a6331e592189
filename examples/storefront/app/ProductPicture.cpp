#include "ProductPicture.h"

#include <algorithm>
#include <numbers>

#include <gdkmm/general.h>

namespace storefront {

namespace {

using Context = Cairo::RefPtr<Cairo::Context>;

void shade(const Context& context, const Gdk::RGBA& colour, double factor) {
    const auto part = [factor](float c) { return std::min(1.0, static_cast<double>(c) * factor); };
    context->set_source_rgb(part(colour.get_red()), part(colour.get_green()), part(colour.get_blue()));
}

void rounded(const Context& context, double x, double y, double width, double height, double radius) {
    constexpr double quarter = std::numbers::pi / 2;
    context->begin_new_sub_path();
    context->arc(x + width - radius, y + radius, radius, -quarter, 0);
    context->arc(x + width - radius, y + height - radius, radius, 0, quarter);
    context->arc(x + radius, y + height - radius, radius, quarter, 2 * quarter);
    context->arc(x + radius, y + radius, radius, 2 * quarter, 3 * quarter);
    context->close_path();
}

// Each drawing lives in a square of 100 by 100.

void shoe(const Context& context, const Gdk::RGBA& colour) {
    context->move_to(14, 40);
    context->curve_to(22, 46, 32, 44, 38, 34);
    context->curve_to(46, 46, 58, 54, 76, 57);
    context->curve_to(88, 59, 92, 64, 91, 70);
    context->line_to(12, 70);
    context->curve_to(9, 60, 10, 48, 14, 40);
    context->close_path();
    shade(context, colour, 1);
    context->fill();
    rounded(context, 11, 69, 81, 9, 4.5);
    context->set_source_rgb(1, 1, 1);
    context->fill();
    context->set_source_rgb(1, 1, 1);
    context->set_line_width(2.4);
    context->set_line_cap(Cairo::Context::LineCap::ROUND);
    for (const double x : {43.0, 50.0, 57.0}) {
        context->move_to(x, 44 + (x - 43) * 0.6);
        context->line_to(x - 6, 51 + (x - 43) * 0.4);
        context->stroke();
    }
    context->move_to(16, 62);
    context->curve_to(34, 52, 50, 66, 72, 62);
    context->stroke();
}

void bottle(const Context& context, const Gdk::RGBA& colour) {
    rounded(context, 42, 14, 16, 12, 3);
    shade(context, colour, 0.6);
    context->fill();
    rounded(context, 34, 26, 32, 60, 9);
    shade(context, colour, 1);
    context->fill();
    rounded(context, 39, 34, 5, 40, 2.5);
    context->set_source_rgba(1, 1, 1, 0.45);
    context->fill();
}

void backpack(const Context& context, const Gdk::RGBA& colour) {
    context->arc(50, 24, 9, std::numbers::pi, 0);
    context->set_line_width(4);
    shade(context, colour, 0.6);
    context->stroke();
    rounded(context, 26, 22, 48, 64, 18);
    shade(context, colour, 1);
    context->fill();
    rounded(context, 33, 54, 34, 24, 6);
    shade(context, colour, 0.75);
    context->fill();
    rounded(context, 33, 40, 34, 4, 2);
    context->set_source_rgba(1, 1, 1, 0.6);
    context->fill();
}

void jacket(const Context& context, const Gdk::RGBA& colour) {
    context->move_to(38, 18);
    context->line_to(20, 28);
    context->line_to(12, 66);
    context->line_to(24, 69);
    context->line_to(30, 46);
    context->line_to(30, 84);
    context->line_to(70, 84);
    context->line_to(70, 46);
    context->line_to(76, 69);
    context->line_to(88, 66);
    context->line_to(80, 28);
    context->line_to(62, 18);
    context->curve_to(58, 28, 42, 28, 38, 18);
    context->close_path();
    shade(context, colour, 1);
    context->fill();
    context->move_to(50, 26);
    context->line_to(50, 84);
    context->set_line_width(2);
    context->set_source_rgba(1, 1, 1, 0.8);
    context->stroke();
}

void cap(const Context& context, const Gdk::RGBA& colour) {
    context->move_to(22, 60);
    context->curve_to(22, 26, 72, 26, 72, 60);
    context->close_path();
    shade(context, colour, 1);
    context->fill();
    context->move_to(66, 58);
    context->curve_to(84, 58, 92, 64, 92, 70);
    context->curve_to(78, 66, 66, 64, 52, 62);
    context->close_path();
    shade(context, colour, 0.7);
    context->fill();
    context->arc(47, 34, 3, 0, 2 * std::numbers::pi);
    context->fill();
}

void watch(const Context& context, const Gdk::RGBA& colour) {
    rounded(context, 40, 8, 20, 84, 6);
    shade(context, colour, 0.7);
    context->fill();
    context->arc(50, 50, 25, 0, 2 * std::numbers::pi);
    shade(context, colour, 1);
    context->fill();
    context->arc(50, 50, 20, 0, 2 * std::numbers::pi);
    context->set_source_rgb(1, 1, 1);
    context->fill();
    context->set_source_rgb(0.15, 0.15, 0.2);
    context->set_line_width(2.6);
    context->set_line_cap(Cairo::Context::LineCap::ROUND);
    context->move_to(50, 50);
    context->line_to(50, 36);
    context->move_to(50, 50);
    context->line_to(60, 55);
    context->stroke();
}

} // namespace

ProductPicture::ProductPicture(Shape shape, const std::string& colour) : shape_(shape), colour_(colour) {
    set_draw_func([this](const Context& context, int width, int height) { draw(context, width, height); });
}

void ProductPicture::draw(const Context& context, int width, int height) const {
    auto ground = colour_;
    ground.set_alpha(0.16F);
    Gdk::Cairo::set_source_rgba(context, ground);
    context->paint();
    const double side = 0.86 * std::min(width, height);
    context->translate((width - side) / 2, (height - side) / 2);
    context->scale(side / 100, side / 100);
    switch (shape_) {
    case Shape::shoe:
        return shoe(context, colour_);
    case Shape::bottle:
        return bottle(context, colour_);
    case Shape::backpack:
        return backpack(context, colour_);
    case Shape::jacket:
        return jacket(context, colour_);
    case Shape::cap:
        return cap(context, colour_);
    case Shape::watch:
        return watch(context, colour_);
    }
}

} // namespace storefront
