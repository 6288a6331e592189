#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include <sys/resource.h>
#include <unistd.h>

namespace bench {

/// What every client of the comparison does: keeps `window` messages of `size` bytes under way to an echo server of this
/// machine, for some seconds.
///
///     PROGRAM PORT SIZE WINDOW SECONDS DEFLATE
struct Task {
    std::uint16_t port = 0;
    std::size_t size = 0;
    std::size_t window = 1;
    double seconds = 1;
    bool deflate = false;

    static Task of(int argc, char** argv) {
        if (argc != 6) {
            std::fprintf(stderr, "usage: %s PORT SIZE WINDOW SECONDS DEFLATE\n", argv[0]);
            std::exit(2);
        }
        alarm(60); // whatever goes wrong
        return {static_cast<std::uint16_t>(std::atoi(argv[1])), std::strtoul(argv[2], nullptr, 10),
                std::strtoul(argv[3], nullptr, 10), std::atof(argv[4]), std::atoi(argv[5]) != 0};
    }

    /// Something like the JSON that such connections carry.
    std::string message() const {
        std::string text;
        for (std::size_t i = 0; text.size() < size; ++i) {
            text += "{\"id\":" + std::to_string(i * 7919 % 10007) +
                    ",\"name\":\"item\",\"price\":" + std::to_string(i * 104729 % 1009) + "},";
        }
        text.resize(size);
        return text;
    }
};

/// Counts echoes from its making on, and tells when the time is over.
class Meter {
public:
    explicit Meter(const Task& task)
        : until_(begun_ + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(task.seconds))),
          mask_(task.size < 4096 && task.window > 1 ? 63 : 0) {}

    /// After each echo; false when the time is over.
    bool more() { return (++count_ & mask_) != 0 || Clock::now() < until_; }

    /// Echoes, seconds of time, seconds of processor.
    void report() const {
        const double seconds = std::chrono::duration<double>(Clock::now() - begun_).count();
        std::printf("%llu %.6f %.6f\n", static_cast<unsigned long long>(count_), seconds, processor() - used_);
        std::fflush(stdout);
    }

private:
    using Clock = std::chrono::steady_clock;
    static double processor() {
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        const auto seconds = [](const timeval& time) {
            return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
        };
        return seconds(usage.ru_utime) + seconds(usage.ru_stime);
    }

    const Clock::time_point begun_ = Clock::now();
    const Clock::time_point until_;
    const double used_ = processor();
    const unsigned mask_;
    unsigned long long count_ = 0;
};

/// For servers: they print their port, and end after five minutes at the latest.
inline void announce(unsigned port) {
    alarm(300);
    std::printf("%u\n", port);
    std::fflush(stdout);
}

} // namespace bench
