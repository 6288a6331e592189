#include "bench/Benches.h"

namespace bench {

namespace {

constexpr double mostAllocations = 12;
constexpr double mostCallerRatio = 1.5;
constexpr double mostTail = 5; // of the 99th percentile over the median

void compare(const std::string& name, const Pairs& pairs, bool prebuilt, Report& report) {
    const auto target = [&](Target wanted) { return prebuilt ? wanted : Target(); };
    report.add(name + ", median", "ns", pairs.sdk("p50"), pairs.floor("p50"), target(ratioAtMost(mostCallerRatio)));
    report.add(name + ", mean", "ns", pairs.sdk("mean"), pairs.floor("mean"));
    report.add(name + ", 99th percentile", "ns", pairs.sdk("p99"), pairs.floor("p99"),
               target(valueAtMost(mostTail * pairs.sdk("p50"))));
    report.add(name + ", longest", "ns", pairs.sdk("max"), pairs.floor("max"));
    report.add(name + ", heap allocations", "blocks", pairs.sdk("allocations"), pairs.floor("allocations"),
               target(valueAtMost(mostAllocations)));
}

} // namespace

void benchTrack(const Options& options, Report& report) {
    const std::string events = "events=" + std::to_string(options.events);
    const std::vector<std::string> paced{"events=400", "pause=2000000"};
    const auto built = [](std::vector<std::string> arguments) {
        arguments.emplace_back("build=1");
        return arguments;
    };
    compare("burst", Pairs("track", {events}, options.repeats, CollectorMode::answer), true, report);
    compare("every 2 ms", Pairs("track", paced, options.repeats, CollectorMode::answer), true, report);
    compare("burst, event built", Pairs("track", built({events}), options.repeats, CollectorMode::answer), false,
            report);
    compare("every 2 ms, event built", Pairs("track", built(paced), options.repeats, CollectorMode::answer), false,
            report);
    report.flush("track: what a call costs its caller");
}

} // namespace bench
