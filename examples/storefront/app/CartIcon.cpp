#include "CartIcon.h"

#include <numbers>

#include <gdkmm/general.h>

namespace storefront {

CartIcon::CartIcon(int side) {
    set_content_width(side);
    set_content_height(side);
    set_halign(Gtk::Align::CENTER);
    set_valign(Gtk::Align::CENTER);
    set_draw_func([this](const Cairo::RefPtr<Cairo::Context>& context, int width, int height) {
        context->scale(width / 16.0, height / 16.0);
        Gdk::Cairo::set_source_rgba(context, get_style_context()->get_color());
        context->set_line_width(1.6);
        context->set_line_cap(Cairo::Context::LineCap::ROUND);
        context->set_line_join(Cairo::Context::LineJoin::ROUND);
        context->move_to(1, 2);
        context->line_to(3, 2);
        context->line_to(5, 10.5);
        context->line_to(13, 10.5);
        context->line_to(14.6, 4.6);
        context->line_to(3.7, 4.6);
        context->stroke();
        for (const double x : {6.2, 11.8}) {
            context->arc(x, 13.6, 1.3, 0, 2 * std::numbers::pi);
            context->fill();
        }
    });
}

} // namespace storefront
