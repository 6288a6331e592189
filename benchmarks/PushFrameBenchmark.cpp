// A rich push in a window of the toolkit: what building it takes of the main thread, and the time from the notification
// to the first frame in which it is drawn. Pictures are not waited for. Frames come every 16.7 ms at most.

#include <benchmark/benchmark.h>
#include <gtk/gtk.h>
#include <ports/gtk/Attach.h>
#include <ports/memory/MemoryPlatform.h>

#include "PushTemplates.h"

using namespace zentavo;

namespace {

struct Screen {
    Screen() {
        gtk_init();
        window = GTK_WINDOW(gtk_window_new());
        gtk_window_set_default_size(window, 360, 420);
        system.session->hold();
        sdk = std::make_shared<Zentavo>(system.platform());
        Zentavo::setShared(sdk);
        gtk::attach(window);
        gtk_window_present(window);
        frame();
    }
    /// Runs the loop until something has been drawn.
    void frame() const {
        bool drawn = false;
        GdkFrameClock* clock = gtk_widget_get_frame_clock(GTK_WIDGET(window));
        const gulong handler = g_signal_connect_data(
            clock, "after-paint",
            reinterpret_cast<GCallback>(+[](GdkFrameClock*, gpointer done) { *static_cast<bool*>(done) = true; }),
            &drawn, nullptr, static_cast<GConnectFlags>(0));
        gtk_widget_queue_draw(GTK_WIDGET(window));
        while (!drawn) {
            g_main_context_iteration(nullptr, TRUE);
        }
        g_signal_handler_disconnect(clock, handler);
    }

    GtkWindow* window;
    testing::MemoryPlatform system;
    std::shared_ptr<Zentavo> sdk;
};

Screen& screen() {
    static Screen* const one = new Screen; // left to the end of the process, as a host's is
    return *one;
}

void measure(benchmark::State& state, bool withFrame) {
    Screen& on = screen();
    const auto push = bench::push(bench::templates[state.range(0)]);
    for (auto _ : state) {
        const auto shown = PushTemplateBaseController::handleNotification(nullptr, push);
        if (withFrame) {
            on.frame();
        }
        state.PauseTiming();
        shown->close();
        on.frame();
        state.ResumeTiming();
    }
    state.SetLabel(bench::templates[state.range(0)]);
}
void build(benchmark::State& state) { measure(state, false); }
void firstFrame(benchmark::State& state) { measure(state, true); }
BENCHMARK(build)->DenseRange(0, 4)->Iterations(100)->Unit(benchmark::kMicrosecond);
BENCHMARK(firstFrame)->DenseRange(0, 4)->Iterations(100)->Unit(benchmark::kMicrosecond);

} // namespace
