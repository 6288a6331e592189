#include "zentavo/push/templates/TextOverlayController.h"

#include <cmath>

#include "zentavo/push/templates/TemplatePalette.h"

namespace zentavo {

namespace {

constexpr int strips = 48;
constexpr double darkest = 0.78;
/// Where the strips are as dark as they become.
constexpr double darkFrom = 0.55;

} // namespace

void TextOverlayController::build() {
    view->addSubview(templateBigImage->view());
    for (int i = 0; i < strips; ++i) {
        const double way = std::min(1.0, (i + 1.0) / strips / darkFrom);
        auto strip = views().makeView();
        strip->setTouchThrough(true);
        strip->setBackground({0, 0, 0, darkest * way * way * (3 - 2 * way)});
        view->addSubview(strip);
        scrim_.push_back(std::move(strip));
    }
    for (const auto& label : {titleLabel, subTitleLabel, bodyLabel}) {
        view->addSubview(label); // on top
    }
}

layout::PushFrames TextOverlayController::arrange(const layout::PushParts& parts) const {
    return layout::pushOverlay(parts);
}

void TextOverlayController::place(const layout::PushFrames& frames) {
    const auto edge = [&](int i) { return std::round(frames.scrim.y + frames.scrim.height * i / strips); };
    for (int i = 0; i < strips; ++i) {
        scrim_[static_cast<std::size_t>(i)]->setFrame(
            {frames.scrim.x, edge(i), frames.scrim.width, edge(i + 1) - edge(i)});
    }
    paint(TemplatePalette::of(views().appearance(), data.backgroundColor.value_or("")));
}

void TextOverlayController::paint(const TemplatePalette& palette) {
    const bool onPicture = pictureSize().width > 0;
    const platform::Colour white{1, 1, 1, 1};
    titleLabel->setTextColour(onPicture ? white : palette.title);
    for (const auto& label : {subTitleLabel, bodyLabel}) {
        label->setTextColour(onPicture ? platform::Colour{1, 1, 1, 0.88} : palette.text);
    }
}

} // namespace zentavo
