#include "zentavo/push/templates/ZentavoImageView.h"

#include <utility>

#include "zentavo/push/templates/ImageLoader.h"

namespace zentavo {

ZentavoImageView::ZentavoImageView(platform::Views& views, std::shared_ptr<ImageLoader> loader)
    : components{views.makeView(), views.makeImageView()}, loader_(std::move(loader)) {
    components.container->setTouchThrough(true);
    components.picture->setTouchThrough(true);
    components.picture->setContentMode(platform::ContentMode::aspectFill);
    components.container->addSubview(components.picture);
}

void ZentavoImageView::load(const std::string& url, std::function<void()> ended) {
    const std::uint64_t load = ++loads_;
    if (auto known = url.empty() ? nullptr : loader_->cached(url)) {
        show(std::move(known));
        return;
    }
    size_ = {};
    components.picture->setImage(nullptr);
    state_ = url.empty() ? State::empty : State::loading;
    paint();
    if (url.empty()) {
        return;
    }
    loader_->load(url, [weak = weak_from_this(), load, ended = std::move(ended)](ImageLoader::Picture picture) {
        const auto self = weak.lock();
        if (!self || self->loads_ != load) {
            return;
        }
        self->show(std::move(picture));
        if (ended) {
            ended();
        }
    });
}

void ZentavoImageView::show(std::shared_ptr<const platform::Image> image) {
    state_ = image ? State::shown : State::missing;
    size_ = image ? image->size() : platform::Size{};
    components.picture->setImage(std::move(image));
    paint();
}

void ZentavoImageView::setFrame(platform::Rect frame) {
    components.container->setFrame(frame);
    components.picture->setFrame({0, 0, frame.width, frame.height});
}

void ZentavoImageView::setPlaceholder(platform::Colour colour) {
    placeholder_ = colour;
    paint();
}

void ZentavoImageView::paint() {
    components.container->setBackground(state_ == State::shown || state_ == State::empty ? platform::Colour{0, 0, 0, 0}
                                                                                         : placeholder_);
}

} // namespace zentavo
