#include "zentavo/push/templates/PushTemplateBaseController.h"

#include <algorithm>
#include <array>
#include <utility>

#include "zentavo/core/ZentavoState.h"
#include "zentavo/push/PushChoices.h"
#include "zentavo/push/PushTemplate.h"
#include "zentavo/push/templates/CarouselController.h"
#include "zentavo/push/templates/ImageLoader.h"
#include "zentavo/push/templates/PushTemplateLayout.h"
#include "zentavo/push/templates/RatingController.h"
#include "zentavo/push/templates/SmallImageController.h"
#include "zentavo/push/templates/StyleBasicController.h"
#include "zentavo/push/templates/TemplatePalette.h"
#include "zentavo/push/templates/TextDirection.h"
#include "zentavo/push/templates/TextOverlayController.h"

namespace zentavo {

namespace {

using platform::Font;
using platform::FontWeight;

constexpr Font titleFont{17, FontWeight::bold};
constexpr Font subtitleFont{14, FontWeight::medium};
constexpr Font bodyFont{15, FontWeight::regular};
constexpr Font buttonFont{15, FontWeight::medium};
constexpr int titleLines = 2;
constexpr int subtitleLines = 1;
constexpr int bodyLines = 4;

/// What fits a notification many times over; the rest would only be measured.
std::string shortened(const std::string& text) {
    constexpr std::size_t most = 2000;
    std::size_t end = std::min(most, text.size());
    while (end > 0 && end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    return text.substr(0, end);
}

std::string textUnder(const Map& map, std::string_view key) {
    const Value* value = map.find(key);
    const auto* text = value != nullptr ? value->asString() : nullptr;
    return text != nullptr ? *text : std::string();
}

std::shared_ptr<platform::Label> makeLabel(platform::Views& views, platform::View& around, const std::string& text,
                                           Font font, int lines, const char* name) {
    auto label = views.makeLabel();
    label->setName(name);
    label->setTouchThrough(true);
    label->setFont(font);
    label->setLines(lines);
    label->setText(text);
    label->setHidden(text.empty());
    around.addSubview(label);
    return label;
}

std::shared_ptr<ImageLoader> loaderOf(Zentavo::State& state) {
    if (!state.pushImages) {
        state.pushImages = std::make_shared<ImageLoader>(state.platform, state.log);
    }
    return state.pushImages;
}

const ActionButtons::Button* button(const NotificationProperties& data, int tag) {
    if (!data.actionButtons) {
        return nullptr;
    }
    const auto& found = tag == 1 ? data.actionButtons->button1 : data.actionButtons->button2;
    return found ? &*found : nullptr;
}

} // namespace

std::shared_ptr<PushTemplateBaseController>
PushTemplateBaseController::handleNotification(std::shared_ptr<platform::NotificationExtensionContext> withController,
                                               const platform::Notification& withNotification) {
    return entryPoint(
        "handleNotification",
        [&]() -> std::shared_ptr<PushTemplateBaseController> {
            const auto sdk = Zentavo::shared();
            Zentavo::State& state = *sdk->state();
            const auto userInterface = state.platform->userInterface();
            const Value* entry = withNotification.request.content.userInfo.find("aps");
            const Map* aps = entry != nullptr ? entry->asMap() : nullptr;
            if (aps == nullptr || !userInterface->views) {
                state.log->write(aps == nullptr ? "Push template: the notification has no payload"
                                                : "Push template: there is no window to show it in");
                return nullptr;
            }
            NotificationProperties properties;
            if (auto decoded = NotificationProperties::read(*aps)) {
                properties = std::move(*decoded);
            } else {
                state.log->write("Push template: " + decoded.error().message);
                properties.template_ = textUnder(*aps, "template");
                properties.urlImageString = textUnder(*aps, "urlImageString");
            }
            const std::string name = properties.template_.value_or("");
            Setup setup{sdk, userInterface, std::move(withController), withNotification.request.content,
                        std::move(properties)};
            std::shared_ptr<PushTemplateBaseController> made;
            if (name == PushTemplate::rating) {
                made = std::make_shared<RatingController>(std::move(setup));
            } else if (name == PushTemplate::carousel) {
                made = std::make_shared<CarouselController>(std::move(setup));
            } else if (name == PushTemplate::smallImage) {
                made = std::make_shared<SmallImageController>(std::move(setup));
            } else if (name == PushTemplate::textOverlay) {
                made = std::make_shared<TextOverlayController>(std::move(setup));
            } else {
                made = std::make_shared<StyleBasicController>(std::move(setup));
            }
            return made->show() ? made : nullptr;
        },
        nullptr);
}

PushTemplateBaseController::PushTemplateBaseController(Setup setup)
    : titleNoti(shortened(setup.notification.title)), subTitleNoti(shortened(setup.notification.subtitle)),
      bodyNoti(shortened(setup.notification.body)), data(std::move(setup.data)),
      view(setup.userInterface->views->makeView()), templateBigImage(std::make_shared<ZentavoImageView>(
                                                        *setup.userInterface->views, loaderOf(*setup.facade->state()))),
      titleLabel(makeLabel(*setup.userInterface->views, *view, titleNoti, titleFont, titleLines, "zentavo.push.title")),
      subTitleLabel(makeLabel(*setup.userInterface->views, *view, subTitleNoti, subtitleFont, subtitleLines,
                              "zentavo.push.subtitle")),
      bodyLabel(makeLabel(*setup.userInterface->views, *view, bodyNoti, bodyFont, bodyLines, "zentavo.push.body")),
      stackView(setup.userInterface->views->makeView()),
      button1Label(std::make_unique<UIPaddingLabel>(*setup.userInterface->views)),
      button2Label(std::make_unique<UIPaddingLabel>(*setup.userInterface->views)),
      isContainActionButton(button(data, 1) != nullptr || button(data, 2) != nullptr), facade_(setup.facade),
      userInterface_(std::move(setup.userInterface)), context_(std::move(setup.context)),
      loader_(loaderOf(*setup.facade->state())),
      choosing_(setup.facade->state()->platform->queues->make("zentavo.push.choices", platform::QueueKind::serial)),
      rightToLeft_(zentavo::isRightToLeft(titleNoti.empty() ? bodyNoti : titleNoti)) {}

PushTemplateBaseController::~PushTemplateBaseController() {
    if (shown_) {
        views().setOnChange(nullptr);
        view->removeFromSuperview();
    }
}

bool PushTemplateBaseController::show() {
    const auto living = facade();
    Zentavo::State& state = *living->state();
    if (const auto before = state.currentPush) {
        before->close();
    }
    view->setName("zentavo.push");
    templateBigImage->view()->setName("zentavo.push.image");
    stackView->setName("zentavo.push.buttons");
    stackView->setTouchThrough(true);
    view->addSubview(stackView);
    for (const int tag : {1, 2}) {
        const auto& label = tag == 1 ? button1Label : button2Label;
        const ActionButtons::Button* found = button(data, tag);
        label->view->setName("zentavo.push.button" + std::to_string(tag));
        label->view->setCornerRadius(10);
        label->view->setHidden(found == nullptr);
        label->setText(found != nullptr ? shortened(found->label) : "", buttonFont, 1);
        label->view->setSpokenName(label->label->text());
        auto& tapped = tag == 1 ? tapGR1 : tapGR2;
        tapped = whileLiving(*this, [tag](const PushTemplateBaseController& self) { self.handleTap(tag); });
        label->view->setOnTap(tapped);
        stackView->addSubview(label->view);
    }
    build();
    if (hasBigImage()) {
        templateBigImage->load(data.urlImageString.value_or(""),
                               whileLiving(*this, [](PushTemplateBaseController& self) { self.layOut(); }));
    }
    view->setOnRemoved(whileLiving(*this, [](PushTemplateBaseController& self) { self.ended(); }));
    changed();
    if (!views().showOverWindow(view)) {
        return false;
    }
    views().setOnChange(whileLiving(*this, [](PushTemplateBaseController& self) { self.changed(); }));
    shown_ = true;
    state.currentPush = shared_from_this();
    appeared();
    return true;
}

/// Another window size, or another appearance.
void PushTemplateBaseController::changed() {
    const TemplatePalette palette = TemplatePalette::of(views().appearance(), data.backgroundColor.value_or(""));
    view->setBackground(palette.card);
    templateBigImage->setPlaceholder(palette.placeholder);
    titleLabel->setTextColour(palette.title);
    subTitleLabel->setTextColour(palette.text);
    bodyLabel->setTextColour(palette.text);
    for (const auto* label : {button1Label.get(), button2Label.get()}) {
        label->view->setBackground(palette.button);
        label->label->setTextColour(palette.buttonLabel);
    }
    paint(palette);
    layOut();
}

layout::PushParts PushTemplateBaseController::measured(platform::Size area) const {
    layout::PushParts parts;
    parts.area = area;
    parts.picture = pictureSize();
    const bool beside = textsBesidePicture() && parts.picture.width > 0;
    const double width = layout::pushTextWidth(area.width, beside);
    parts.title = views().textSize(titleNoti, titleFont, width, titleLines).height;
    parts.subtitle = views().textSize(subTitleNoti, subtitleFont, width, subtitleLines).height;
    parts.body = views().textSize(bodyNoti, bodyFont, width, bodyLines).height;
    parts.extra = extraHeight();
    for (const int tag : {1, 2}) {
        if (button(data, tag) != nullptr) {
            ++parts.buttons;
            parts.widestButton =
                std::max(parts.widestButton, (tag == 1 ? button1Label : button2Label)->naturalWidth(views()));
        }
    }
    parts.rightToLeft = rightToLeft_;
    return parts;
}

void PushTemplateBaseController::layOut() {
    const platform::Rect bounds = views().mainScreenBounds();
    view->setFrame(bounds);
    layout::PushParts parts = measured({bounds.width, bounds.height});
    const layout::PushFrames frames = arrange(parts);
    templateBigImage->view()->setHidden(frames.picture.width <= 0);
    templateBigImage->setFrame(frames.picture);
    titleLabel->setFrame(frames.title);
    subTitleLabel->setFrame(frames.subtitle);
    bodyLabel->setFrame(frames.body);
    stackView->setHidden(!isContainActionButton);
    stackView->setFrame(frames.buttons);
    const bool onlySecond = button(data, 1) == nullptr;
    button1Label->setFrame(views(), frames.button1);
    button2Label->setFrame(views(), onlySecond ? frames.button1 : frames.button2);
    place(frames);

    // What it would like to be does not depend on what the window is now.
    parts.area.height = layout::pushTallest;
    const double wanted = arrange(parts).height;
    if (wanted != viewHeight) {
        viewHeight = wanted;
        if (context_) {
            context_->setPreferredHeight(wanted);
        }
    }
}

platform::Size PushTemplateBaseController::pictureSize() const {
    switch (templateBigImage->state()) {
    case ZentavoImageView::State::shown:
        return templateBigImage->imageSize();
    case ZentavoImageView::State::loading:
        return {2, 1}; // as most senders make them
    case ZentavoImageView::State::empty:
    case ZentavoImageView::State::missing:
        break;
    }
    return {};
}

void PushTemplateBaseController::withChoices(std::function<void(PushChoices&)> work, platform::Block then) const {
    const auto living = facade();
    if (!living) {
        return;
    }
    // `then` moves on: what it holds belongs to the main queue, its release included.
    choosing_->async([system = living->state()->platform, mainQueue = userInterface_->mainQueue, id = data.pushId,
                      work = std::move(work), then = std::move(then)]() mutable {
        entryPoint("push", [&] {
            PushChoices choices(*system->preferences, id);
            work(choices);
        });
        mainQueue->async(std::move(then));
    });
}

PushTemplateBaseController::ChosenURL PushTemplateBaseController::chosenURL() const {
    return &PushChoices::setClickedURL;
}

void PushTemplateBaseController::handleTap(int tag) const {
    if (const ActionButtons::Button* found = button(data, tag)) {
        choose(found->url);
    }
}

void PushTemplateBaseController::choose(const std::string& url) const {
    if (url.empty()) {
        return;
    }
    // The app may read the choice as soon as it is told to open the notification. By then this view may be gone.
    withChoices([store = chosenURL(), url](PushChoices& choices) { (choices.*store)(url); },
                [context = context_, application = userInterface_->application, target = URL::parse(url)] {
                    entryPoint("push", [&] {
                        if (target && !(context && context->performNotificationDefaultAction())) {
                            application->open(*target);
                        }
                    });
                });
}

void PushTemplateBaseController::close() {
    if (shown_) {
        view->removeFromSuperview();
        ended();
    }
}

void PushTemplateBaseController::ended() {
    if (!std::exchange(shown_, false)) {
        return;
    }
    const auto self = shared_from_this(); // the state lets go of it
    disappeared();
    views().setOnChange(nullptr);
    if (const auto living = facade(); living && living->state()->currentPush == self) {
        living->state()->currentPush = nullptr;
    }
}

} // namespace zentavo
