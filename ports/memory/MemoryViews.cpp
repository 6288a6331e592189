#include "ports/memory/MemoryViews.h"

#include <algorithm>
#include <cmath>

#include "ports/memory/MemoryImageView.h"
#include "ports/memory/MemoryLabel.h"
#include "zentavo/foundation/Fault.h"

namespace zentavo::testing {

MemoryView::MemoryView(std::shared_ptr<platform::MainQueue> mainQueue) : mainQueue_(std::move(mainQueue)) {
    onMainQueue();
}

MemoryView::~MemoryView() {
    entryPoint("view", [&] { onMainQueue(); });
    for (const auto& child : *children_) {
        if (auto* view = dynamic_cast<MemoryView*>(child.get())) {
            view->superview_ = nullptr;
        }
    }
}

void MemoryView::onMainQueue() const {
    if (!mainQueue_->isCurrent()) {
        fatalError("a view is touched off the main queue");
    }
}

void MemoryView::setFrame(platform::Rect frame) {
    onMainQueue();
    frame_ = frame;
}
platform::Rect MemoryView::frame() const {
    onMainQueue();
    return frame_;
}
void MemoryView::setHidden(bool hidden) {
    onMainQueue();
    hidden_ = hidden;
}
bool MemoryView::isHidden() const {
    onMainQueue();
    return hidden_;
}
void MemoryView::setBackground(platform::Colour colour) {
    onMainQueue();
    background_ = colour;
}
void MemoryView::setCornerRadius(double radius) {
    onMainQueue();
    cornerRadius_ = radius;
}
double MemoryView::cornerRadius() const {
    onMainQueue();
    return cornerRadius_;
}
void MemoryView::setTouchThrough(bool through) {
    onMainQueue();
    touchThrough_ = through;
}
void MemoryView::setOnTap(std::function<void()> onTap) {
    onMainQueue();
    onTap_ = std::move(onTap);
}
void MemoryView::setOnSwipe(std::function<void(platform::Swipe)> onSwipe) {
    onMainQueue();
    onSwipe_ = std::move(onSwipe);
}
void MemoryView::setOnRemoved(std::function<void()> onRemoved) {
    onMainQueue();
    onRemoved_ = std::move(onRemoved);
}
void MemoryView::setName(std::string name) {
    onMainQueue();
    name_ = std::move(name);
}
void MemoryView::setSpokenName(std::string name) {
    onMainQueue();
    spokenName_ = std::move(name);
}

void MemoryView::enter(std::shared_ptr<Children> holder, MemoryView* superview) {
    holder_ = holder;
    superview_ = superview;
}

void MemoryView::addSubview(std::shared_ptr<platform::View> view) {
    onMainQueue();
    view->removeFromSuperview();
    if (auto* memory = dynamic_cast<MemoryView*>(view.get())) {
        memory->enter(children_, this);
    }
    children_->push_back(std::move(view));
}

void MemoryView::removeFromSuperview() {
    onMainQueue();
    const auto self = shared_from_this(); // what holds it lets go
    const bool shown = superview_ == nullptr && !holder_.expired();
    if (const auto holder = holder_.lock()) {
        std::erase_if(*holder, [&](const auto& each) { return each.get() == static_cast<platform::View*>(this); });
    }
    enter(nullptr, nullptr);
    if (shown) {
        tellRemoved();
    }
}

void MemoryView::tellRemoved() {
    mainQueue_->async([weak = weak_from_this()] {
        const auto self = weak.lock();
        const auto onRemoved = self ? self->onRemoved_ : nullptr;
        if (onRemoved) {
            onRemoved();
        }
    });
}

std::vector<std::shared_ptr<platform::View>> MemoryView::subviews() const {
    onMainQueue();
    return *children_;
}

bool MemoryView::isVisible() const {
    return !hidden_ && !holder_.expired() && (superview_ == nullptr || superview_->isVisible());
}

void MemoryView::tap() {
    onMainQueue();
    if (isVisible() && !touchThrough_ && onTap_) {
        mainQueue_->async([weak = weak_from_this()] {
            const auto self = weak.lock();
            const auto onTap = self ? self->onTap_ : nullptr;
            if (onTap) {
                onTap();
            }
        });
    }
}

void MemoryView::swipe(platform::Swipe direction) {
    onMainQueue();
    if (isVisible() && !touchThrough_ && onSwipe_) {
        mainQueue_->async([weak = weak_from_this(), direction] {
            const auto self = weak.lock();
            const auto onSwipe = self ? self->onSwipe_ : nullptr;
            if (onSwipe) {
                onSwipe(direction);
            }
        });
    }
}

MemoryViews::MemoryViews(std::shared_ptr<platform::MainQueue> mainQueue) : mainQueue_(std::move(mainQueue)) {}

std::shared_ptr<platform::View> MemoryViews::makeView() { return std::make_shared<MemoryView>(mainQueue_); }

std::shared_ptr<platform::Label> MemoryViews::makeLabel() { return std::make_shared<MemoryLabel>(mainQueue_); }

std::shared_ptr<platform::ImageView> MemoryViews::makeImageView() {
    return std::make_shared<MemoryImageView>(mainQueue_);
}

platform::Size MemoryViews::textSize(const std::string& text, platform::Font font, double width, int lines) const {
    const double letter = font.size / 2;
    const auto perLine = std::max(1.0, std::floor(width / letter));
    double rows = 0;
    double longest = 0;
    for (std::size_t from = 0; !text.empty() && from <= text.size();) {
        const std::size_t to = std::min(text.find('\n', from), text.size());
        const auto letters = static_cast<double>(std::count_if(
            text.begin() + static_cast<std::ptrdiff_t>(from), text.begin() + static_cast<std::ptrdiff_t>(to),
            [](char each) { return (static_cast<unsigned char>(each) & 0xC0U) != 0x80U; }));
        rows += std::max(1.0, std::ceil(letters / perLine));
        longest = std::max(longest, std::min(letters, perLine));
        from = to + 1;
    }
    if (lines > 0) {
        rows = std::min(rows, static_cast<double>(lines));
    }
    return {std::ceil(longest * letter), std::ceil(rows * font.size * 1.25)};
}

void MemoryViews::closeWindow() {
    window_ = false;
    const auto gone = *overWindow_;
    for (const auto& view : gone) {
        view->removeFromSuperview();
    }
}

void MemoryViews::setOnChange(std::function<void()> onChange) {
    onChange_ = onChange ? std::make_shared<std::function<void()>>(std::move(onChange)) : nullptr;
}

void MemoryViews::setAppearance(platform::Appearance appearance) {
    appearance_ = appearance;
    tellChange();
}

void MemoryViews::tellChange() {
    mainQueue_->async([weak = std::weak_ptr(onChange_)] {
        if (const auto handler = weak.lock()) {
            (*handler)();
        }
    });
}

bool MemoryViews::showOverWindow(std::shared_ptr<platform::View> view) {
    if (!window_) {
        return false;
    }
    view->removeFromSuperview();
    if (auto* memory = dynamic_cast<MemoryView*>(view.get())) {
        memory->enter(overWindow_, nullptr);
    }
    overWindow_->push_back(std::move(view));
    return true;
}

void MemoryViews::animate(double seconds, std::function<void()> change, std::function<void()> done) {
    animations_.push_back(seconds);
    change();
    if (done) {
        mainQueue_->async(std::move(done));
    }
}

void MemoryViews::setScreen(platform::Rect bounds, platform::Insets safeArea) {
    bounds_ = bounds;
    safeArea_ = safeArea;
    tellChange();
    std::erase_if(resizeListeners_, [](const auto& weak) { return weak.expired(); });
    for (const auto& weak : resizeListeners_) {
        mainQueue_->async([weak] {
            if (const auto listener = weak.lock()) {
                (*listener)();
            }
        });
    }
}

std::shared_ptr<const void> MemoryViews::listenForResizes(std::function<void()> onResize) {
    std::erase_if(resizeListeners_, [](const auto& weak) { return weak.expired(); });
    auto listener = std::make_shared<std::function<void()>>(std::move(onResize));
    resizeListeners_.push_back(listener);
    return listener;
}

std::shared_ptr<MemoryView> MemoryViews::named(const std::string& name) const {
    auto left = *overWindow_;
    while (!left.empty()) {
        const auto view = std::dynamic_pointer_cast<MemoryView>(left.back());
        left.pop_back();
        if (view && view->name() == name) {
            return view;
        }
        if (view) {
            left.insert(left.end(), view->children_->begin(), view->children_->end());
        }
    }
    return nullptr;
}

} // namespace zentavo::testing
