#include "bench/Benches.h"

namespace bench {

namespace {

constexpr double mostResident = 10 * 1024;   // kB
constexpr double mostGrowth = 1024;          // kB, after all events are delivered
constexpr double mostQueuedBeyondBody = 600; // bytes an event
constexpr double mostThreads = 3;

} // namespace

void benchMemory(const Options& options, Report& report) {
    const std::string events = "events=" + std::to_string(options.events);
    const int repeats = (options.repeats + 1) / 2; // memory hardly varies
    const Pairs queued("queue", {events}, repeats, CollectorMode::silent);
    const Pairs pairs("memory", {events}, repeats, CollectorMode::answer);
    report.add("resident after start", "kB", pairs.sdk("resident_kb"), pairs.floor("resident_kb"),
               valueAtMost(mostResident));
    report.add("of it private", "kB", pairs.sdk("private_kb"), pairs.floor("private_kb"));
    report.add("more after events delivered", "kB", pairs.sdk("delivered_growth_kb"),
               pairs.floor("delivered_growth_kb"), valueAtMost(mostGrowth));
    report.add("more after a burst delivered", "kB", pairs.sdk("burst_growth_kb"), pairs.floor("burst_growth_kb"));
    report.add("beyond its body, an event that waits", "bytes", queued.sdk("bytes") - queued.sdk("body_bytes"),
               queued.floor("bytes") - queued.floor("body_bytes"), valueAtMost(mostQueuedBeyondBody));
    report.add("threads", "", pairs.sdk("threads"), pairs.floor("threads"), valueAtMost(mostThreads));
    report.flush("memory");
}

} // namespace bench
