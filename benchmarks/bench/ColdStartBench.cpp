#include "bench/Benches.h"

namespace bench {

namespace {

constexpr double perMillisecond = 1e6;
constexpr double mostStartRatio = 0.7; // of an empty program that links and initialises libcurl
constexpr double mostLaterFirst = 1.0; // milliseconds

/// Milliseconds from the start of the process to `moment`.
double since(const Results& results, const char* moment) {
    return (results.at(moment) - results.at("exec_at")) / perMillisecond;
}

Results firstEvent(const char* program, const std::filesystem::path& store) {
    const CollectorProcess collector;
    return Program(program).run(jobArguments("first", collector, {"body=1200"}), store);
}

struct Samples {
    std::vector<double> activated;
    std::vector<double> first;

    void add(const Results& results) {
        activated.push_back(since(results, "activated_at"));
        first.push_back(since(results, "first_at"));
    }
};

} // namespace

void benchColdStart(const Options& options, Report& report) {
    std::vector<double> curl;
    Samples fresh;
    Samples existing;
    Samples floor;
    const TemporaryFolder used;
    firstEvent("zentavo-bench-sdk", used.path()); // makes the store, and warms the page cache
    for (int i = 0; i < options.startRepeats; ++i) {
        const TemporaryFolder empty;
        curl.push_back(since(Program("zentavo-bench-curl-init").run({}, empty.path()), "activated_at"));
        fresh.add(firstEvent("zentavo-bench-sdk", empty.path()));
        floor.add(firstEvent("zentavo-bench-floor", empty.path()));
        existing.add(firstEvent("zentavo-bench-sdk", used.path()));
    }
    const double linked = median(curl);
    report.add("to \"activated\", new store (floor: libcurl)", "ms", median(fresh.activated), linked,
               ratioAtMost(mostStartRatio));
    report.add("to \"activated\", existing store (libcurl)", "ms", median(existing.activated), linked,
               ratioAtMost(mostStartRatio));
    report.add("to first event received, new store", "ms", median(fresh.first), median(floor.first),
               differenceAtMost(mostLaterFirst));
    report.add("to first event received, existing store", "ms", median(existing.first), median(floor.first),
               differenceAtMost(mostLaterFirst));
    report.flush("coldstart: from exec on");
}

} // namespace bench
