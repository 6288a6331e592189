#pragma once

#include <string>

#include <gtk/gtk.h>

#include "ports/gtk/Ref.h"
#include "zentavo/platform/Label.h"

namespace zentavo::gtk {

/// Text as lines: the same for who measures it and who draws it. Main thread only.
class TextLayout {
public:
    /// In the typeface of `widget`.
    explicit TextLayout(GtkWidget* widget);

    void set(const std::string& text, platform::Font font, int lines, platform::TextAlignment alignment);
    /// In whole points, never wider than `width`.
    platform::Size size(double width);
    void draw(GtkSnapshot* snapshot, platform::Colour colour, int width);

private:
    bool empty() const;

    const Ref<PangoLayout> layout_;
};

} // namespace zentavo::gtk
