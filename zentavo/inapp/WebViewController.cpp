#include "zentavo/inapp/WebViewController.h"

namespace zentavo {

WebViewController::WebViewController(std::shared_ptr<const platform::UserInterface> userInterface)
    : popUpWebView(userInterface->webViews ? userInterface->webViews->makeWebView() : nullptr),
      userInterface_(std::move(userInterface)) {}

bool WebViewController::present(platform::Rect frame) {
    if (!url || !popUpWebView || !userInterface_->views) {
        return false;
    }
    popUpWebView->setFrame(frame);
    if (!userInterface_->views->showOverWindow(popUpWebView)) {
        return false;
    }
    resizes_.reset();
    if (frame == userInterface_->views->mainScreenBounds()) {
        resizes_ = userInterface_->views->listenForResizes([page = popUpWebView, interface = userInterface_] {
            page->setFrame(interface->views->mainScreenBounds());
        });
    }
    popUpWebView->load(*url, std::chrono::seconds(60));
    return true;
}

void WebViewController::dismiss() {
    if (popUpWebView) {
        popUpWebView->removeFromSuperview();
        resizes_.reset();
    }
}

} // namespace zentavo
