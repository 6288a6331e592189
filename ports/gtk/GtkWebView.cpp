#include "ports/gtk/GtkWebView.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "ports/gtk/MainThread.h"
#include "ports/gtk/PageValue.h"
#include "ports/gtk/WebEngine.h"
#include "zentavo/foundation/Fault.h"

namespace zentavo::gtk {

struct GtkWebView::MessageHandler {
    GtkWebView& view;
    std::function<void(Value)> call;
};

struct GtkWebView::Evaluation {
    std::weak_ptr<GtkView> view;
    Completion completion;
};

struct GtkWebView::DelayedScript {
    std::weak_ptr<GtkView> view;
    std::string script;
    Completion completion;
    int ticks = 0;
};

namespace {

gboolean refuse() { return TRUE; }

/// What pages may show, in their frames too: the web, and what they make up themselves.
bool isWebAddress(const char* address) {
    constexpr std::array<std::string_view, 5> schemes{"http:", "https:", "about:", "data:", "blob:"};
    const std::string_view text(address != nullptr ? address : "");
    return std::any_of(schemes.begin(), schemes.end(), [&](std::string_view each) { return text.starts_with(each); });
}

/// Whether a load ended because something else came instead.
bool isInterruption(const GError* error) {
    return g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED) ||
           g_error_matches(error, WEBKIT_POLICY_ERROR, WEBKIT_POLICY_ERROR_FRAME_LOAD_INTERRUPTED_BY_POLICY_CHANGE);
}

} // namespace

GtkWebView::GtkWebView(std::shared_ptr<platform::MainQueue> mainQueue)
    : GtkView(std::move(mainQueue)), content_(Ref<WebKitUserContentManager>::take(webkit_user_content_manager_new())),
      page_(Ref<WebKitWebView>::share(static_cast<WebKitWebView*>(g_object_new(
          WEBKIT_TYPE_WEB_VIEW, "web-context", WebEngine::context(), "network-session", WebEngine::session(),
          "settings", WebEngine::settings(), "user-content-manager", content_.get(), nullptr)))) {
    constexpr GdkRGBA clear{0, 0, 0, 0};
    webkit_web_view_set_background_color(page_.get(), &clear);
    connectPage();
    canvas().add(reinterpret_cast<GtkWidget*>(page_.get()));
}

GtkWebView::~GtkWebView() {
    entryPoint("view", [] { MainThread::require(); });
    stopTimer();
    pageSignals_.clear();
    MainThread::run([page = std::move(page_), content = std::move(content_)] {
        if (gtk_widget_get_parent(reinterpret_cast<GtkWidget*>(page.get())) != nullptr) {
            gtk_widget_unparent(reinterpret_cast<GtkWidget*>(page.get()));
        }
    });
}

void GtkWebView::connectPage() {
    WebKitWebView* page = page_.get();
    pageSignals_.connect(page, "load-changed", &GtkWebView::loadChanged, this);
    pageSignals_.connect(page, "load-failed", &GtkWebView::loadFailed, this);
    pageSignals_.connect(page, "decide-policy", &GtkWebView::decidePolicy, this);
    pageSignals_.connect(
        page, "web-process-terminated",
        +[](WebKitWebView*, WebKitWebProcessTerminationReason, gpointer self) {
            static_cast<GtkWebView*>(self)->processDied();
        },
        this);
    pageSignals_.connect(
        page, "authenticate",
        +[](WebKitWebView*, WebKitAuthenticationRequest* request, gpointer) -> gboolean {
            webkit_authentication_request_cancel(request);
            return TRUE;
        },
        this);
    refuseDialogues();
}

/// The engine would open each over the host's window, in the host's name.
void GtkWebView::refuseDialogues() {
    WebKitWebView* page = page_.get();
    for (const char* nuisance : {"context-menu", "print", "enter-fullscreen"}) {
        pageSignals_.connect(page, nuisance, &refuse, this);
    }
    pageSignals_.connect(
        page, "script-dialog",
        +[](WebKitWebView*, WebKitScriptDialog* dialogue, gpointer) -> gboolean {
            // A page that would rather stay may be left all the same.
            if (webkit_script_dialog_get_dialog_type(dialogue) == WEBKIT_SCRIPT_DIALOG_BEFORE_UNLOAD_CONFIRM) {
                webkit_script_dialog_confirm_set_confirmed(dialogue, TRUE);
            }
            return TRUE; // with which the engine closes it
        },
        this);
    pageSignals_.connect(
        page, "run-file-chooser",
        +[](WebKitWebView*, WebKitFileChooserRequest* request, gpointer) -> gboolean {
            webkit_file_chooser_request_cancel(request);
            return TRUE;
        },
        this);
    pageSignals_.connect(
        page, "run-color-chooser",
        +[](WebKitWebView*, WebKitColorChooserRequest* request, gpointer) -> gboolean {
            webkit_color_chooser_request_cancel(request);
            return TRUE;
        },
        this);
    pageSignals_.connect(
        page, "permission-request",
        +[](WebKitWebView*, WebKitPermissionRequest* request, gpointer) -> gboolean {
            webkit_permission_request_deny(request);
            return TRUE;
        },
        this);
}

/// Runs `call(*this)` on the main queue, if the view still lives by then.
template <class Call>
void GtkWebView::later(Call call) {
    mainQueue_->async([weak = weak_from_this(), call = std::move(call)] {
        if (const auto self = std::static_pointer_cast<GtkWebView>(weak.lock())) {
            call(*self);
        }
    });
}

// --- Loading ---------------------------------------------------------------------------------------------------------

void GtkWebView::load(const URL& url, std::chrono::seconds limit) {
    MainThread::require();
    stopTimer();
    load_.begin(true);
    died_ = false; // the engine starts another process
    if (!url.isHTTP()) {
        return take(load_.timedOut("only http and https are loaded"));
    }
    webkit_web_view_load_uri(page_.get(), url.text().c_str());
    startTimer(limit);
}

void GtkWebView::loadHTML(const std::string& html, std::chrono::seconds limit) {
    MainThread::require();
    stopTimer();
    load_.begin(false);
    died_ = false;
    webkit_web_view_load_html(page_.get(), html.c_str(), nullptr);
    startTimer(limit);
}

/// The engine itself waits for ever.
void GtkWebView::startTimer(std::chrono::seconds limit) {
    timer_ = mainQueue_->after(limit, [weak = weak_from_this(), limit] {
        if (const auto self = std::static_pointer_cast<GtkWebView>(weak.lock())) {
            self->timer_ = 0;
            self->take(self->load_.timedOut("not within " + std::to_string(limit.count()) + " s"));
            webkit_web_view_stop_loading(self->page_.get());
        }
    });
}

void GtkWebView::setOnLoadFinished(std::function<void()> handler) {
    MainThread::require();
    onLoadFinished_ = std::move(handler);
}
void GtkWebView::setOnLoadFailed(std::function<void(std::string)> handler) {
    MainThread::require();
    onLoadFailed_ = std::move(handler);
}
void GtkWebView::setOnProcessDied(std::function<void()> handler) {
    MainThread::require();
    onProcessDied_ = std::move(handler);
}

void GtkWebView::stopTimer() {
    if (timer_ != 0) {
        mainQueue_->cancel(std::exchange(timer_, 0));
    }
}

void GtkWebView::take(std::optional<PageLoad::Outcome> outcome) {
    if (!outcome) {
        return;
    }
    stopTimer();
    later([outcome = *std::move(outcome)](GtkWebView& self) {
        if (outcome.loaded) {
            if (const auto handler = self.onLoadFinished_) {
                handler();
            }
        } else if (const auto handler = self.onLoadFailed_) {
            handler(outcome.problem);
        }
    });
}

void GtkWebView::loadChanged(WebKitWebView* page, WebKitLoadEvent event, gpointer data) {
    auto& self = *static_cast<GtkWebView*>(data);
    if (event == WEBKIT_LOAD_STARTED) {
        self.load_.started();
    } else if (event == WEBKIT_LOAD_FINISHED) {
        const char* address = webkit_web_view_get_uri(page);
        self.take(self.load_.finished(address != nullptr ? address : ""));
    }
}

gboolean GtkWebView::loadFailed(WebKitWebView*, WebKitLoadEvent, const char*, GError* error, gpointer data) {
    auto& self = *static_cast<GtkWebView*>(data);
    self.take(self.load_.failed(error->message, isInterruption(error)));
    return TRUE; // no error page: nothing is to be seen that the campaign did not make
}

gboolean GtkWebView::decidePolicy(WebKitWebView*, WebKitPolicyDecision* decision, WebKitPolicyDecisionType type,
                                  gpointer) {
    if (type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE) {
        return FALSE;
    }
    WebKitNavigationAction* action = webkit_navigation_policy_decision_get_navigation_action(
        reinterpret_cast<WebKitNavigationPolicyDecision*>(decision));
    if (type == WEBKIT_POLICY_DECISION_TYPE_NEW_WINDOW_ACTION ||
        !isWebAddress(webkit_uri_request_get_uri(webkit_navigation_action_get_request(action)))) {
        webkit_policy_decision_ignore(decision);
        return TRUE;
    }
    return FALSE;
}

void GtkWebView::processDied() {
    if (std::exchange(died_, true)) {
        return;
    }
    stopTimer();
    later([](GtkWebView& self) {
        if (const auto handler = self.onProcessDied_) {
            handler();
        }
    });
}

// --- Messages and scripts ---------------------------------------------------------------------------------------------

void GtkWebView::setMessageHandler(const std::string& name, std::function<void(Value)> handler) {
    MainThread::require();
    auto& place = handlers_[name];
    if (place) {
        place->call = std::move(handler);
        return;
    }
    place = std::make_unique<MessageHandler>(MessageHandler{*this, std::move(handler)});
    // Connected first: the page may post as soon as the name is there.
    pageSignals_.connect(content_.get(), ("script-message-received::" + name).c_str(), &GtkWebView::messageReceived,
                         place.get());
    webkit_user_content_manager_register_script_message_handler(content_.get(), name.c_str(), nullptr);
}

void GtkWebView::messageReceived(WebKitUserContentManager*, JSCValue* value, gpointer data) {
    auto* place = static_cast<MessageHandler*>(data);
    auto body = pageValue(value);
    if (!body) {
        return;
    }
    place->view.later([place, body = *std::move(body)](GtkWebView&) { // which holds the place
        if (const auto call = place->call) {
            call(body);
        }
    });
}

void GtkWebView::evaluate(const std::string& script, Completion completion) {
    MainThread::require();
    auto evaluation = std::make_unique<Evaluation>(Evaluation{weak_from_this(), std::move(completion)});
    webkit_web_view_evaluate_javascript(page_.get(), script.data(), static_cast<gssize>(script.size()), nullptr,
                                        nullptr, nullptr, &GtkWebView::evaluated, evaluation.release());
}

void GtkWebView::evaluated(GObject* page, GAsyncResult* result, gpointer data) {
    const std::unique_ptr<Evaluation> evaluation(static_cast<Evaluation*>(data));
    GError* error = nullptr;
    const auto value = Ref<JSCValue>::take(
        webkit_web_view_evaluate_javascript_finish(reinterpret_cast<WebKitWebView*>(page), result, &error));
    Result<Value> outcome{Value()};
    if (value) {
        outcome = pageValue(value.get()).value_or(Value());
    } else if (!g_error_matches(error, WEBKIT_JAVASCRIPT_ERROR, WEBKIT_JAVASCRIPT_ERROR_INVALID_RESULT)) {
        // (An invalid result is one that cannot leave the page, such as one of its nodes: the script did run.)
        outcome = Error{error->message};
    }
    g_clear_error(&error);
    const auto self = std::static_pointer_cast<GtkWebView>(evaluation->view.lock());
    if (self && evaluation->completion) {
        self->later([completion = std::move(evaluation->completion), outcome = std::move(outcome)](GtkWebView&) {
            completion(outcome);
        });
    }
}

void GtkWebView::evaluateAfterLayout(const std::string& script, Completion completion) {
    MainThread::require();
    auto delayed = std::make_unique<DelayedScript>(DelayedScript{weak_from_this(), script, std::move(completion)});
    gtk_widget_add_tick_callback(reinterpret_cast<GtkWidget*>(page_.get()), &GtkWebView::ticked, delayed.release(),
                                 [](gpointer data) { delete static_cast<DelayedScript*>(data); });
}

/// A frame ticks before it is laid out: with the second tick the view has the size that was set before the first. Its
/// page may still be busy with an earlier one, and gets the newest once it has told the engine so: before it answers.
gboolean GtkWebView::ticked(GtkWidget*, GdkFrameClock*, gpointer data) {
    auto& delayed = *static_cast<DelayedScript*>(data);
    if (++delayed.ticks < 2) {
        return G_SOURCE_CONTINUE;
    }
    if (const auto self = std::static_pointer_cast<GtkWebView>(delayed.view.lock())) {
        entryPoint("view", [&] {
            self->evaluate("0", [weak = delayed.view, script = std::move(delayed.script),
                                 completion = std::move(delayed.completion)](const Result<Value>&) {
                if (const auto answered = std::static_pointer_cast<GtkWebView>(weak.lock())) {
                    answered->evaluate(script, completion);
                }
            });
        });
    }
    return G_SOURCE_REMOVE;
}

} // namespace zentavo::gtk
