#include "zentavo/inapp/FullScreenViewController.h"

namespace zentavo {

FullScreenViewController::FullScreenViewController(std::shared_ptr<const platform::UserInterface> userInterface)
    : webView(userInterface->webViews ? userInterface->webViews->makeWebView() : nullptr),
      userInterface_(std::move(userInterface)) {}

bool FullScreenViewController::present(const std::string& html) {
    if (!webView || !userInterface_->views) {
        return false;
    }
    const auto fill = [page = webView, interface = userInterface_] {
        page->setFrame(interface->views->mainScreenBounds());
    };
    fill();
    if (!userInterface_->views->showOverWindow(webView)) {
        return false;
    }
    resizes_ = userInterface_->views->listenForResizes(fill);
    webView->loadHTML(html, std::chrono::seconds(60));
    return true;
}

void FullScreenViewController::dismiss() {
    if (webView) {
        webView->removeFromSuperview();
        resizes_.reset();
    }
}

} // namespace zentavo
