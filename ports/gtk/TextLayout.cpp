#include "ports/gtk/TextLayout.h"

#include <algorithm>
#include <cmath>
#include <memory>

namespace zentavo::gtk {

namespace {

constexpr double widest = 32767;

/// A break that ends a line and no paragraph: the bound on lines is one for the whole text, and so is its direction.
std::string asOneParagraph(const std::string& text) {
    const std::unique_ptr<char, decltype(&g_free)> valid(
        g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())), g_free);
    std::string all;
    for (const char* at = valid.get(); *at != '\0'; at = g_utf8_next_char(at)) {
        const gunichar letter = g_utf8_get_char(at);
        if (letter == '\r') {
            continue;
        }
        if (letter == '\n' || letter == 0x2029) {
            all += "\u2028";
        } else {
            all.append(at, static_cast<std::size_t>(g_utf8_next_char(at) - at));
        }
    }
    return all;
}

} // namespace

TextLayout::TextLayout(GtkWidget* widget)
    : layout_(Ref<PangoLayout>::take(gtk_widget_create_pango_layout(widget, nullptr))) {
    pango_layout_set_wrap(layout_.get(), PANGO_WRAP_WORD_CHAR);
    pango_layout_set_auto_dir(layout_.get(), TRUE);
}

void TextLayout::set(const std::string& text, platform::Font font, int lines, platform::TextAlignment alignment) {
    pango_layout_set_text(layout_.get(), asOneParagraph(text).c_str(), -1);
    const auto* inherited = pango_context_get_font_description(pango_layout_get_context(layout_.get()));
    PangoFontDescription* description =
        inherited != nullptr ? pango_font_description_copy(inherited) : pango_font_description_new();
    pango_font_description_set_absolute_size(description, std::clamp(font.size, 1.0, 500.0) * PANGO_SCALE);
    pango_font_description_set_weight(description, font.weight == platform::FontWeight::bold     ? PANGO_WEIGHT_BOLD
                                                   : font.weight == platform::FontWeight::medium ? PANGO_WEIGHT_MEDIUM
                                                                                                 : PANGO_WEIGHT_NORMAL);
    pango_layout_set_font_description(layout_.get(), description);
    pango_font_description_free(description);
    // For the toolkit a negative height is a number of lines.
    pango_layout_set_ellipsize(layout_.get(), lines > 0 ? PANGO_ELLIPSIZE_END : PANGO_ELLIPSIZE_NONE);
    pango_layout_set_height(layout_.get(), lines > 0 ? -lines : -1);
    // For the toolkit "left" is where the text's own language begins its lines.
    pango_layout_set_alignment(layout_.get(),
                               alignment == platform::TextAlignment::centre ? PANGO_ALIGN_CENTER : PANGO_ALIGN_LEFT);
}

bool TextLayout::empty() const { return *pango_layout_get_text(layout_.get()) == '\0'; }

platform::Size TextLayout::size(double width) {
    const double most = std::isfinite(width) ? std::clamp(width, 1.0, widest) : widest;
    if (empty()) {
        return {};
    }
    pango_layout_set_width(layout_.get(), static_cast<int>(most) * PANGO_SCALE);
    PangoRectangle extents;
    pango_layout_get_extents(layout_.get(), nullptr, &extents);
    return {std::min(std::ceil(static_cast<double>(extents.width) / PANGO_SCALE), std::floor(most)),
            std::ceil(static_cast<double>(extents.height) / PANGO_SCALE)};
}

void TextLayout::draw(GtkSnapshot* snapshot, platform::Colour colour, int width) {
    if (width <= 0 || empty()) {
        return;
    }
    pango_layout_set_width(layout_.get(), width * PANGO_SCALE);
    const GdkRGBA rgba{static_cast<float>(colour.red), static_cast<float>(colour.green),
                       static_cast<float>(colour.blue), static_cast<float>(colour.alpha)};
    gtk_snapshot_append_layout(snapshot, layout_.get(), &rgba);
}

} // namespace zentavo::gtk
