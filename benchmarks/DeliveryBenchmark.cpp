// An answer of the delivery service with 1 to 10,000 campaigns: read, held against the counters, chosen from. Beside it
// the JSON parser's own tree of the same bytes, and that tree with every text copied out of it, which is the least that a
// reader has to do who keeps nothing of the answer.

#include <cstdlib>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <simdjson.h>

#include "ports/memory/MemoryPlatform.h"
#include "zentavo/Zentavo.h"
#include "zentavo/core/ZentavoState.h"
#include "zentavo/foundation/JSONWriter.h"
#include "zentavo/inapp/CampaignChoice.h"

namespace {

using namespace zentavo;

/// A campaign as the visual editor writes it: some 1.5 kB, most of it the script.
Map campaign(std::int64_t number) {
    std::string script = "showCampaign({\"html\":\"<div class=\\\"card\\\">";
    while (script.size() < 1'100) {
        script += "<p style=\\\"margin:0\\\">Only until Sunday: coats, scarves and boots.</p>";
    }
    script += "</div>\"});";
    return {
        {"javascript", std::move(script)},
        {"template", number % 5 == 0 ? "slide_in" : "floating_bar"},
        {"designMode", "VISUAL"},
        {"storyId", 9'000'000 + number},
        {"variantId", 90'000'000 + number},
        {"destinationId", 77},
        {"zoneId", 700 + number % 10},
        {"frequencyCapping", Map{{"event", "impression"}, {"value", 2}, {"object", "person"}, {"timeUnit", "daily"}}},
        {"zoneFrequencyCapping", Map{{"event", "impression"}, {"value", 100}, {"timeUnit", "weekly"}}}};
}

std::string answer(std::int64_t campaigns) {
    JSONWriter writer;
    writer.beginMap();
    writer.key("webContents");
    writer.beginMap();
    for (std::int64_t i = 0; i < campaigns; ++i) {
        writer.key("w" + std::to_string(i));
        writer.value(campaign(i));
    }
    writer.endMap();
    writer.endMap();
    return *writer.finish();
}

/// An SDK whose store has counters of so many stories, every other one used up.
struct Device {
    Device() : sdk(std::make_shared<Zentavo>(memory.platform())) {
        sdk->activate(Configuration{"1001", "555", "group.shop", "42"});
        Map counters;
        for (int i = 0; i < 100; ++i) {
            counters.set(std::to_string(9'000'000 + i), Map{{"timeExpire", 4e9}, {"impression", 1 + i % 2}});
        }
        JSONWriter writer;
        writer.value(counters);
        const auto& state = *sdk->state();
        state.store()->set(state.keys.storyFrequency, *writer.finish());
    }

    testing::MemoryPlatform memory;
    std::shared_ptr<Zentavo> sdk;
};

void report(benchmark::State& state, const std::string& text) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
    state.counters["time/campaign"] = benchmark::Counter(static_cast<double>(state.iterations() * state.range(0)),
                                                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void parseTree(benchmark::State& state) {
    const simdjson::padded_string text(answer(state.range(0)));
    simdjson::dom::parser parser;
    for (auto _ : state) {
        simdjson::dom::element root;
        if (parser.parse(text).get(root) != simdjson::SUCCESS) {
            std::abort();
        }
        benchmark::DoNotOptimize(root);
    }
    report(state, std::string(text));
}

std::string_view textIn(simdjson::dom::object object, std::string_view key) {
    std::string_view text;
    return object[key].get(text) == simdjson::SUCCESS ? text : std::string_view();
}

std::int64_t numberIn(simdjson::dom::object object, std::string_view key) {
    std::int64_t number = 0;
    return object[key].get(number) == simdjson::SUCCESS ? number : 0;
}

void copyLimit(simdjson::dom::object content, std::string_view key, CappingLimit& limit) {
    simdjson::dom::object map;
    if (content[key].get(map) == simdjson::SUCCESS) {
        limit.event = textIn(map, "event");
        limit.value = numberIn(map, "value");
        limit.timeUnit = textIn(map, "timeUnit");
    }
}

void parseTreeAndCopy(benchmark::State& state) {
    const std::string text = answer(state.range(0));
    simdjson::dom::parser parser;
    for (auto _ : state) {
        simdjson::dom::object contents;
        if (parser.parse(text)["webContents"].get(contents) != simdjson::SUCCESS) {
            std::abort();
        }
        DeliveryResponse response;
        for (const auto& [name, value] : contents) {
            const simdjson::dom::object object = value;
            WebContent content;
            content.javascript = textIn(object, "javascript");
            content.templateType = textIn(object, "template");
            content.designMode = textIn(object, "designMode");
            content.storyId = numberIn(object, "storyId");
            content.variantId = numberIn(object, "variantId");
            content.destinationId = numberIn(object, "destinationId");
            content.zoneId = numberIn(object, "zoneId");
            copyLimit(object, "frequencyCapping", content.frequencyCapping.emplace());
            copyLimit(object, "zoneFrequencyCapping", content.zoneFrequencyCapping.emplace());
            response.webContents.emplace_back(name, std::move(content));
        }
        benchmark::DoNotOptimize(response.webContents.data());
    }
    report(state, text);
}

DeliveryResponse decoded(const std::string& text) {
    auto response = DeliveryResponse::decode(text);
    return response ? *std::move(response) : (std::abort(), DeliveryResponse());
}

void decode(benchmark::State& state) {
    const std::string text = answer(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(decoded(text));
    }
    report(state, text);
}

/// The counters are read from the store once, whatever the answer holds.
void decodeCheckAndChoose(benchmark::State& state) {
    const std::string text = answer(state.range(0));
    Device device;
    const auto& sdk = *device.sdk->state();
    for (auto _ : state) {
        benchmark::DoNotOptimize(
            chooseCampaign(decoded(text), Frequency::load(sdk), *sdk.platform->random, *sdk.log, nullptr));
    }
    report(state, text);
}

void loadCounters(benchmark::State& state) {
    Device device;
    for (auto _ : state) {
        benchmark::DoNotOptimize(Frequency::load(*device.sdk->state()));
    }
}

BENCHMARK(parseTree)->RangeMultiplier(10)->Range(1, 10'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(parseTreeAndCopy)->RangeMultiplier(10)->Range(1, 10'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(decode)->RangeMultiplier(10)->Range(1, 10'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(decodeCheckAndChoose)->RangeMultiplier(10)->Range(1, 10'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(loadCounters)->Unit(benchmark::kMicrosecond);

} // namespace
