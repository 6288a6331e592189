#pragma once

#include <string>

#include "ports/memory/MemoryViews.h"

namespace zentavo::testing {

/// A label that only remembers.
class ZENTAVO_EXPORT MemoryLabel final : public MemoryView, public platform::Label {
public:
    using MemoryView::MemoryView;

    void setText(std::string text) override {
        onMainQueue();
        text_ = std::move(text);
    }
    std::string text() const override { return text_; }
    void setFont(platform::Font font) override { font_ = font; }
    void setTextColour(platform::Colour colour) override { colour_ = colour; }
    void setAlignment(platform::TextAlignment alignment) override { alignment_ = alignment; }
    void setLines(int lines) override { lines_ = lines; }

    // --- What a test sees --------------------------------------------------------------------------------------------

    platform::Font font() const noexcept { return font_; }
    platform::Colour textColour() const noexcept { return colour_; }
    platform::TextAlignment alignment() const noexcept { return alignment_; }
    int lines() const noexcept { return lines_; }

private:
    std::string text_;
    platform::Font font_;
    platform::Colour colour_;
    platform::TextAlignment alignment_ = platform::TextAlignment::natural;
    int lines_ = 0;
};

} // namespace zentavo::testing
