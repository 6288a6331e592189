// Reading a page of the inbox: bytes of the answer per second beside the JSON parser's own tree of the same bytes, and
// the memory that a message takes while it is held.

#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <malloc.h>
#include <simdjson.h>
#include <sys/resource.h>

#include "zentavo/foundation/JSONWriter.h"
#include "zentavo/inbox/InboxAnswer.h"
#include "zentavo/inbox/InboxResponses.h"

namespace {

using namespace zentavo;

/// A message as a shop sends it: some 620 bytes, a picture, a link, one button.
void writeItem(JSONWriter& writer, std::int64_t number) {
    const std::string id = "5f1d7a" + std::to_string(100'000 + number);
    writer.value(Map{{"item_id", id},
                     {"item_type", "message"},
                     {"last_updated", "2026-11-05T09:03:07Z"},
                     {"heading", "Twenty per cent off everything that is warm"},
                     {"date_created", "2026-11-04T08:00:00Z"},
                     {"catalog_ids", List{"sales", "news"}},
                     {"launch_url", "https://shop.example/sale?utm_source=inbox&message=" + id},
                     {"lookup_type", "customer"},
                     {"template_id", "basic-with-picture"},
                     {"content", "Only until Sunday: coats, scarves and boots. Your size is still there."},
                     {"app_url", nullptr},
                     {"status", 1},
                     {"image_url", "https://media.shop.example/pictures/" + id + ".webp"},
                     {"button_label_1", "Have a look"},
                     {"tracking_url", "https://track.shop.example/c/" + id}});
}

std::string page(std::int64_t items) {
    JSONWriter writer;
    writer.beginMap();
    writer.key("data");
    writer.beginMap();
    writer.key("entries");
    writer.beginList();
    for (std::int64_t i = 0; i < items; ++i) {
        writeItem(writer, i);
    }
    writer.endList();
    writer.endMap();
    writer.key("code");
    writer.value(200);
    writer.key("message");
    writer.value("ok");
    writer.endMap();
    return *writer.finish();
}

/// Beyond what an answer may have, so that growth can be seen.
constexpr json::Limits limits{.maximumBytes = std::size_t{1} << 30U, .maximumValues = std::size_t{1} << 30U};

std::vector<InboxItem> decode(const std::string& text) {
    auto response = readInboxAnswer<InboxItemAPIResponse>(
        text, [](const std::string&) {}, limits);
    return response ? std::move(*response).entries() : (std::abort(), std::vector<InboxItem>());
}

/// What the kernel does for a measured loop: memory that comes to be used for the first time, page by page.
class KernelShare {
public:
    explicit KernelShare(benchmark::State& state) : state_(state), before_(now()) {}
    ~KernelShare() {
        const rusage after = now();
        const auto items = static_cast<double>(state_.iterations() * state_.range(0));
        const auto seconds = [](const timeval& t) {
            return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6;
        };
        state_.counters["faults/item"] = static_cast<double>(after.ru_minflt - before_.ru_minflt) / items;
        state_.counters["kernel/item"] = (seconds(after.ru_stime) - seconds(before_.ru_stime)) / items;
        state_.counters["own/item"] = (seconds(after.ru_utime) - seconds(before_.ru_utime)) / items;
    }

private:
    static rusage now() {
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        return usage;
    }

    benchmark::State& state_;
    rusage before_;
};

void report(benchmark::State& state, const std::string& text) {
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * text.size()));
    state.counters["time/item"] = benchmark::Counter(static_cast<double>(state.iterations() * state.range(0)),
                                                     benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

/// With a parser that has its memory already, or with one that has to get it, as the SDK's has for long texts.
void parseTree(benchmark::State& state, bool keepsParser) {
    const simdjson::padded_string text(page(state.range(0)));
    std::optional<simdjson::dom::parser> parser;
    std::optional<KernelShare> share(state);
    for (auto _ : state) {
        if (!keepsParser || !parser) {
            parser.emplace();
        }
        simdjson::dom::element root;
        if (parser->parse(text).get(root) != simdjson::SUCCESS) {
            std::abort();
        }
        benchmark::DoNotOptimize(root);
    }
    share.reset();
    report(state, std::string(text));
}

/// The SDK's own values of the same text, all of them at once, which a page does without.
void readValues(benchmark::State& state) {
    const std::string text = page(state.range(0));
    std::optional<KernelShare> share(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(json::readMap(text, limits));
    }
    share.reset();
    report(state, text);
}

void decodePage(benchmark::State& state) {
    const std::string text = page(state.range(0));
    std::optional<KernelShare> share(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(decode(text));
    }
    share.reset();
    report(state, text);

    const std::size_t before = mallinfo2().uordblks + mallinfo2().hblkhd;
    const std::vector<InboxItem> held = decode(text);
    const std::size_t after = mallinfo2().uordblks + mallinfo2().hblkhd;
    state.counters["held bytes/item"] = static_cast<double>(after - before) / static_cast<double>(held.size());
    state.counters["text bytes/item"] = static_cast<double>(text.size()) / static_cast<double>(held.size());
}

BENCHMARK_CAPTURE(parseTree, kept_parser, true)
    ->Arg(10)
    ->Arg(1'000)
    ->Arg(10'000)
    ->Arg(100'000)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(parseTree, new_parser, false)
    ->Arg(10)
    ->Arg(1'000)
    ->Arg(10'000)
    ->Arg(100'000)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(readValues)->Arg(10)->Arg(1'000)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(decodePage)->Arg(10)->Arg(1'000)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);

} // namespace
