#include "zentavo/inapp/TemplateCodeMode.h"

#include "zentavo/foundation/Fault.h"
#include "zentavo/foundation/JSON.h"
#include "zentavo/foundation/Printable.h"
#include "zentavo/inapp/ViewInfoProof.h"
#include "zentavo/tracking/CDPEvent.h"

namespace zentavo {

namespace {

Map withCampaign(Map event, const WebContent& content) {
    event.set("selected_story_id", content.storyId);
    event.set("selected_variant_id", content.variantId);
    event.set("selected_zone_id", content.zoneId);
    event.set("selected_view_id", "optin");
    return event;
}

} // namespace

TemplateCodeMode::TemplateCodeMode(const std::shared_ptr<Zentavo>& facade,
                                   std::shared_ptr<const platform::UserInterface> userInterface,
                                   std::shared_ptr<platform::WebView> page, WebContent content, Map event)
    : TemplateCodeMode(
          facade, userInterface,
          std::make_shared<CustomPopupCodeMode>(*userInterface->views, std::move(page), facade->state()->log),
          std::move(content), std::move(event)) {}

TemplateCodeMode::TemplateCodeMode(const std::shared_ptr<Zentavo>& facade,
                                   std::shared_ptr<const platform::UserInterface> userInterface,
                                   std::shared_ptr<CustomPopupCodeMode> popup, WebContent content, Map event)
    : TemplatePresenter(facade, std::move(userInterface), std::move(content), popup), customPopupView(std::move(popup)),
      eventInfo(withCampaign(std::move(event), templateInfo)) {
    customPopupView->javascript = templateInfo.javascript;
}

void TemplateCodeMode::shown(Zentavo& facade) {
    takeScreen();
    // A bar too: nothing but a tap beside it ends a message whose page never comes.
    overlayView->setTouchThrough(false);
    customPopupView->onLoaded = [weak = weak_from_this()] {
        if (const auto self = std::static_pointer_cast<TemplateCodeMode>(weak.lock())) {
            self->handleLoaded();
        }
    };
    askTemplateInfo(facade);
    askViewInfo(facade);
}

std::shared_ptr<CDPDeliveryOperation> TemplateCodeMode::cdpDeliveryOperation(Zentavo& facade) {
    if (!cdpDeliveryOperation_) {
        const auto& state = *facade.state();
        cdpDeliveryOperation_ =
            std::make_shared<CDPDeliveryOperation>(std::make_shared<HTTPClient>(state.platform, state.log));
    }
    return cdpDeliveryOperation_;
}

HTTPClient::Completion
TemplateCodeMode::onMainQueue(void (TemplateCodeMode::*handler)(const std::optional<std::string>&)) {
    // The worker must not hold the presenter: it might be the last who does, and views end on the main queue only.
    return [weak = weak_from_this(), queue = mainQueue(), handler](std::optional<std::string> data,
                                                                   const std::optional<Error>&) {
        queue->async([weak, handler, data = std::move(data)] {
            entryPoint("main queue", [&] {
                if (const auto self = std::static_pointer_cast<TemplateCodeMode>(weak.lock())) {
                    (self.get()->*handler)(data);
                }
            });
        });
    };
}

void TemplateCodeMode::askTemplateInfo(Zentavo& facade) {
    cdpDeliveryOperation(facade)->templateInfo(facade.endpoints(), facade.getPortalId().value_or(""),
                                               facade.getPropsId(), eventInfo,
                                               onMainQueue(&TemplateCodeMode::handleTemplateInfo));
}

void TemplateCodeMode::handleTemplateInfo(const std::optional<std::string>& data) {
    const auto living = facade();
    if (!living) {
        return;
    }
    auto info = data ? TemplateInfoResponse::decode(*data) : Result<TemplateInfoResponse>(Error{"no answer"});
    if (!info) {
        living->log("In-app message: its layout cannot be read: " + printable(info.error().message));
    }
    if (info && info->data && info->data->codeModeSettings) {
        layout_ = std::move(info->data);
        return placeLaidOut();
    }
    if (info && info->data) {
        options_ = std::move(info->data->options);
    }
    sizeMissing_ = true;
    if (loaded_) {
        measure();
    }
}

void TemplateCodeMode::handleViewInfo(const std::optional<std::string>& data) {
    const auto living = facade();
    if (!living) {
        return;
    }
    auto info = data ? ViewInfoResponse::decode(*data) : Result<ViewInfoResponse>(Error{"no answer"});
    if (!info) {
        living->log("In-app message: its content cannot be read: " + printable(info.error().message));
        return;
    }
    trackingUrls_ = std::move(info->data.trackingUrls);
    customPopupView->htmlString = std::move(info->data.content.html);
    customPopupView->load();
    placeLaidOut();
    fire(trackingUrls_.impression);
}

void TemplateCodeMode::handleLoaded() {
    loaded_ = true;
    fire(trackingUrls_.viewable);
    if (sizeMissing_) {
        measure();
    }
}

/// A page is as wide as it was made, so what it asked for in the old window says nothing in the new one.
void TemplateCodeMode::handleResized() {
    if (layout_) {
        return move();
    }
    giveInitialFrame();
    measure(&platform::WebView::evaluateAfterLayout);
}

/// Without a size in the layout the page is as large as it asks to be.
void TemplateCodeMode::measure(Evaluate evaluate) {
    const auto measured = [weak = weak_from_this()](const Result<Value>& result) {
        entryPoint("web view", [&] {
            const auto self = std::static_pointer_cast<TemplateCodeMode>(weak.lock());
            const List* sides = result ? result->asList() : nullptr;
            if (!self || self->layout_ || sides == nullptr || sides->size() != 2) {
                return;
            }
            const auto width = (*sides)[0].exactInt64();
            const auto height = (*sides)[1].exactInt64();
            if (width && height) {
                self->placeMeasured(*width, *height);
            }
        });
    };
    ((*customPopupView->webView).*
     evaluate)("[document.documentElement.scrollWidth, document.documentElement.scrollHeight]", measured);
}

void TemplateCodeMode::placeMeasured(std::int64_t width, std::int64_t height) {
    if (!options_) {
        // Nobody knows where it belongs.
        return place([message = SizeMessage{width, height, 0, 0, "px", "bottom"}](const layout::Screen& screen) {
            return layout::templateFrame("", message, {}, screen);
        });
    }
    CodeModeSettings size;
    size.width = width;
    size.height = height;
    placeBy({options_, std::move(size)});
}

/// Without content there is nothing to be seen, and a tap anywhere is one beside it.
void TemplateCodeMode::placeLaidOut() {
    if (layout_ && !customPopupView->htmlString.empty()) {
        placeBy(*layout_);
    }
}

void TemplateCodeMode::placeBy(TemplateInfoResponse::TemplateData data) {
    place([type = tempateType, data = std::move(data)](const layout::Screen& screen) {
        return layout::codeModeFrame(type, data, screen);
    });
}

void TemplateCodeMode::fire(const std::optional<std::string>& trackingURL) const {
    const auto living = facade();
    const auto url = trackingURL ? URL::parse(*trackingURL) : std::nullopt;
    if (living && url) {
        living->handleViewTrackingUrl(*url);
    }
}

void TemplateCodeMode::handleMessage(Zentavo& facade, const Map& body) {
    auto message = readCodeModeMessage(body);
    if (!message) {
        return;
    }
    if (auto* track = std::get_if<TrackMessage>(&*message)) {
        // Customer properties of a page do not make the stored customer another one.
        facade.track(CDPEvent(facade, std::move(track->name), std::move(track->items), std::move(track->userProps),
                              std::move(track->customerProps), {}, std::move(track->eventProps)));
    } else if (const auto* click = std::get_if<ClickMessage>(&*message)) {
        clicked(facade, *click);
    } else if (std::holds_alternative<CloseMessage>(*message)) {
        close(DeliveryTrace::ClosedBy::page);
    }
}

/// The signature is made on a worker: the first one loads the system's cryptography.
void TemplateCodeMode::askViewInfo(Zentavo& facade) {
    auto text = json::write(eventInfo);
    auto unprovable = onMainQueue(&TemplateCodeMode::handleUnprovable);
    if (!text) {
        facade.log("In-app message: its content cannot be asked for: " + text.error().message);
        return unprovable(std::nullopt, text.error());
    }
    const Zentavo::State& state = *facade.state();
    // As with answers, the worker must not hold the presenter; neither the state, which holds it in turn.
    state.platform->queues->make("Zentavo.signature", platform::QueueKind::serial)
        ->async([platform = state.platform, log = state.log, endpoints = facade.endpoints(),
                 portalId = facade.getPortalId().value_or(""), operation = cdpDeliveryOperation(facade),
                 text = *std::move(text), unprovable = std::move(unprovable),
                 answered = onMainQueue(&TemplateCodeMode::handleViewInfo)]() mutable {
            entryPoint("signature", [&] {
                const auto proof = proveViewInfo(text, signingKeyPEM(), *platform);
                if (!proof) {
                    log->write("In-app message: its content cannot be asked for: " + proof.error().message);
                    return unprovable(std::nullopt, proof.error());
                }
                operation->viewInfo(endpoints, portalId, *proof, std::move(text), std::move(answered));
            });
        });
}

} // namespace zentavo
