#include "zentavo/inapp/FullScreenViewController.h"

namespace zentavo {

FullScreenViewController::FullScreenViewController(std::shared_ptr<const platform::UserInterface> userInterface)
    : webView(userInterface->webViews ? userInterface->webViews->makeWebView() : nullptr),
      userInterface_(std::move(userInterface)) {}

bool FullScreenViewController::present(const std::string& html) {
    if (!webView || !userInterface_->views) {
        return false;
    }
    webView->setFrame(userInterface_->views->mainScreenBounds());
    if (!userInterface_->views->showOverWindow(webView)) {
        return false;
    }
    webView->loadHTML(html, std::chrono::seconds(60));
    return true;
}

void FullScreenViewController::dismiss() {
    if (webView) {
        webView->removeFromSuperview();
    }
}

} // namespace zentavo
