// What the notification service does with a push that arrives: decrypting it and reading what it says; and the keys of a
// registration.

#include <cstdlib>

#include <benchmark/benchmark.h>

#include "ports/desktop/PushMessage.h"
#include "ports/desktop/WebPushDecryption.h"
#include "ports/memory/SeededRandom.h"
#include "tests/desktop/WebPushSender.h"
#include "tests/push/SamplePush.h"

namespace {

using namespace zentavo;
using desktop::WebPushKeys;

WebPushKeys keys() {
    testing::SeededRandom random(1);
    return WebPushKeys::make(random);
}

void mustBe(bool good) {
    if (!good) {
        std::abort();
    }
}

void decrypt(benchmark::State& state) {
    const WebPushKeys ours = keys();
    const std::string message =
        tests::WebPushSender().encrypt(ours, std::string(static_cast<std::size_t>(state.range(0)), 'x'));
    for (auto _ : state) {
        const auto text = desktop::web_push::decrypt(ours, message);
        mustBe(text.ok());
        benchmark::DoNotOptimize(text);
    }
}

/// Every field there is.
void readPush(benchmark::State& state) {
    Map aps = fullPayload();
    aps.set("alert", Map{{"title", "How was your coat?"}, {"body", "Rate it and get 10 % off the next one."}});
    const std::string text = json::write(Map{{"aps", std::move(aps)}}).value();
    for (auto _ : state) {
        const auto message = desktop::PushMessage::read(text);
        mustBe(message.ok() && message->alert);
        benchmark::DoNotOptimize(message);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
}

void makeKeys(benchmark::State& state) {
    testing::SeededRandom random(1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(WebPushKeys::make(random));
    }
}

BENCHMARK(decrypt)->Arg(200)->Arg(3'993)->Unit(benchmark::kMicrosecond);
BENCHMARK(readPush)->Unit(benchmark::kMicrosecond);
BENCHMARK(makeKeys)->Unit(benchmark::kMicrosecond);

} // namespace
