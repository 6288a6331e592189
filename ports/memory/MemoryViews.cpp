#include "ports/memory/MemoryViews.h"

#include <algorithm>

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
void MemoryView::setName(std::string name) {
    onMainQueue();
    name_ = std::move(name);
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
    if (const auto holder = holder_.lock()) {
        std::erase_if(*holder, [&](const auto& each) { return each.get() == static_cast<platform::View*>(this); });
    }
    enter(nullptr, nullptr);
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

MemoryViews::MemoryViews(std::shared_ptr<platform::MainQueue> mainQueue) : mainQueue_(std::move(mainQueue)) {}

std::shared_ptr<platform::View> MemoryViews::makeView() { return std::make_shared<MemoryView>(mainQueue_); }

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
