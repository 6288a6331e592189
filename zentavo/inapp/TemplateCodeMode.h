#pragma once

#include "zentavo/inapp/CDPDeliveryOperation.h"
#include "zentavo/inapp/CustomPopupCodeMode.h"
#include "zentavo/inapp/TemplateInfoResponse.h"
#include "zentavo/inapp/TemplatePresenter.h"
#include "zentavo/inapp/ViewInfoResponse.h"

namespace zentavo {

/// Presents a hand-written message: asks the service how it is laid out and what it shows.
class TemplateCodeMode final : public TemplatePresenter {
public:
    /// `event` is the body of the event that the message answers, with "format".
    TemplateCodeMode(const std::shared_ptr<Zentavo>& facade,
                     std::shared_ptr<const platform::UserInterface> userInterface,
                     std::shared_ptr<platform::WebView> page, WebContent content, Map event);

    const std::shared_ptr<CustomPopupCodeMode> customPopupView;
    /// The event, and which campaign was chosen for it.
    const Map eventInfo;

private:
    TemplateCodeMode(const std::shared_ptr<Zentavo>& facade,
                     std::shared_ptr<const platform::UserInterface> userInterface,
                     std::shared_ptr<CustomPopupCodeMode> popup, WebContent content, Map event);

    void shown(Zentavo& facade) override;
    void handleMessage(Zentavo& facade, const Map& body) override;
    void handleOverlayTap() override { close(DeliveryTrace::ClosedBy::overlay); }
    void handleResized() override;

    std::shared_ptr<CDPDeliveryOperation> cdpDeliveryOperation(Zentavo& facade);
    void askTemplateInfo(Zentavo& facade);
    void askViewInfo(Zentavo& facade);
    void handleTemplateInfo(const std::optional<std::string>& data);
    void handleViewInfo(const std::optional<std::string>& data);
    /// There is nothing to show, and never will be.
    void handleUnprovable(const std::optional<std::string>&) { close(DeliveryTrace::ClosedBy::noContent); }
    void handleLoaded();
    using Evaluate = void (platform::WebView::*)(const std::string&, std::function<void(Result<Value>)>);
    void measure(Evaluate evaluate = &platform::WebView::evaluate);
    void placeMeasured(std::int64_t width, std::int64_t height);
    void placeLaidOut();
    void placeBy(TemplateInfoResponse::TemplateData data);
    void fire(const std::optional<std::string>& trackingURL) const;
    /// Carries an answer from the worker to the main queue, if the message is still there by then.
    HTTPClient::Completion onMainQueue(void (TemplateCodeMode::*handler)(const std::optional<std::string>&));

    std::shared_ptr<CDPDeliveryOperation> cdpDeliveryOperation_;
    ViewInfoResponse::TrackingUrls trackingUrls_;
    /// None where it says no size.
    std::optional<TemplateInfoResponse::TemplateData> layout_;
    /// What a layout without a size says all the same.
    std::optional<TemplateInfoResponse::Options> options_;
    bool sizeMissing_ = false;
    bool loaded_ = false;
};

} // namespace zentavo
