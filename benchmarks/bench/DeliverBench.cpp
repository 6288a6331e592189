#include "bench/Benches.h"

namespace bench {

void benchDeliver(const Options& options, Report& report) {
    const Pairs pairs("deliver", {"events=" + std::to_string(options.events)}, options.repeats, CollectorMode::answer);
    report.add("delivered", "events/s", pairs.sdk("events_per_second"), pairs.floor("events_per_second"),
               ratioAtLeast(0.9));
    report.add("processor time an event", "ns", pairs.sdk("processor_ns"), pairs.floor("processor_ns"),
               ratioAtMost(1.15));
    report.add("body", "bytes", pairs.sdk("body_bytes"), pairs.floor("body_bytes"));
    report.flush("deliver: one request an event, from one process");
}

} // namespace bench
