// A rich push from its payload to laid-out views: decoding, building, arithmetic. The screen is one of memory, so that
// what is shown is the SDK's own part.

#include <benchmark/benchmark.h>
#include <ports/memory/MemoryPlatform.h>

#include "PushTemplates.h"

using namespace zentavo;

namespace {

void build(benchmark::State& state) {
    testing::MemoryPlatform system;
    system.attachViews();
    system.session->hold();
    const auto sdk = std::make_shared<Zentavo>(system.platform());
    Zentavo::setShared(sdk);
    const auto push = bench::push(bench::templates[state.range(0)]);
    for (auto _ : state) {
        const auto shown = PushTemplateBaseController::handleNotification(nullptr, push);
        benchmark::DoNotOptimize(shown.get());
        state.PauseTiming();
        shown->close();
        system.queues->runUntilIdle();
        state.ResumeTiming();
    }
    state.SetLabel(bench::templates[state.range(0)]);
    Zentavo::setShared(nullptr);
}
BENCHMARK(build)->DenseRange(0, 4);

} // namespace
