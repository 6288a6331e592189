#pragma once

#include <functional>
#include <memory>
#include <string>

#include "zentavo/core/DebugLog.h"
#include "zentavo/foundation/Value.h"
#include "zentavo/platform/Platform.h"

namespace zentavo {

/// A rectangle filled with a web page that talks to the SDK. Held by `std::shared_ptr`. Main queue only.
class PopupView : public std::enable_shared_from_this<PopupView> {
public:
    /// What pages post their messages to.
    static constexpr const char* handlerName = "eventHandler";

    /// `page` is never null.
    PopupView(platform::Views& views, std::shared_ptr<platform::WebView> page, std::shared_ptr<DebugLog> log);
    virtual ~PopupView();
    PopupView(const PopupView&) = delete;
    PopupView& operator=(const PopupView&) = delete;

    /// Called with each message that is an object, as it came; others are ignored.
    std::function<void(const Map& body)> dataCallback;
    std::function<void()> onProcessDied;

    const std::shared_ptr<platform::View> view;
    const std::shared_ptr<platform::WebView> webView;

    /// Begins to listen to the page; to be called once, before it is loaded.
    void listen();
    /// The page fills the popup.
    void setFrame(platform::Rect frame);
    void setCornerRadius(double radius) { view->setCornerRadius(radius); }
    /// Tells the page that it has another size, once it really has.
    void tellResized();

protected:
    virtual void loadFinished() = 0;
    /// Runs `script` in the page, and logs how that went.
    void run(const std::string& script);

    const std::shared_ptr<DebugLog> log_;

private:
    /// A callback of the page that does nothing once the popup is gone.
    template <class... Arguments>
    std::function<void(Arguments...)> whileLiving(void (PopupView::*member)(Arguments...));

    void handleMessage(Value body);
    void handleLoadFinished();
    void handleLoadFailed(std::string reason);
    void handleProcessDied();
};

} // namespace zentavo
