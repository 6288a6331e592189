#pragma once

#include <string>

#include "ports/gtk/GtkView.h"
#include "ports/gtk/TextLayout.h"
#include "zentavo/platform/Label.h"

namespace zentavo::gtk {

/// Text drawn on a canvas of its own: the toolkit's label would ask for room, and follow the host's style sheets.
class GtkTextLabel final : public GtkView, public platform::Label {
public:
    explicit GtkTextLabel(std::shared_ptr<platform::MainQueue> mainQueue);

    void setText(std::string text) override;
    std::string text() const override;
    void setFont(platform::Font font) override;
    void setTextColour(platform::Colour colour) override;
    void setAlignment(platform::TextAlignment alignment) override;
    void setLines(int lines) override;

private:
    void changed();

    TextLayout layout_;
    std::string text_;
    platform::Font font_;
    platform::Colour colour_;
    platform::TextAlignment alignment_ = platform::TextAlignment::natural;
    int lines_ = 0;
};

} // namespace zentavo::gtk
