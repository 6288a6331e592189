// Reading and writing JSON, in bytes of JSON text per second, beside a plain copy of the same bytes.

#include <cstdlib>
#include <cstring>
#include <string>

#include <benchmark/benchmark.h>

#include "zentavo/foundation/JSON.h"
#include "zentavo/foundation/JSONWriter.h"

namespace {

using namespace zentavo;

/// About what one tracked event sends: 1.5 kB, mostly short ASCII text, some ids and a few prices.
Map eventBody() {
    List items;
    for (int i = 0; i < 4; ++i) {
        items.emplace_back(Map{{"item_type", "product"},
                               {"sku", "SKU-00" + std::to_string(4711 + i)},
                               {"name", "Light running shoe for the long distance"},
                               {"url", "https://shop.example/p/running-shoe?color=blue&size=42"},
                               {"price", 89.95 + i},
                               {"original_price", 119},
                               {"quantity", 1 + i},
                               {"available", true}});
    }
    return {{"event_category", "product"},
            {"event_action", "view"},
            {"uid", "7C9E6679-7425-40DE-944B-E07FC1F90AE7"},
            {"portal_id", "564892373"},
            {"property_id", "565021090"},
            {"timestamp", 1767603787123},
            {"items", std::move(items)},
            {"context", Map{{"app", Map{{"name", "Storefront"}, {"version", "4.12.0"}, {"build", "20260105"}}},
                            {"device", Map{{"model", "Workstation"}, {"type", "desktop"}, {"manufacturer", "Maker"}}},
                            {"os", Map{{"name", "Linux"}, {"version", "6.1.0"}}},
                            {"locale", "en-GB"},
                            {"screen", Map{{"width", 1920}, {"height", 1080}, {"density", 1.0}}},
                            {"timezone", "Europe/Berlin"}}},
            {"extra",
             Map{{"list", "home"}, {"screen_name", "Home"}, {"screen_label", "Home page"}, {"session_id", "a81f"}}}};
}

Value document(std::int64_t bytes) {
    if (bytes < 4096) {
        return eventBody();
    }
    const Value body = eventBody();
    const std::size_t each = json::write(body)->size();
    return List(static_cast<std::size_t>(bytes) / each + 1, body);
}

std::string textOf(const Value& value) {
    auto text = json::write(value);
    return text ? *std::move(text) : (std::abort(), std::string());
}

void report(benchmark::State& state, const std::string& text) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
    state.counters["bytes"] = static_cast<double>(text.size());
}

void copyBytes(benchmark::State& state) {
    const std::string text = textOf(document(state.range(0)));
    std::string copy(text.size(), ' ');
    for (auto _ : state) {
        std::memcpy(copy.data(), text.data(), text.size());
        benchmark::DoNotOptimize(copy.data());
        benchmark::ClobberMemory();
    }
    report(state, text);
}

void writeJSON(benchmark::State& state) {
    const Value value = document(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(json::write(value));
    }
    report(state, textOf(value));
}

/// As the SDK writes an event: into a string that has its size already.
void writeJSONIntoBuffer(benchmark::State& state) {
    const Value value = document(state.range(0));
    std::string out;
    for (auto _ : state) {
        JSONWriter writer(std::move(out));
        writer.value(value);
        out = *writer.finish();
        benchmark::DoNotOptimize(out.data());
    }
    report(state, out);
}

void readJSON(benchmark::State& state) {
    const std::string text = textOf(document(state.range(0)));
    for (auto _ : state) {
        benchmark::DoNotOptimize(json::read(text));
    }
    report(state, text);
}

constexpr std::int64_t event = 1500;
constexpr std::int64_t megabyte = 1 << 20;

BENCHMARK(copyBytes)->Arg(event)->Arg(megabyte);
BENCHMARK(writeJSON)->Arg(event)->Arg(megabyte);
BENCHMARK(writeJSONIntoBuffer)->Arg(event)->Arg(megabyte);
BENCHMARK(readJSON)->Arg(event)->Arg(megabyte);

} // namespace
