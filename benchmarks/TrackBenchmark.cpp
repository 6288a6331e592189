// What `track` does on its caller's thread, piece by piece: no network, no store on a medium, no threads.

#include <benchmark/benchmark.h>
#include <ports/memory/MemoryPlatform.h>
#include <zentavo/core/ZentavoState.h>
#include <zentavo/tracking/CDPEvent.h>
#include <zentavo/tracking/EventBody.h>

#include "support/Allocations.h"

using namespace zentavo;

namespace {

/// Takes requests and forgets them.
class NullSession final : public platform::URLSession {
public:
    std::shared_ptr<platform::URLTask> start(std::shared_ptr<const platform::URLRequest> request,
                                             std::shared_ptr<platform::DispatchQueue>, Completion) override {
        benchmark::DoNotOptimize(request);
        return nullptr;
    }
};

/// An activated instance over a memory store, with a visitor, a customer and attribution.
struct Host {
    Host() {
        system.platform()->urlSession = std::make_shared<NullSession>();
        sdk = std::make_shared<Zentavo>(system.platform());
        sdk->setIsDelivery(false);
        sdk->activate(Configuration("4711", "555", "group.bench", "42"));
        sdk->setUid("visitor-1");
        sdk->setCustomerProperties("c1", {});
    }

    CDPEvent event() const {
        CDPEvent event(*sdk, "view_product", {{{"sku", "SKU-20481-BLUE"}, {"price", 49.95}, {"quantity", 2}}});
        event.setEventProperties({{"list", "home"},
                                  {"category", "shoes/running"},
                                  {"brand", "Swift"},
                                  {"currency", "EUR"},
                                  {"position", 7},
                                  {"available", true},
                                  {"rating", 4.5}});
        return event;
    }

    testing::MemoryPlatform system;
    std::shared_ptr<Zentavo> sdk;
};

/// Runs `body` for the benchmark, and shows how many heap blocks one run takes.
template <class Body>
void measure(benchmark::State& state, Body body) {
    const std::uint64_t before = bench::allocationsOfThisThread();
    for (auto _ : state) {
        body();
    }
    state.counters["blocks"] = benchmark::Counter(static_cast<double>(bench::allocationsOfThisThread() - before),
                                                  benchmark::Counter::kAvgIterations);
}

void buildEvent(benchmark::State& state) {
    const Host host;
    measure(state, [&] {
        CDPEvent event = host.event();
        benchmark::DoNotOptimize(event);
    });
}

void bodyText(benchmark::State& state) {
    const Host host;
    const CDPEvent event = host.event();
    measure(state, [&] {
        const EventBody body(*host.sdk->state(), host.sdk->state()->account(), event, event.portal_id, event.prop_id);
        auto text = body.text();
        benchmark::DoNotOptimize(text);
    });
}

void bodyMap(benchmark::State& state) {
    const Host host;
    const CDPEvent event = host.event();
    measure(state, [&] {
        Map map = event.bodyMap();
        benchmark::DoNotOptimize(map);
    });
}

void track(benchmark::State& state) {
    const Host host;
    const CDPEvent event = host.event();
    measure(state, [&] { host.sdk->track(event); });
}

BENCHMARK(buildEvent);
BENCHMARK(bodyText);
BENCHMARK(bodyMap);
BENCHMARK(track);

} // namespace
