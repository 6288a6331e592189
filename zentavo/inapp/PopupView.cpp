#include "zentavo/inapp/PopupView.h"

#include "zentavo/foundation/Fault.h"

namespace zentavo {

PopupView::PopupView(platform::Views& views, std::shared_ptr<platform::WebView> page, std::shared_ptr<DebugLog> log)
    : view(views.makeView()), webView(std::move(page)), log_(std::move(log)) {
    // The page paints itself: what it leaves free shows what lies below.
    constexpr platform::Colour clear{1, 1, 1, 0};
    view->setName("zentavo.popup");
    view->setBackground(clear);
    webView->setName("zentavo.page");
    webView->setBackground(clear);
    view->addSubview(webView);
}

PopupView::~PopupView() = default;

template <class... Arguments>
std::function<void(Arguments...)> PopupView::whileLiving(void (PopupView::*member)(Arguments...)) {
    return [weak = weak_from_this(), member](Arguments... arguments) {
        entryPoint("web view", [&] {
            if (const auto self = weak.lock()) {
                (self.get()->*member)(std::move(arguments)...);
            }
        });
    };
}

void PopupView::listen() {
    webView->setMessageHandler(handlerName, whileLiving(&PopupView::handleMessage));
    webView->setOnLoadFinished(whileLiving(&PopupView::handleLoadFinished));
    webView->setOnLoadFailed(whileLiving(&PopupView::handleLoadFailed));
    webView->setOnProcessDied(whileLiving(&PopupView::handleProcessDied));
}

void PopupView::setFrame(platform::Rect frame) {
    view->setFrame(frame);
    webView->setFrame({0, 0, frame.width, frame.height});
}

void PopupView::tellResized() {
    webView->evaluateAfterLayout("resizeView();", [log = log_](const Result<Value>& result) {
        if (!result) {
            log->write("JavaScript evaluation error: " + result.error().message);
        }
    });
}

void PopupView::run(const std::string& script) {
    webView->evaluate(script, [log = log_](const Result<Value>& result) {
        log->write(result ? "JavaScript evaluation succeeded! "
                          : "JavaScript evaluation error: " + result.error().message);
    });
}

void PopupView::handleMessage(Value body) {
    const Map* message = body.asMap();
    if (message != nullptr && dataCallback) {
        const auto callback = dataCallback; // it may end in the popup being taken apart
        callback(*message);
    }
}

void PopupView::handleLoadFinished() { loadFinished(); }

void PopupView::handleLoadFailed(std::string reason) {
    log_->write("In-app message: the page has not loaded: " + reason);
}

void PopupView::handleProcessDied() {
    if (onProcessDied) {
        const auto callback = onProcessDied;
        callback();
    }
}

} // namespace zentavo
