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
    popUpWebView->load(*url, std::chrono::seconds(60));
    return true;
}

void WebViewController::dismiss() {
    if (popUpWebView) {
        popUpWebView->removeFromSuperview();
    }
}

} // namespace zentavo
