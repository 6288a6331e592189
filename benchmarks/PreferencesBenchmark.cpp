// What the store costs its callers. The medium is the temporary folder's.

#include <cstdlib>
#include <filesystem>

#include <benchmark/benchmark.h>

#include "ports/linux/SqlitePreferencesProvider.h"

namespace {

using namespace zentavo;
using linux_port::SqlitePreferencesProvider;

class SilentLog final : public platform::SystemLog {
public:
    void write(platform::LogLevel, std::string_view) override {}
};

/// A folder of its own that is gone afterwards.
struct Folder {
    Folder() {
        std::string name = std::filesystem::temp_directory_path() / "preferences-XXXXXX";
        path = ::mkdtemp(name.data());
    }
    ~Folder() { std::filesystem::remove_all(path); }
    std::filesystem::path path;
};

/// Two of them on one folder are to each other what two processes are. Work for the background is dropped: what is
/// measured is the caller's part.
std::unique_ptr<SqlitePreferencesProvider> provider(const Folder& folder) {
    return std::make_unique<SqlitePreferencesProvider>(folder.path, "standard", "com.example.shop",
                                                       std::make_shared<SilentLog>(), [](auto) {});
}

void readHit(benchmark::State& state) {
    const Folder folder;
    const auto store = provider(folder);
    const auto suite = store->suite("group.shop");
    suite->set("com.example.shop.userId", "c-1029384756");
    for (auto _ : state) {
        benchmark::DoNotOptimize(suite->object("com.example.shop.userId"));
    }
}
BENCHMARK(readHit);

void readAfterForeignWrite(benchmark::State& state) {
    const Folder folder;
    const auto store = provider(folder);
    const auto other = provider(folder);
    const auto suite = store->suite("group.shop");
    const auto foreign = other->suite("group.shop");
    int n = 0;
    for (auto _ : state) {
        state.PauseTiming();
        foreign->set("key", ++n);
        state.ResumeTiming();
        benchmark::DoNotOptimize(suite->object("key"));
    }
}
BENCHMARK(readAfterForeignWrite)->Iterations(20000);

void write(benchmark::State& state) {
    const Folder folder;
    const auto store = provider(folder);
    const auto suite = store->suite("group.shop");
    int n = 0;
    for (auto _ : state) {
        suite->set("com.example.shop.sessionStart", ++n);
    }
}
BENCHMARK(write);

void update(benchmark::State& state) {
    const Folder folder;
    const auto store = provider(folder);
    const auto suite = store->suite("group.shop");
    for (auto _ : state) {
        suite->update("counter", [](const std::optional<Value>& old) {
            return Value(old ? old->exactInt64().value_or(0) + 1 : 1);
        });
    }
}
BENCHMARK(update);

void openExisting(benchmark::State& state) {
    const Folder folder;
    const auto keep = provider(folder);
    keep->suite("group.shop")->set("key", "value");
    for (auto _ : state) {
        const auto store = provider(folder);
        benchmark::DoNotOptimize(store->suite("group.shop")->object("key"));
    }
}
BENCHMARK(openExisting);

/// As the first process of the day does it: the log's index is not there yet.
void openExistingAlone(benchmark::State& state) {
    const Folder folder;
    provider(folder)->suite("group.shop")->set("key", "value");
    for (auto _ : state) {
        const auto store = provider(folder);
        benchmark::DoNotOptimize(store->suite("group.shop")->object("key"));
    }
}
BENCHMARK(openExistingAlone);

void openFresh(benchmark::State& state) {
    const Folder folder;
    int n = 0;
    for (auto _ : state) {
        const auto store = provider(folder);
        store->suite("group.shop" + std::to_string(++n))->set("key", "value");
    }
}
BENCHMARK(openFresh)->Iterations(500);

} // namespace
