#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "bench/Program.h"
#include "bench/Report.h"
#include "support/CollectorProcess.h"
#include "support/Statistics.h"

namespace bench {

struct Options {
    int repeats = 5;             ///< of each measurement; medians are shown
    int startRepeats = 41;       ///< of the cold start, which is short and noisy
    std::size_t events = 10'000; ///< of a burst
};

/// SDK and floor side by side.
struct Pair {
    Results sdk;
    Results floor;
};

/// Runs one task on both programs in turn, `repeats` times, each run with a new collector and a new store.
class Pairs {
public:
    Pairs(const std::string& task, const std::vector<std::string>& arguments, int repeats, CollectorMode mode);

    double sdk(const std::string& name) const { return medianOf(name, &Pair::sdk); }
    double floor(const std::string& name) const { return medianOf(name, &Pair::floor); }
    const std::vector<Pair>& all() const noexcept { return pairs_; }

private:
    double medianOf(const std::string& name, Results Pair::*side) const;

    std::vector<Pair> pairs_;
};

/// The arguments that every task takes, for a run against `collector`.
std::vector<std::string> jobArguments(const std::string& task, const CollectorProcess& collector,
                                      const std::vector<std::string>& more);

void benchTrack(const Options& options, Report& report);
void benchDeliver(const Options& options, Report& report);
void benchColdStart(const Options& options, Report& report);
void benchMemory(const Options& options, Report& report);
void benchExit(const Options& options, Report& report);
void benchSize(const Options& options, Report& report);

} // namespace bench
