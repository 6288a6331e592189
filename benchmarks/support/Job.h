#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace bench {

/// What a measured program is asked to do. Travels as its command line: "track port=4711 events=10000".
struct Job {
    std::string task;
    std::uint16_t port = 0;
    int traffic = -1; ///< descriptor of the collector's shared counters
    std::size_t events = 0;
    std::size_t bodyBytes = 0; ///< for the floor: how long a body the SDK makes of the same event
    std::int64_t pause = 0;    ///< nanoseconds from one event to the next; 0: as fast as it goes
    bool build = false;        ///< the building of the event counts, too

    static Job fromArguments(int argc, char** argv);
};

/// One result of a measured program: a line "name value" on its standard output.
void tell(const char* name, double value);

} // namespace bench
