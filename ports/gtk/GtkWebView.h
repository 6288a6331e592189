#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include <webkit/webkit.h>

#include "ports/gtk/GtkView.h"
#include "ports/gtk/PageLoad.h"
#include "zentavo/platform/WebView.h"

namespace zentavo::gtk {

/// A view with a web page in it. The page can neither leave http and https, nor open windows, dialogues, context menus or
/// downloads.
class GtkWebView final : public platform::WebView, public GtkView {
public:
    explicit GtkWebView(std::shared_ptr<platform::MainQueue> mainQueue);
    ~GtkWebView() override;

    void load(const URL& url, std::chrono::seconds limit) override;
    void loadHTML(const std::string& html, std::chrono::seconds limit) override;
    void setMessageHandler(const std::string& name, std::function<void(Value body)> handler) override;
    void setOnLoadFinished(std::function<void()> handler) override;
    void setOnLoadFailed(std::function<void(std::string reason)> handler) override;
    void setOnProcessDied(std::function<void()> handler) override;
    void evaluate(const std::string& script, std::function<void(Result<Value>)> completion) override;
    void evaluateAfterLayout(const std::string& script, std::function<void(Result<Value>)> completion) override;

    /// For tests, which play the engine's part.
    WebKitWebView* page() const noexcept { return page_.get(); }

private:
    using Completion = std::function<void(Result<Value>)>;
    struct Evaluation;
    struct DelayedScript;
    struct MessageHandler;

    template <class Call>
    void later(Call call);
    void connectPage();
    void refuseDialogues();
    void take(std::optional<PageLoad::Outcome> outcome);
    void startTimer(std::chrono::seconds limit);
    void stopTimer();
    void processDied();

    static void loadChanged(WebKitWebView* page, WebKitLoadEvent event, gpointer self);
    static gboolean loadFailed(WebKitWebView* page, WebKitLoadEvent event, const char* address, GError* error,
                               gpointer self);
    static gboolean decidePolicy(WebKitWebView* page, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                                 gpointer self);
    static void messageReceived(WebKitUserContentManager* manager, JSCValue* value, gpointer handler);
    static void evaluated(GObject* page, GAsyncResult* result, gpointer evaluation);
    static gboolean ticked(GtkWidget* page, GdkFrameClock* clock, gpointer script);

    Ref<WebKitUserContentManager> content_;
    Ref<WebKitWebView> page_;
    std::map<std::string, std::unique_ptr<MessageHandler>> handlers_;
    std::function<void()> onLoadFinished_;
    std::function<void(std::string)> onLoadFailed_;
    std::function<void()> onProcessDied_;
    PageLoad load_;
    platform::TimerId timer_ = 0;
    bool died_ = false;
    Signals pageSignals_;
};

} // namespace zentavo::gtk
