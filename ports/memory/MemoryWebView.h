#pragma once

#include <chrono>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ports/memory/MemoryViews.h"
#include "zentavo/platform/WebView.h"

namespace zentavo::testing {

/// A web view without an engine: the test plays the page. Main queue only; callbacks come when the test lets the main
/// queue run.
class ZENTAVO_EXPORT MemoryWebView final : public platform::WebView, public MemoryView {
public:
    explicit MemoryWebView(std::shared_ptr<platform::MainQueue> mainQueue);

    void load(const URL& url, std::chrono::seconds limit) override;
    void loadHTML(const std::string& html, std::chrono::seconds limit) override;
    void setMessageHandler(const std::string& name, std::function<void(Value body)> handler) override;
    void setOnLoadFinished(std::function<void()> handler) override;
    void setOnLoadFailed(std::function<void(std::string reason)> handler) override;
    void setOnProcessDied(std::function<void()> handler) override;
    void evaluate(const std::string& script, std::function<void(Result<Value>)> completion) override;
    void evaluateAfterLayout(const std::string& script, std::function<void(Result<Value>)> completion) override;

    // --- What a test sees and does -----------------------------------------------------------------------------------

    /// What was asked for last, and its limit.
    const std::optional<URL>& url() const noexcept { return url_; }
    std::chrono::seconds limit() const noexcept { return limit_; }
    const std::optional<std::string>& html() const noexcept { return html_; }

    void finishLoad();
    void failLoad(const std::string& reason);
    void killProcess();
    /// The page posts `body` to the handler of this name. What is deeper or larger than allowed is dropped.
    void post(const std::string& name, Value body);

    /// Every script so far.
    const std::vector<std::string>& evaluated() const noexcept { return evaluated_; }
    /// What scripts give from now on; null at first.
    void setResult(Result<Value> result) { result_ = std::move(result); }

private:
    template <class Call>
    void later(Call call);

    std::optional<URL> url_;
    std::chrono::seconds limit_{0};
    std::optional<std::string> html_;
    std::map<std::string, std::function<void(Value)>> handlers_;
    std::function<void()> onLoadFinished_;
    std::function<void(std::string)> onLoadFailed_;
    std::function<void()> onProcessDied_;
    std::vector<std::string> evaluated_;
    Result<Value> result_{Value()};
};

/// Makes memory web views, and remembers them.
class ZENTAVO_EXPORT MemoryWebViews final : public platform::WebViews {
public:
    explicit MemoryWebViews(std::shared_ptr<platform::MainQueue> mainQueue) : mainQueue_(std::move(mainQueue)) {}

    std::shared_ptr<platform::WebView> makeWebView() override;

    /// The one made last, while it lives; else null.
    std::shared_ptr<MemoryWebView> last() const { return last_.lock(); }
    std::size_t made() const noexcept { return made_; }
    /// From now on web pages cannot be shown.
    void refuse(bool on = true) noexcept { refusing_ = on; }

private:
    const std::shared_ptr<platform::MainQueue> mainQueue_;
    std::weak_ptr<MemoryWebView> last_;
    std::size_t made_ = 0;
    bool refusing_ = false;
};

} // namespace zentavo::testing
