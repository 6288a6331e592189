#include "zentavo/inapp/TemplatePresenter.h"

#include "zentavo/foundation/Fault.h"
#include "zentavo/inapp/Frequency.h"

namespace zentavo {

namespace {

constexpr platform::Colour dimmed{0, 0, 0, 0.5};
constexpr platform::Colour clear{0, 0, 0, 0};

} // namespace

TemplatePresenter::TemplatePresenter(const std::shared_ptr<Zentavo>& facade,
                                     std::shared_ptr<const platform::UserInterface> userInterface, WebContent content,
                                     std::shared_ptr<PopupView> popup)
    : overlayView(userInterface->views->makeView()), tempateType(content.templateType),
      templateInfo(std::move(content)), facade_(facade), userInterface_(std::move(userInterface)),
      popup_(std::move(popup)) {
    overlayView->setName("zentavo.overlay");
}

TemplatePresenter::~TemplatePresenter() { takeDown(); }

bool TemplatePresenter::show() {
    const auto living = facade();
    platform::Views& views = *userInterface_->views;
    const platform::Rect bounds = views.mainScreenBounds();
    overlayView->setFrame(bounds);
    // Until the page says how large it is there is nothing to see, and the host stays as it was.
    overlayView->setBackground(clear);
    overlayView->setTouchThrough(true);
    overlayView->setOnTap([weak = weak_from_this()] {
        entryPoint("web view", [&] {
            if (const auto self = weak.lock()) {
                self->handleOverlayTap();
            }
        });
    });
    // Taking the message down says so too; it is closed by then.
    overlayView->setOnRemoved([weak = weak_from_this()] {
        entryPoint("view", [&] {
            if (const auto self = weak.lock()) {
                self->close(DeliveryTrace::ClosedBy::windowGone);
            }
        });
    });
    giveInitialFrame();
    popup_->dataCallback = [weak = weak_from_this()](const Map& body) {
        const auto self = weak.lock();
        const auto current = self && !self->closed_ ? self->facade() : nullptr;
        if (current) {
            self->handleMessage(*current, body);
        }
    };
    popup_->onProcessDied = [weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->close(DeliveryTrace::ClosedBy::pageProcessDied);
        }
    };
    resizes_ = views.listenForResizes([weak = weak_from_this()] {
        entryPoint("main queue", [&] {
            if (const auto self = weak.lock()) {
                self->handleResize();
            }
        });
    });
    popup_->listen();
    if (!views.showOverWindow(overlayView) || !views.showOverWindow(popup_->view)) {
        takeDown();
        return false;
    }
    shown(*living);
    return true;
}

layout::Screen TemplatePresenter::screen() const {
    const platform::Rect bounds = userInterface_->views->mainScreenBounds();
    return {{bounds.width, bounds.height}, userInterface_->views->safeAreaInsets()};
}

void TemplatePresenter::takeScreen() {
    overlayView->setHidden(false);
    if (!layout::isBar(tempateType)) {
        overlayView->setBackground(dimmed);
        overlayView->setTouchThrough(false);
    }
}

void TemplatePresenter::handleResize() {
    if (closed_) {
        return;
    }
    overlayView->setFrame(userInterface_->views->mainScreenBounds());
    if (placement_) {
        handleResized();
    } else {
        giveInitialFrame();
    }
}

void TemplatePresenter::place(Placement placement) {
    placement_ = std::move(placement);
    move();
}

void TemplatePresenter::move() {
    userInterface_->views->animate(
        0, [&] { popup_->setFrame(placement_(screen())); },
        [weak = weak_from_this()] {
            const auto self = weak.lock();
            if (self && !self->closed_) {
                self->popup_->tellResized();
            }
        });
}

void TemplatePresenter::clicked(Zentavo& facade, const ClickMessage& click) {
    // Whatever the page got wrong, a click ends the message.
    struct Closing {
        TemplatePresenter& presenter;
        ~Closing() {
            entryPoint("web view", [&] { presenter.close(DeliveryTrace::ClosedBy::click); });
        }
    } closing{*this};
    if (click.trackingURL) {
        facade.handleTrackingURL(*click.trackingURL, nullptr);
    }
    Frequency::record(*facade.state(), Frequency::Subject::of(templateInfo), "click");
    if (!click.route) {
        return;
    }
    if (const auto redirect = facade.callbackHandleRedirectTemplate()) {
        redirect(*click.route);
        return;
    }
    const auto target = URL::parse(*click.route);
    if (!target) {
        fatalError("the route of an in-app message is no URL: \"" + *click.route + "\"");
    }
    userInterface_->application->open(*target);
}

void TemplatePresenter::close(DeliveryTrace::ClosedBy closedBy) {
    if (closed_) {
        return;
    }
    const auto self = shared_from_this(); // the state lets go of it
    takeDown();
    if (const auto living = facade()) {
        Zentavo::State& state = *living->state();
        if (state.currentTemplate == self) {
            state.currentTemplate = nullptr;
        }
        state.isShowingTemplate.set(false);
    }
    if (onClosed) {
        onClosed(closedBy);
    }
}

void TemplatePresenter::takeDown() {
    if (closed_) {
        return;
    }
    closed_ = true;
    resizes_.reset();
    overlayView->setHidden(true);
    popup_->view->setHidden(true);
    popup_->view->removeFromSuperview();
    overlayView->removeFromSuperview();
}

} // namespace zentavo
