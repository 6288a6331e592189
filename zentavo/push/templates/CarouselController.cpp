#include "zentavo/push/templates/CarouselController.h"

#include <algorithm>
#include <utility>

#include "zentavo/push/PushChoices.h"
#include "zentavo/push/templates/TemplatePalette.h"

namespace zentavo {

namespace {

constexpr double turning = 0.35; // seconds
/// Which pictures are fetched: this page's, two turns ahead, and one back.
constexpr std::ptrdiff_t nearby[] = {0, 1, 2, -1};

} // namespace

CarouselController::~CarouselController() { stop(); }

void CarouselController::build() {
    contentView = views().makeView();
    contentView->setName("zentavo.push.slides");
    contentView->setTouchThrough(true);
    contentView->setCornerRadius(12); // and so clipped
    view->addSubview(contentView);
    pageControl = views().makeView();
    pageControl->setName("zentavo.push.pages");
    pageControl->setTouchThrough(true);
    view->addSubview(pageControl);

    const auto& all = jsonContent.slides;
    if (hasBigImage()) {
        view->addSubview(templateBigImage->view());
    }
    if (all.size() > layout::mostSlides) {
        facade()->log("Push template: of " + std::to_string(all.size()) + " slides the first " +
                      std::to_string(layout::mostSlides) + " are shown");
    }
    for (std::size_t i = 0; i < std::min(all.size(), layout::mostSlides); ++i) {
        auto slide = views().makeView();
        slide->setName("zentavo.push.slide" + std::to_string(i + 1));
        slide->setSpokenName(std::to_string(i + 1) + "/" + std::to_string(std::min(all.size(), layout::mostSlides)));
        slide->setOnTap(whileLiving(*this, [i](CarouselController& self) { self.tapped(i); }));
        slide->setOnSwipe(whileLiving(*this, [](CarouselController& self, platform::Swipe swipe) {
            self.turn((swipe == platform::Swipe::left) != self.isRightToLeft() ? 1 : -1);
        }));
        auto picture = std::make_shared<ZentavoImageView>(views(), loader());
        slide->addSubview(picture->view());
        contentView->addSubview(slide);
        slides_.push_back(std::move(slide));
        itemViews.push_back(std::move(picture));
        auto dot = views().makeView();
        dot->setTouchThrough(true);
        dot->setCornerRadius(3.5);
        pageControl->addSubview(dot);
        dots_.push_back(std::move(dot));
    }
    pageControl->setHidden(dots_.size() < 2);
    update();
    fetch();
}

layout::PushFrames CarouselController::arrange(const layout::PushParts& parts) const {
    return hasBigImage() ? layout::pushColumn(parts) : layout::pushCarousel(parts, itemViews.size());
}

void CarouselController::place(const layout::PushFrames& frames) {
    const platform::Rect& area = frames.picture;
    contentView->setHidden(slides_.empty());
    contentView->setFrame(area);
    for (std::size_t i = 0; i < slides_.size(); ++i) {
        slides_[i]->setFrame({0, 0, area.width, area.height});
        slides_[i]->setHidden(i != currentItemIndex);
        itemViews[i]->setFrame({0, 0, area.width, area.height});
    }
    pageControl->setFrame(frames.pages);
    const auto places = layout::pageDots(frames.pages.width, frames.pages.height, dots_.size(), isRightToLeft());
    for (std::size_t i = 0; i < dots_.size(); ++i) {
        dots_[i]->setFrame(places[i]);
    }
    titleHeight = frames.title.height;
    subtitleHeight = frames.subtitle.height;
    bodyHeight = frames.body.height;
    viewWidth = view->frame().width;
    shape_ = pictureSize();
    imageViewBottomContraint = frames.height - area.y - area.height;
}

void CarouselController::paint(const TemplatePalette& palette) {
    dot_ = palette.dot;
    currentDot_ = palette.currentDot;
    for (const auto& each : itemViews) {
        each->setPlaceholder(palette.placeholder);
    }
    update();
}

platform::Size CarouselController::pictureSize() const {
    if (hasBigImage()) {
        return PushTemplateBaseController::pictureSize();
    }
    // The first picture that is there gives the shape to all: a page turn moves nothing else.
    for (const auto& each : itemViews) {
        if (each->state() == ZentavoImageView::State::shown) {
            return each->imageSize();
        }
    }
    return {16, 9};
}

CarouselController::ChosenURL CarouselController::chosenURL() const { return &PushChoices::setClickedImage; }

void CarouselController::appeared() { wait(); }
void CarouselController::disappeared() { stop(); }

void CarouselController::wait() {
    stop();
    if (isShown() && slides_.size() > 1) {
        timer = mainQueue().after(interval, whileLiving(*this, [](CarouselController& self) {
                                      self.timer = 0;
                                      self.turn(1);
                                  }));
    }
}

void CarouselController::stop() {
    if (timer != 0) {
        mainQueue().cancel(std::exchange(timer, 0));
    }
}

std::size_t CarouselController::slideAfter(std::ptrdiff_t pages) const {
    const auto count = static_cast<std::ptrdiff_t>(slides_.size());
    const auto place = (static_cast<std::ptrdiff_t>(currentItemIndex) + pages) % count;
    return static_cast<std::size_t>(place < 0 ? place + count : place);
}

void CarouselController::fetch() {
    if (slides_.empty()) {
        return;
    }
    for (const std::ptrdiff_t pages : nearby) {
        const std::size_t slide = slideAfter(pages);
        if (itemViews[slide]->state() == ZentavoImageView::State::empty) {
            itemViews[slide]->load(jsonContent.slides[slide].imageUrl,
                                   whileLiving(*this, [](CarouselController& self) { self.arrived(); }));
        }
    }
}

void CarouselController::arrived() {
    // Layout would cut a page turn short.
    if (pictureSize() != shape_) {
        layOut();
    }
}

void CarouselController::turn(int direction) {
    if (slides_.size() < 2) {
        return;
    }
    const auto leaving = slides_[currentItemIndex];
    currentItemIndex = slideAfter(direction);
    const auto coming = slides_[currentItemIndex];
    const platform::Rect here = {0, 0, contentView->frame().width, contentView->frame().height};
    const double way = (direction > 0) != isRightToLeft() ? here.width : -here.width;
    for (const auto& each : slides_) {
        each->setHidden(each != leaving && each != coming);
    }
    coming->setFrame({way, 0, here.width, here.height});
    leaving->setFrame(here);
    update();
    fetch();
    views().animate(
        turning,
        [&] {
            coming->setFrame(here);
            leaving->setFrame({-way, 0, here.width, here.height});
        },
        // Out of sight it must be out of reach, too: keys would still press it.
        whileLiving(*this, [leaving](CarouselController& self) {
            leaving->setHidden(leaving != self.slides_[self.currentItemIndex]);
        }));
    wait();
}

void CarouselController::tapped(std::size_t slide) { choose(jsonContent.slides[slide].url); }

void CarouselController::update() {
    currentItemView = itemViews.empty() ? nullptr : itemViews[currentItemIndex];
    for (std::size_t i = 0; i < dots_.size(); ++i) {
        dots_[i]->setBackground(i == currentItemIndex ? currentDot_ : dot_);
    }
}

} // namespace zentavo
