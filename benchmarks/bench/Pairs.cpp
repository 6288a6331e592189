#include "bench/Benches.h"

namespace bench {

namespace {

Results runOnce(const char* program, const std::string& task, const std::vector<std::string>& arguments,
                CollectorMode mode) {
    const CollectorProcess collector(mode);
    const TemporaryFolder store;
    return Program(program).run(jobArguments(task, collector, arguments), store.path());
}

} // namespace

std::vector<std::string> jobArguments(const std::string& task, const CollectorProcess& collector,
                                      const std::vector<std::string>& more) {
    std::vector<std::string> arguments{task, "port=" + std::to_string(collector.port()),
                                       "traffic=" + std::to_string(collector.traffic().descriptor())};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
}

Pairs::Pairs(const std::string& task, const std::vector<std::string>& arguments, int repeats, CollectorMode mode) {
    for (int i = 0; i < repeats; ++i) {
        Results sdk = runOnce("zentavo-bench-sdk", task, arguments, mode);
        std::vector<std::string> alike = arguments;
        alike.push_back("body=" + std::to_string(static_cast<long>(sdk.at("body_bytes"))));
        Results floor = runOnce("zentavo-bench-floor", task, alike, mode);
        pairs_.push_back({std::move(sdk), std::move(floor)});
    }
}

double Pairs::medianOf(const std::string& name, Results Pair::*side) const {
    std::vector<double> values;
    for (const Pair& pair : pairs_) {
        values.push_back((pair.*side).at(name));
    }
    return median(std::move(values));
}

} // namespace bench
