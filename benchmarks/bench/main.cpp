// zentavo-bench: measures the SDK against the floor. See benchmarks/README.md.

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "bench/Benches.h"
#include "support/Failure.h"

namespace {

struct Command {
    const char* name;
    void (*run)(const bench::Options&, bench::Report&);
};

constexpr Command commands[] = {
    {"track", bench::benchTrack},   {"deliver", bench::benchDeliver}, {"coldstart", bench::benchColdStart},
    {"memory", bench::benchMemory}, {"exit", bench::benchExit},       {"size", bench::benchSize},
};

int usage() {
    std::fputs("usage: zentavo-bench track|deliver|coldstart|memory|exit|size|all [--json] [--repeats N] [--events N]\n"
               "Ends with 0 when every target is met, with 1 when one is missed.\n",
               stderr);
    return 2;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        return usage();
    }
    bench::Options options;
    bool json = false;
    for (int i = 2; i < argc; ++i) {
        const bool more = i + 1 < argc;
        if (std::strcmp(argv[i], "--json") == 0) {
            json = true;
        } else if (std::strcmp(argv[i], "--repeats") == 0 && more) {
            options.repeats = std::atoi(argv[++i]);
            options.startRepeats = options.repeats;
        } else if (std::strcmp(argv[i], "--events") == 0 && more) {
            options.events = std::strtoul(argv[++i], nullptr, 10);
        } else {
            return usage();
        }
    }
    if (options.repeats < 1 || options.events < 1 || options.events > 20'000) {
        return usage();
    }
    const bool all = std::strcmp(argv[1], "all") == 0;
    bench::Report report(json);
    bool ran = false;
    try {
        for (const Command& command : commands) {
            if (all || std::strcmp(argv[1], command.name) == 0) {
                command.run(options, report);
                ran = true;
            }
        }
    } catch (const bench::Failure& failure) {
        std::fprintf(stderr, "zentavo-bench: %s\n", failure.what());
        return 2;
    }
    if (!ran) {
        return usage();
    }
    return report.missed() == 0 ? 0 : 1;
}
