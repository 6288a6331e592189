// From the delivery service's answer to a message that is seen, beside the engine's own time for the same page; and what
// a message takes in memory. Needs a screen: scripts/with-display zentavo-bench-popup [REPEATS]

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <devserver/DevServer.h>
#include <gtk/gtk.h>
#include <ports/gtk/Attach.h>
#include <ports/linux/LinuxPlatform.h>
#include <zentavo/Zentavo.h>
#include <zentavo/foundation/JSON.h>

#include "popup/BarePage.h"
#include "popup/ObservedSession.h"
#include "popup/PageStages.h"
#include "popup/ProcessTree.h"
#include "popup/Stopwatch.h"
#include "support/Statistics.h"

namespace {

using bench::Moment;

constexpr const char* campaign = "promo_centred";
/// What its page says; before that the message is there, and clear as glass.
constexpr int pageWidth = 380;
constexpr std::chrono::seconds patience{20};

/// What the observer of the network hands to the main thread.
struct Answer {
    std::atomic<Moment> came{};
    std::string text; ///< read only after `came` was seen
};

/// The page of whatever message is over the window, or null.
GtkWidget* pageIn(GtkWidget* widget) {
    if (WEBKIT_IS_WEB_VIEW(widget)) {
        return widget;
    }
    for (GtkWidget* child = gtk_widget_get_first_child(widget); child != nullptr;
         child = gtk_widget_get_next_sibling(child)) {
        if (GtkWidget* found = pageIn(child)) {
            return found;
        }
    }
    return nullptr;
}

bool isSeen(GtkWidget* page) {
    return page != nullptr && gtk_widget_get_mapped(page) && gtk_widget_get_width(page) == pageWidth;
}

/// Runs the main loop until `condition`; ends the program where that takes too long.
void runUntil(const std::function<bool()>& condition, const char* what) {
    const Moment end = bench::now() + patience;
    while (!condition()) {
        g_main_context_iteration(nullptr, FALSE);
        if (bench::now() > end) {
            std::fprintf(stderr, "gave up waiting: %s\n", what);
            std::exit(2);
        }
    }
}

void settle() {
    const Moment end = bench::now() + std::chrono::milliseconds(300);
    runUntil([end] { return bench::now() > end; }, "quiet");
}

void line(const char* what, const std::vector<double>& samples, const char* unit) {
    std::printf("%-58s %9.1f %s (%.1f to %.1f)\n", what, bench::median(samples), unit, bench::percentile(samples, 0.0),
                bench::percentile(samples, 1.0));
}

/// Where the time of a message goes, step by step.
class Profile {
public:
    void add(Moment begun, const bench::PageStages& stages, Moment seen) {
        const Moment ends[] = {stages.made, stages.committed, stages.finished, stages.spoke, seen};
        for (std::size_t i = 0; i < std::size(ends); ++i) {
            times_.at(i).push_back(bench::milliseconds(begun, ends[i]));
            begun = ends[i];
        }
    }
    void print() const {
        constexpr const char* names[] = {"  its page is made", "  the first bytes are there", "  it has loaded",
                                         "  it has said its size", "  it is seen"};
        for (std::size_t i = 0; i < times_.size(); ++i) {
            line(names[i], times_.at(i), "ms");
        }
    }

private:
    std::array<std::vector<double>, 5> times_;
};

/// The script of the one campaign in an answer.
std::string scriptIn(const std::string& answer) {
    const auto map = zentavo::json::readMap(answer);
    const auto* contents = map ? map->find("webContents") : nullptr;
    const auto* content = contents != nullptr ? contents->asMap()->begin()->value.asMap() : nullptr;
    const auto* script = content != nullptr ? content->find("javascript") : nullptr;
    return script != nullptr ? *script->asString() : "";
}

} // namespace

int main(int argc, char** argv) {
    const int repeats = argc > 1 ? std::atoi(argv[1]) : 10;
    auto server = zentavo::devserver::DevServer::open({});
    if (!server || !gtk_init_check()) {
        std::fprintf(stderr, "no server or no display; see scripts/with-display\n");
        return 2;
    }
    const auto platform =
        zentavo::linux_port::makeLinuxPlatform({.dataFolder = "/proc/self/nowhere", .mainBundle = {}}); // memory
    Answer answer;
    platform->urlSession = std::make_shared<bench::ObservedSession>(platform->urlSession, [&answer](const auto& text) {
        answer.text = text;
        answer.came = bench::now();
    });
    const auto sdk = std::make_shared<zentavo::Zentavo>(platform);
    sdk->setEndpoints(zentavo::Endpoints::all((*server)->url()));

    auto* window = GTK_WINDOW(gtk_window_new());
    gtk_window_set_default_size(window, 420, 760);
    gtk_window_set_child(window, gtk_label_new("A host"));
    gtk_window_present(window);
    zentavo::gtk::attach(window, *sdk);
    sdk->activate({"4711", "555", "group.bench", "42"});
    settle();

    Profile sdkProfile;
    Profile bareProfile;
    Profile ownEngineProfile;
    std::vector<double> ownEngineTimes;
    std::vector<double> sdkTimes;
    std::vector<double> bareTimes;
    std::vector<double> open;
    std::vector<double> bareOpen;
    std::vector<double> closed;
    const std::string page = (*server)->url() + "/html/index-mobile-border.html?v=2225&portalId=4711&propsId=555";
    auto* overlay = GTK_OVERLAY(gtk_window_get_child(window));
    const auto before = static_cast<double>(bench::treeKilobytes());
    for (int i = 0; i <= repeats; ++i) { // the first round warms up
        answer.came = Moment();
        sdk->track(zentavo::CDPEvent(*sdk, campaign));
        GtkWidget* shown = nullptr;
        runUntil([&] { return (shown = pageIn(GTK_WIDGET(window))) != nullptr; }, "a page");
        std::optional<bench::PageStages> stages(WEBKIT_WEB_VIEW(shown));
        runUntil([&] { return isSeen(shown); }, "a message");
        const Moment seen = bench::now();
        const double took = bench::milliseconds(answer.came, seen);
        if (i > 0) {
            sdkProfile.add(answer.came, *stages, seen);
        }
        stages.reset();
        settle();
        const auto memory = static_cast<double>(bench::treeKilobytes());
        webkit_web_view_evaluate_javascript(
            WEBKIT_WEB_VIEW(pageIn(GTK_WIDGET(window))),
            "window.webkit.messageHandlers.eventHandler.postMessage({type: 'zentavo-cdp-webview-closed'})", -1, nullptr,
            nullptr, nullptr, nullptr, nullptr);
        runUntil([&] { return !sdk->isShowingTemplate(); }, "the message's end");
        settle();
        const auto after = static_cast<double>(bench::treeKilobytes());

        const auto showBare = [&](bench::BarePage::Engine engine, Profile& profile, std::vector<double>& times) {
            const Moment begun = bench::now();
            auto bare = std::make_unique<bench::BarePage>(overlay, page, scriptIn(answer.text), engine);
            const bench::PageStages bareStages(WEBKIT_WEB_VIEW(bare->view()));
            runUntil([&] { return gtk_widget_get_opacity(bare->view()) > 0; }, "the bare page");
            const Moment bareSeen = bench::now();
            if (i > 0) {
                profile.add(begun, bareStages, bareSeen);
                times.push_back(bench::milliseconds(begun, bareSeen));
            }
            settle();
            return bare;
        };
        showBare(bench::BarePage::Engine::likeOurs, ownEngineProfile, ownEngineTimes);
        settle();
        const auto bare = showBare(bench::BarePage::Engine::standard, bareProfile, bareTimes);
        if (i > 0) {
            sdkTimes.push_back(took);
            open.push_back(memory / 1024);
            bareOpen.push_back(static_cast<double>(bench::treeKilobytes()) / 1024);
            closed.push_back(after / 1024);
        }
    }
    std::printf("medians of %d messages (least to most)\n", repeats);
    line("answer of the delivery service to a message that is seen", sdkTimes, "ms");
    sdkProfile.print();
    line("the engine alone, the same page and script", bareTimes, "ms");
    bareProfile.print();
    line("the same, with the SDK's settings of the engine", ownEngineTimes, "ms");
    ownEngineProfile.print();
    std::printf("%-58s %9.2f\n", "ratio", bench::median(sdkTimes) / bench::median(bareTimes));
    std::printf("%-58s %9.2f\n", "ratio with the same settings",
                bench::median(sdkTimes) / bench::median(ownEngineTimes));
    std::printf("%-58s %9.1f MB\n", "processes of the host before the first message", before / 1024);
    line("with a message on screen", open, "MB");
    line("with the bare page on screen", bareOpen, "MB");
    line("after it was closed", closed, "MB");
    gtk_window_destroy(window);
    return 0;
}
