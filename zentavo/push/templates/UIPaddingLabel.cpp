#include "zentavo/push/templates/UIPaddingLabel.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zentavo {

UIPaddingLabel::UIPaddingLabel(platform::Views& views, platform::Insets insets)
    : view(views.makeView()), label(views.makeLabel()), insets_(insets) {
    label->setTouchThrough(true);
    label->setAlignment(platform::TextAlignment::centre);
    view->addSubview(label);
}

void UIPaddingLabel::setText(std::string text, platform::Font font, int lines) {
    font_ = font;
    lines_ = lines;
    label->setFont(font);
    label->setLines(lines);
    label->setText(std::move(text));
}

double UIPaddingLabel::naturalWidth(const platform::Views& views) const {
    constexpr double anyWidth = 10000;
    return views.textSize(label->text(), font_, anyWidth, 1).width + insets_.left + insets_.right;
}

void UIPaddingLabel::setFrame(const platform::Views& views, platform::Rect frame) {
    view->setFrame(frame);
    const double width = std::max(1.0, frame.width - insets_.left - insets_.right);
    const double height = views.textSize(label->text(), font_, width, lines_).height;
    label->setFrame({insets_.left, std::floor((frame.height - height) / 2), width, height});
}

} // namespace zentavo
