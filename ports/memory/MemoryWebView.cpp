#include "ports/memory/MemoryWebView.h"

#include "zentavo/foundation/JSON.h"

namespace zentavo::testing {

MemoryWebView::MemoryWebView(std::shared_ptr<platform::MainQueue> mainQueue) : MemoryView(std::move(mainQueue)) {}

/// Runs `call(*this)` on the main queue, if the view still lives by then.
template <class Call>
void MemoryWebView::later(Call call) {
    mainQueue_->async([weak = weak_from_this(), call = std::move(call)] {
        if (const auto self = std::static_pointer_cast<MemoryWebView>(weak.lock())) {
            call(*self);
        }
    });
}

void MemoryWebView::load(const URL& url, std::chrono::seconds limit) {
    onMainQueue();
    url_ = url;
    limit_ = limit;
}

void MemoryWebView::loadHTML(const std::string& html, std::chrono::seconds limit) {
    onMainQueue();
    html_ = html;
    limit_ = limit;
}

void MemoryWebView::setMessageHandler(const std::string& name, std::function<void(Value)> handler) {
    onMainQueue();
    handlers_[name] = std::move(handler);
}

void MemoryWebView::setOnLoadFinished(std::function<void()> handler) { onLoadFinished_ = std::move(handler); }
void MemoryWebView::setOnLoadFailed(std::function<void(std::string)> handler) { onLoadFailed_ = std::move(handler); }
void MemoryWebView::setOnProcessDied(std::function<void()> handler) { onProcessDied_ = std::move(handler); }

void MemoryWebView::evaluate(const std::string& script, std::function<void(Result<Value>)> completion) {
    onMainQueue();
    evaluated_.push_back(script);
    if (completion) {
        later([completion = std::move(completion)](MemoryWebView& self) { completion(self.result_); });
    }
}

void MemoryWebView::evaluateAfterLayout(const std::string& script, std::function<void(Result<Value>)> completion) {
    evaluate(script, std::move(completion));
}

void MemoryWebView::finishLoad() {
    later([](MemoryWebView& self) {
        if (const auto handler = self.onLoadFinished_) {
            handler();
        }
    });
}

void MemoryWebView::failLoad(const std::string& reason) {
    later([reason](MemoryWebView& self) {
        if (const auto handler = self.onLoadFailed_) {
            handler(reason);
        }
    });
}

void MemoryWebView::killProcess() {
    later([](MemoryWebView& self) {
        if (const auto handler = self.onProcessDied_) {
            handler();
        }
    });
}

void MemoryWebView::post(const std::string& name, Value body) {
    const auto text = json::write(body);
    if (!text || !json::read(*text, {maximumMessageBytes, maximumMessageDepth})) {
        return;
    }
    later([name, body = std::move(body)](MemoryWebView& self) {
        const auto found = self.handlers_.find(name);
        if (const auto handler = found != self.handlers_.end() ? found->second : nullptr) {
            handler(body);
        }
    });
}

std::shared_ptr<platform::WebView> MemoryWebViews::makeWebView() {
    if (refusing_) {
        return nullptr;
    }
    auto view = std::make_shared<MemoryWebView>(mainQueue_);
    last_ = view;
    ++made_;
    return view;
}

} // namespace zentavo::testing
