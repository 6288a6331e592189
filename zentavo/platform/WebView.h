#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "zentavo/foundation/Result.h"
#include "zentavo/foundation/URL.h"
#include "zentavo/foundation/Value.h"
#include "zentavo/platform/Views.h"

namespace zentavo::platform {

/// A view that shows a web page. Main queue only; every callback comes there, never inside a call, and never after the
/// view is gone; a callback may let go of the view itself. The page's background shows the view's. Pages are hostile: a
/// message is bounded in depth and size before it becomes a value, and what is over a bound is dropped; the dialogues and
/// permissions that they ask for are refused.
class ZENTAVO_EXPORT WebView : public virtual View {
public:
    /// Depth and bytes (as JSON) of a message body.
    static constexpr std::size_t maximumMessageDepth = 64;
    static constexpr std::size_t maximumMessageBytes = 1U << 20U;

    /// http and https only. A load that has not ended when `limit` has passed is stopped, and counts as failed.
    virtual void load(const URL& url, std::chrono::seconds limit) = 0;
    /// Shows `html`; its base is `about:blank`. It has ended when all that it refers to is there: the limit is as above.
    virtual void loadHTML(const std::string& html, std::chrono::seconds limit) = 0;

    /// Messages that the page posts to `window.webkit.messageHandlers.<name>`. One handler a name.
    virtual void setMessageHandler(const std::string& name, std::function<void(Value body)> handler) = 0;

    /// The page has loaded; not called for a load that failed. An HTTP error page is a page.
    virtual void setOnLoadFinished(std::function<void()> handler) = 0;
    virtual void setOnLoadFailed(std::function<void(std::string reason)> handler) = 0;
    /// The process behind the page has died; the view shows nothing any more.
    virtual void setOnProcessDied(std::function<void()> handler) = 0;

    /// Runs `script` in the page. A result that is no JSON is null; a thrown exception is the error.
    virtual void evaluate(const std::string& script, std::function<void(Result<Value>)> completion) = 0;
    /// As `evaluate`, when the page has been laid out at the view's newest size.
    virtual void evaluateAfterLayout(const std::string& script, std::function<void(Result<Value>)> completion) = 0;
};

/// Makes web views. Main queue only.
class ZENTAVO_EXPORT WebViews {
public:
    virtual ~WebViews() = default;

    /// Null when the system cannot show web pages safely (no sandbox, no engine); the system log says why, once.
    virtual std::shared_ptr<WebView> makeWebView() = 0;
};

} // namespace zentavo::platform
