#include "zentavo/push/templates/RatingController.h"

#include <algorithm>

#include "zentavo/core/ZentavoState.h"
#include "zentavo/push/PushChoices.h"
#include "zentavo/push/templates/RatingIcons.h"
#include "zentavo/push/templates/TemplatePalette.h"

namespace zentavo {

namespace {

constexpr double rowHeight = 40;
constexpr double captionHeight = 26;
constexpr platform::Font captionFont{13, platform::FontWeight::regular};

std::size_t scaleOf(const NotificationProperties& data) {
    const std::int64_t scale = data.ratingSettings ? data.ratingSettings->scale : 0;
    return static_cast<std::size_t>(std::clamp<std::int64_t>(scale, 0, layout::mostIcons));
}

bool hasCaptions(const NotificationProperties& data) {
    return data.ratingSettings && data.ratingSettings->ratingText && !data.ratingSettings->ratingText->empty();
}

/// What the sender calls a rating; empty for none, and where it has no name.
std::string captionOf(const NotificationProperties& data, std::int64_t rating) {
    if (!hasCaptions(data) || rating <= 0) {
        return {};
    }
    const auto& texts = *data.ratingSettings->ratingText;
    const auto level = static_cast<std::size_t>(rating - 1);
    return level < texts.size() ? texts[level] : "";
}

} // namespace

RatingController::RatingController(Setup setup) : PushTemplateBaseController(std::move(setup)) {}

void RatingController::build() {
    view->addSubview(templateBigImage->view());
    const std::string host = facade()->endpoints().mediaHost;
    if (data.ratingSettings && data.ratingSettings->scale > static_cast<std::int64_t>(layout::mostIcons)) {
        facade()->log("Push template: of a scale of " + std::to_string(data.ratingSettings->scale) + " the first " +
                      std::to_string(layout::mostIcons) + " are shown; no higher rating can be chosen");
    }
    for (std::size_t i = 0; i < scaleOf(data); ++i) {
        Icon icon{views().makeView(), std::make_shared<ZentavoImageView>(views(), loader()),
                  std::make_shared<ZentavoImageView>(views(), loader()), views().makeLabel()};
        const auto tag = static_cast<std::int64_t>(i + 1);
        icon.view->setName("zentavo.push.rating" + std::to_string(tag));
        const std::string caption = captionOf(data, tag);
        icon.view->setSpokenName(std::to_string(tag) + "/" + std::to_string(scaleOf(data)) +
                                 (caption.empty() ? "" : " " + caption));
        icon.view->setOnTap(whileLiving(*this, [tag](RatingController& self) { self.rate(tag); }));
        icon.star->setTouchThrough(true);
        icon.star->setAlignment(platform::TextAlignment::centre);
        icon.star->setLines(1);
        icon.view->addSubview(icon.star);
        const auto arrived = whileLiving(*this, [](RatingController& self) { self.update(); });
        for (const auto& picture : {icon.selected, icon.unselected}) {
            picture->setContentMode(platform::ContentMode::aspectFit);
            icon.view->addSubview(picture->view());
            picture->load(ratingIconURL(host, picture == icon.selected ? data.ratingSettings->selectedIcon
                                                                       : data.ratingSettings->unselectedIcon),
                          arrived);
        }
        view->addSubview(icon.view);
        icons_.push_back(std::move(icon));
    }
    caption_ = std::make_unique<UIPaddingLabel>(views(), platform::Insets{4, 12, 4, 12});
    caption_->view->setName("zentavo.push.caption");
    caption_->view->setTouchThrough(true);
    view->addSubview(caption_->view);
    // Opened a second time, it shows what was chosen the first time.
    const auto chosen = std::make_shared<std::int64_t>(0);
    withChoices([chosen](const PushChoices& choices) { *chosen = choices.rating(); },
                whileLiving(*this, [chosen](RatingController& self) { self.show(*chosen); }));
}

layout::PushFrames RatingController::arrange(const layout::PushParts& parts) const { return layout::pushColumn(parts); }

double RatingController::extraHeight() const {
    return icons_.empty() ? 0 : rowHeight + (hasCaptions(data) ? captionHeight : 0);
}

void RatingController::place(const layout::PushFrames& frames) {
    const auto row = layout::ratingRow(frames.extra.width, rowHeight, icons_.size(), isRightToLeft());
    for (std::size_t i = 0; i < icons_.size(); ++i) {
        platform::Rect frame = row[i];
        frame.x += frames.extra.x;
        frame.y += frames.extra.y;
        const platform::Rect inside{0, 0, frame.width, frame.height};
        icons_[i].view->setFrame(frame);
        icons_[i].selected->setFrame(inside);
        icons_[i].unselected->setFrame(inside);
        const platform::Font font{frame.width * 1.1, platform::FontWeight::regular};
        const double height = std::min(frame.height * 1.6, views().textSize("★", font, frame.width * 2, 1).height);
        icons_[i].star->setFont(font);
        icons_[i].star->setFrame({0, (frame.height - height) / 2, frame.width, height});
    }
    const platform::Rect& extra = frames.extra;
    caption_->setFrame(views(), {extra.x, extra.y + rowHeight, extra.width, captionHeight});
    update();
}

void RatingController::paint(const TemplatePalette& palette) {
    starColour_ = palette.star;
    chosenColour_ = palette.chosenStar;
    caption_->label->setTextColour(palette.text);
}

void RatingController::rate(std::int64_t tag) {
    withChoices([tag](PushChoices& choices) { choices.setRating(tag); },
                whileLiving(*this, [tag](RatingController& self) { self.show(tag); }));
}

void RatingController::show(std::int64_t rating) {
    rating_ = std::clamp<std::int64_t>(rating, 0, static_cast<std::int64_t>(icons_.size()));
    layOut();
}

void RatingController::update() {
    for (std::size_t i = 0; i < icons_.size(); ++i) {
        const Icon& icon = icons_[i];
        const bool chosen = static_cast<std::int64_t>(i) < rating_;
        const auto& picture = chosen ? icon.selected : icon.unselected;
        icon.selected->view()->setHidden(!chosen);
        icon.unselected->view()->setHidden(chosen);
        icon.star->setHidden(picture->state() == ZentavoImageView::State::shown);
        icon.star->setText(chosen ? "★" : "☆");
        icon.star->setTextColour(chosen ? chosenColour_ : starColour_);
    }
    const std::string text = captionOf(data, rating_);
    caption_->view->setHidden(text.empty());
    caption_->setText(text, captionFont, 1);
}

} // namespace zentavo
