// What WebView.h promises, with the real engine and pages that mean no good.

#include <cstdlib>

#include "ports/gtk/GtkWebView.h"
#include "ports/gtk/GtkWebViews.h"
#include "tests/gtk/GuiTest.h"
#include "tests/support/LoopbackServer.h"
#include "zentavo/foundation/JSON.h"

namespace zentavo::tests {
namespace {

using namespace std::chrono_literals;
using ::testing::AllOf;
using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

void serve(const LoopbackServer::Request& request, LoopbackServer::Reply& reply) {
    const std::string html = "Content-Type: text/html\r\n";
    if (request.target == "/page") {
        reply.answer(200, "<body style='background: #00ff00'>page</body>", html);
    } else if (request.target == "/hang") {
        reply.hang();
    } else if (request.target == "/goes-on") {
        reply.answer(200, "<script>location.href = '/page'</script>", html);
    } else if (request.target == "/leaves") {
        reply.answer(200, "<script>location.href = 'file:///etc/passwd'; window.open('/page');</script>leaves", html);
    } else if (request.target == "/file") {
        reply.answer(302, "", "Location: file:///etc/passwd\r\n");
    } else {
        reply.answer(404, "not here", html);
    }
}

class WebViewTest : public GuiTest {
protected:
    WebViewTest() {
        present();
        page = makePage();
    }

    std::shared_ptr<platform::WebView> makePage() {
        auto made = interface()->webViews->makeWebView();
        made->setFrame({0, 0, 400, 300});
        made->setBackground({0, 0, 0, 0});
        made->setMessageHandler("eventHandler", [this](Value body) { messages.push_back(std::move(body)); });
        made->setOnLoadFinished([this] { events.emplace_back("finished"); });
        made->setOnLoadFailed([this](const std::string& reason) { events.push_back("failed: " + reason); });
        made->setOnProcessDied([this] { events.emplace_back("died"); });
        EXPECT_TRUE(views().showOverWindow(made));
        return made;
    }
    /// Loads, and waits for the first event.
    std::string load(const std::string& address, std::chrono::seconds limit = 20s) {
        events.clear();
        page->load(URL::parse(address).value(), limit);
        EXPECT_THAT(events, IsEmpty()) << "never inside the call";
        until([&] { return !events.empty(); });
        return events.empty() ? "nothing" : events.front();
    }
    void loadHTML(const std::string& html) {
        events.clear();
        page->loadHTML(html, 20s);
        ASSERT_TRUE(until([&] { return !events.empty(); }));
        ASSERT_THAT(events, ElementsAre("finished"));
    }
    Result<Value> evaluate(const std::string& script, bool afterLayout = false) {
        std::optional<Result<Value>> outcome;
        const auto completion = [&](const Result<Value>& result) { outcome = result; };
        if (afterLayout) {
            page->evaluateAfterLayout(script, completion);
        } else {
            page->evaluate(script, completion);
        }
        EXPECT_FALSE(outcome) << "never inside the call";
        until([&] { return outcome.has_value(); });
        return outcome.value_or(Error{"nothing came"});
    }
    std::string text(const std::string& script) {
        const auto result = evaluate(script);
        return result ? json::write(*result).value() : "error: " + result.error().message;
    }
    static std::string post(const std::string& expression) {
        return "window.webkit.messageHandlers.eventHandler.postMessage(" + expression + "); 0";
    }

    LoopbackServer server{&serve};
    std::vector<Value> messages;
    std::vector<std::string> events;
    std::shared_ptr<platform::WebView> page;
};

TEST_F(WebViewTest, LoadsAreToldApart) {
    EXPECT_EQ(load(server.url("/page").text()), "finished");
    EXPECT_EQ(pixel(300, 200, greenPixel), greenPixel);
    EXPECT_EQ(load(server.url("/missing").text()), "finished") << "an HTTP error page is a page";
    EXPECT_EQ(text("document.body.textContent"), "\"not here\"");
    EXPECT_THAT(load("http://127.0.0.1:" + std::to_string(closedPort()) + "/"), HasSubstr("failed: "));
    EXPECT_THAT(load("http://127.0.0.1:6000/"), HasSubstr("failed: ")) << "a port that engines do not open";
    EXPECT_THAT(load("file:///etc/passwd"), HasSubstr("failed: only http"));
    EXPECT_THAT(load(server.url("/hang").text(), 1s), "failed: not within 1 s");
    EXPECT_THAT(load(server.url("/file").text(), 1s), AnyOf(HasSubstr("failed: "), "died"))
        << "nor does a redirect lead to a file";

    events.clear();
    page->loadHTML("<img src='" + server.url("/hang").text() + "'>", 1s);
    until([&] { return !events.empty(); });
    EXPECT_THAT(events, ElementsAre("failed: not within 1 s")) << "what a page of its own refers to may hang too";

    // After all this nothing comes late, and the view is still good.
    EXPECT_EQ(load(server.url("/page").text()), "finished");
    settle(window);
    EXPECT_THAT(events, ElementsAre("finished"));
}

TEST_F(WebViewTest, APageThatGoesElsewhereIsLoadedOnceAndStaysOnTheWeb) {
    EXPECT_EQ(load(server.url("/goes-on").text()), "finished");
    ASSERT_TRUE(until([&] { return text("location.pathname") == "\"/page\""; }));
    settle(window);
    EXPECT_THAT(events, ElementsAre("finished"));

    EXPECT_EQ(load(server.url("/leaves").text()), "finished");
    settle(window);
    EXPECT_EQ(text("location.pathname"), "\"/leaves\"");

    // A load that takes the place of another one.
    events.clear();
    page->load(server.url("/hang"), 20s);
    page->load(server.url("/page"), 20s);
    ASSERT_TRUE(until([&] { return !events.empty(); }));
    settle(window);
    EXPECT_THAT(events, ElementsAre("finished"));
}

TEST_F(WebViewTest, DialoguesAreRefusedAndThePageGoesOn) {
    ASSERT_EQ(load(server.url("/page").text()), "finished");
    EXPECT_EQ(text("[alert('a') ?? null, confirm('b'), prompt('c')]"), "[null,false,null]");
    text("navigator.geolocation.getCurrentPosition(() => {}, error => { " + post("error.code") + "; }); 0");
    ASSERT_TRUE(until([&] { return !messages.empty(); }));
    EXPECT_EQ(messages.back(), Value(1)) << "permission denied";

    // Choosers open for a user's click alone.
    const guint windows = g_list_model_get_n_items(gtk_window_get_toplevels());
    for (const std::string type : {"file", "color"}) {
        messages.clear();
        text("document.body.innerHTML = '<input type=" + type +
             " style=\"position: fixed; inset: 0; width: 400px; height: 300px\">'; " +
             "document.querySelector('input').onclick = () => { setTimeout(() => { " + post("'clicked'") +
             "; }); }; 0");
        settle(window);
        click(100, 150);
        ASSERT_TRUE(until([&] { return !messages.empty(); })) << type;
        text("1"); // by when the engine has asked for the chooser
        settle(window);
        EXPECT_EQ(g_list_model_get_n_items(gtk_window_get_toplevels()), windows) << type;
    }
}

TEST_F(WebViewTest, MessagesOfEveryKindArrive) {
    loadHTML("<body></body>");
    const std::vector<std::pair<std::string, Value>> kinds = {
        {"{type: 'a', data: {width: 320, x: 1.5, on: true, none: null}}",
         Map{{"type", "a"}, {"data", Map{{"width", 320}, {"x", 1.5}, {"on", true}, {"none", nullptr}}}}},
        {"[1, 'two', [3]]", List{1, "two", List{3}}},
        {"'text \\u00fc \\u0000 \"'", std::string("text \xc3\xbc \0 \"", 11)},
        {"42", 42},
        {"-0.25", -0.25},
        {"false", false},
        {"null", nullptr},
        {"{}", Map()},
        {"{d: new Date(0)}", Map{{"d", "1970-01-01T00:00:00.000Z"}}},
        {"NaN", nullptr},
    };
    for (const auto& [expression, expected] : kinds) {
        messages.clear();
        EXPECT_EQ(text(post(expression)), "0") << expression;
        EXPECT_TRUE(until([&] { return !messages.empty(); })) << expression;
        EXPECT_THAT(messages, ElementsAre(expected)) << expression;
    }

    // What is over a bound, or no JSON, is dropped; what comes after it is not.
    messages.clear();
    const std::string deep = "(n => { let v = 1; for (let i = 0; i < n; ++i) v = {v}; return v; })";
    const std::string large = "(n => 'x'.repeat(n))";
    for (const std::string& hostile :
         {deep + "(65)", deep + "(2000)", deep + "(100000)", large + "(1048577)", large + "(30000000)",
          std::string("1n"), std::string("undefined"), std::string("'\\ud800'"), std::string("Array(2000000).fill(0)"),
          std::string("(() => { const a = {}; a.a = a; return a; })()"), std::string("() => 1"),
          std::string("document.body")}) {
        text("try { " + post(hostile) + " } catch (e) { 1 }");
    }
    text(post("'" + std::string(1000, 'y') + "'"));
    text(post(deep + "(63)"));
    text(post(large + "(1048574)"));
    text(post("'last'"));
    ASSERT_TRUE(until([&] { return !messages.empty() && messages.back() == Value("last"); }));
    EXPECT_THAT(messages, SizeIs(4));
}

TEST_F(WebViewTest, AThousandMessagesArriveInOrder) {
    loadHTML("<body></body>");
    text("for (let i = 0; i < 1000; ++i) " + post("{type: 'n', data: {i}}"));
    ASSERT_TRUE(until([&] { return messages.size() == 1000; }));
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(messages[static_cast<std::size_t>(i)], Value(Map({{"type", "n"}, {"data", Map{{"i", i}}}})));
    }
    // Another name is another handler; a name may change hands.
    std::vector<Value> others;
    page->setMessageHandler("other", [&](Value body) { others.push_back(std::move(body)); });
    page->setMessageHandler("eventHandler", nullptr);
    loadHTML("<script>window.webkit.messageHandlers.other.postMessage(7);"
             "window.webkit.messageHandlers.eventHandler.postMessage(8)</script>");
    ASSERT_TRUE(until([&] { return others.size() == 1; }));
    EXPECT_EQ(others.front(), Value(7));
    EXPECT_THAT(messages, SizeIs(1000));
}

TEST_F(WebViewTest, ScriptsGiveResultsOrErrors) {
    loadHTML("<body><p>x</p></body>");
    EXPECT_EQ(text("[1, {a: 'b'}]"), R"([1,{"a":"b"}])");
    EXPECT_EQ(text("undefined"), "null");
    EXPECT_EQ(text("document.body.dataset.ran = 1; document.body"), "null") << "a node cannot leave, but it ran";
    EXPECT_EQ(text("document.body.dataset.ran"), "\"1\"");
    EXPECT_EQ(text("Promise.resolve(1)"), "null");
    EXPECT_EQ(text("'x'.repeat(2000000)"), "null") << "too large to come back";
    EXPECT_THAT(text("throw new Error('broken on purpose')"),
                AllOf(HasSubstr("error: "), HasSubstr("broken on purpose")));
    EXPECT_THAT(text("resizeView();"), HasSubstr("resizeView"));
    EXPECT_THAT(text("}{"), AllOf(HasSubstr("error: "), HasSubstr("SyntaxError")));
    page->evaluate("1", nullptr);
    EXPECT_EQ(text("2"), "2");
}

TEST_F(WebViewTest, AfterLayoutThePageKnowsItsNewSize) {
    loadHTML("<body style='margin: 0'></body>");
    for (int width = 120; width <= 390; width += 90) {
        page->setFrame({0, 0, static_cast<double>(width), 200});
        const auto result = evaluate("[innerWidth, innerHeight]", true);
        ASSERT_TRUE(result);
        EXPECT_EQ(*result, Value(List{width, 200}));
    }
    // Sizes that follow each other more quickly than the page can lay itself out.
    loadHTML("<body style='margin: 0'><script>onresize = () => { "
             "for (const end = performance.now() + 150; performance.now() < end;) {} }</script></body>");
    for (const double width : {150, 200, 250, 390}) {
        page->setFrame({0, 0, width, 200});
        settle(window);
    }
    EXPECT_EQ(*evaluate("innerWidth", true), 390);

    loadHTML("<body style='background: #ff0000'></body>");
    EXPECT_EQ(pixel(300, 100, redPixel), redPixel);
    EXPECT_EQ(pixel(395, 100), background) << "the page ends where its view does";

    page->removeFromSuperview();
    page = makePage();
    loadHTML("<body>text</body>");
    EXPECT_EQ(pixel(300, 100, background), background) << "a page without a background shows what lies below";
    page->setBackground(green);
    EXPECT_EQ(pixel(300, 100, greenPixel), greenPixel) << "such as its view's";
}

TEST_F(WebViewTest, TheFocusGoesBackToTheHost) {
    GtkWidget* entry = gtk_entry_new();
    gtk_window_set_child(window, entry);
    settle(window);
    gtk_editable_set_text(GTK_EDITABLE(entry), "half a word");
    gtk_widget_grab_focus(entry);
    gtk_editable_set_position(GTK_EDITABLE(entry), 5);
    GtkWidget* focus = gtk_window_get_focus(window);

    page->removeFromSuperview();
    page = makePage();
    loadHTML("<body style='background: #00ff00'><input autofocus></body>");
    EXPECT_EQ(pixel(300, 200, greenPixel), greenPixel);
    EXPECT_EQ(gtk_window_get_focus(window), focus) << "a page takes it only when the user clicks there";
    click(300, 200);
    ASSERT_TRUE(until([&] { return gtk_window_get_focus(window) != focus; }));
    page->setHidden(true);
    page->removeFromSuperview();
    settle(window);
    EXPECT_EQ(gtk_window_get_focus(window), focus);
    EXPECT_EQ(gtk_editable_get_position(GTK_EDITABLE(entry)), 5);
    EXPECT_FALSE(gtk_editable_get_selection_bounds(GTK_EDITABLE(entry), nullptr, nullptr));
}

TEST_F(WebViewTest, NothingComesAfterTheEndAndACallbackMayBringIt) {
    loadHTML("<body></body>");
    bool called = false;
    page->evaluate("1", [&](const Result<Value>&) { called = true; });
    page->evaluateAfterLayout("1", [&](const Result<Value>&) { called = true; });
    page->load(server.url("/page"), 20s);
    page->removeFromSuperview();
    std::weak_ptr<platform::WebView> gone = std::exchange(page, nullptr);
    EXPECT_TRUE(gone.expired());
    events.clear();
    settle(window);

    page = makePage();
    page->setMessageHandler("eventHandler", [&](const Value&) {
        page->removeFromSuperview();
        page = nullptr;
    });
    gone = page;
    page->loadHTML("<script>window.webkit.messageHandlers.eventHandler.postMessage(1);"
                   "window.webkit.messageHandlers.eventHandler.postMessage(2)</script>",
                   20s);
    ASSERT_TRUE(until([&] { return gone.expired(); }));
    settle(window);
    EXPECT_FALSE(called);
    EXPECT_THAT(events, IsEmpty());
}

TEST_F(WebViewTest, TheDeathOfTheProcessIsReportedOnce) {
    loadHTML("<body></body>");
    events.clear();
    webkit_web_view_terminate_web_process(std::dynamic_pointer_cast<gtk::GtkWebView>(page)->page());
    ASSERT_TRUE(until([&] { return !events.empty(); }));
    settle(window);
    EXPECT_THAT(events, ElementsAre("died"));

    // The end of the window is none of the process, and told as of any view.
    page = makePage();
    loadHTML("<body></body>");
    page->setOnRemoved([this] { events.emplace_back("removed"); });
    events.clear();
    closeWindow();
    EXPECT_THAT(events, IsEmpty());
    ASSERT_TRUE(until([&] { return !events.empty(); }));
    EXPECT_THAT(events, ElementsAre("removed"));
}

TEST_F(WebViewTest, WithoutASandboxThereAreNoWebViews) {
    constexpr const char* without = "WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS";
    const char* before = std::getenv(without);
    const std::string chosen = before != nullptr ? before : "0";
    unsetenv(without);
    for (const char* program : {"false", "zentavo-no-such-program"}) {
        const auto log = std::make_shared<testing::RecordingSystemLog>();
        gtk::GtkWebViews webViews(interface()->mainQueue, log, std::make_shared<gtk::WebSandboxProbe>(program));
        EXPECT_EQ(webViews.makeWebView(), nullptr);
        EXPECT_EQ(webViews.makeWebView(), nullptr);
        ASSERT_THAT(log->entries(), SizeIs(1)) << "said once";
    }
    EXPECT_EQ(gtk::WebSandboxProbe("true").problem(), std::nullopt);
    setenv(without, "1", 1);
    EXPECT_EQ(gtk::WebSandboxProbe("false").problem(), std::nullopt)
        << "who starts the program has chosen to go without";
    setenv(without, chosen.c_str(), 1);
}

} // namespace
} // namespace zentavo::tests
