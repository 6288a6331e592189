#pragma once

#include <memory>
#include <string>

#include "zentavo/platform/Platform.h"

namespace zentavo {

/// A label with room around its text and a background: a button, a caption. Main queue only.
class ZENTAVO_EXPORT UIPaddingLabel {
public:
    explicit UIPaddingLabel(platform::Views& views, platform::Insets insets = {8, 12, 8, 12});

    const std::shared_ptr<platform::View> view;
    const std::shared_ptr<platform::Label> label;

    void setText(std::string text, platform::Font font, int lines);
    const platform::Insets& insets() const noexcept { return insets_; }
    /// What it takes to show all of its text in one line.
    double naturalWidth(const platform::Views& views) const;
    /// The text stands in the middle of its height.
    void setFrame(const platform::Views& views, platform::Rect frame);

private:
    const platform::Insets insets_;
    platform::Font font_;
    int lines_ = 1;
};

} // namespace zentavo
