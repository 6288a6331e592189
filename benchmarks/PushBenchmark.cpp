// Reading the payload of a push: from the text that arrives, from the user info that a notification carries, and the
// bare decoding; beside the JSON parser's own tree of the same bytes.

#include <cstdlib>

#include <benchmark/benchmark.h>
#include <simdjson.h>

#include "tests/push/SamplePush.h"
#include "zentavo/push/NotificationProperties.h"

namespace {

using namespace zentavo;

/// 0: the id and nothing else. 1: every field there is.
Map payload(std::int64_t full) { return full != 0 ? fullPayload() : Map{{"pushId", "p1"}}; }

void mustBe(bool good) {
    if (!good) {
        std::abort();
    }
}

void parseTree(benchmark::State& state) {
    const simdjson::padded_string text(json::write(payload(state.range(0))).value());
    simdjson::dom::parser parser;
    for (auto _ : state) {
        simdjson::dom::element root;
        mustBe(parser.parse(text).get(root) == simdjson::SUCCESS);
        benchmark::DoNotOptimize(root);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void decode(benchmark::State& state) {
    const Map aps = payload(state.range(0));
    for (auto _ : state) {
        KeyedDecoder decoder(aps);
        benchmark::DoNotOptimize(NotificationProperties::decode(decoder));
        mustBe(!decoder.failed());
    }
}

/// What a click costs: the payload travels through JSON text once more.
void readUserInfo(benchmark::State& state) {
    const Map aps = payload(state.range(0));
    for (auto _ : state) {
        const auto read = NotificationProperties::read(aps);
        mustBe(read.ok());
        benchmark::DoNotOptimize(read);
    }
}

void readText(benchmark::State& state) {
    const std::string text = json::write(payload(state.range(0))).value();
    for (auto _ : state) {
        const auto aps = json::readMap(text);
        KeyedDecoder decoder(*aps);
        benchmark::DoNotOptimize(NotificationProperties::decode(decoder));
        mustBe(!decoder.failed());
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

BENCHMARK(parseTree)->Arg(0)->Arg(1);
BENCHMARK(decode)->Arg(0)->Arg(1);
BENCHMARK(readText)->Arg(0)->Arg(1);
BENCHMARK(readUserInfo)->Arg(0)->Arg(1);

} // namespace
