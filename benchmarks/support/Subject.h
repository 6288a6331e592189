#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <vector>

#include "support/Allocations.h"
#include "support/Failure.h"
#include "support/Job.h"
#include "support/ProcessStatus.h"
#include "support/Statistics.h"
#include "support/SteadyTime.h"
#include "support/Traffic.h"

namespace bench {

/// The tasks of a measured program. SDK and floor run the same lines, each with a `Client` of its own:
///
///     explicit Client(const Job&);
///     void start();          up to the moment from which events may come
///     void prepare();        makes the event that `track` sends
///     void track();          hands that event over
///     void buildAndTrack();  makes one and hands it over
template <class Client>
class Subject {
public:
    explicit Subject(Job job) : job_(std::move(job)), shared_(job_.traffic), client_(job_) {}

    void run() {
        if (job_.task == "first") {
            first();
        } else if (job_.task == "track") {
            track();
        } else if (job_.task == "deliver") {
            deliver();
        } else if (job_.task == "memory") {
            memory();
        } else if (job_.task == "queue") {
            queue();
        } else if (job_.task == "leave") {
            leave();
        } else {
            check(false, "unknown task");
        }
    }

private:
    static constexpr std::chrono::seconds patience{20};
    /// Events under way at a time where the queue shall stay short.
    static constexpr std::size_t window = 16;

    std::uint64_t requests() const { return shared_->requests.load(std::memory_order_acquire); }
    void waitFor(std::uint64_t count, std::chrono::microseconds step = std::chrono::milliseconds(1)) {
        check(waitForRequests(*shared_, count, patience, step), "events got lost or are too slow");
    }

    /// Start of the process to "activated" and to the first event.
    void first() {
        client_.start();
        const auto activated = steadyNanoseconds();
        client_.prepare();
        client_.track();
        waitFor(1, std::chrono::microseconds(200));
        tell("activated_at", static_cast<double>(activated));
        tell("first_at", static_cast<double>(shared_->firstAt.load()));
    }

    /// Started, connected, quiet.
    void warmUp() {
        client_.start();
        client_.prepare();
        client_.track();
        waitFor(1);
        sleepFor(std::chrono::milliseconds(100));
        deliverInWindows(4 * window);
        sleepFor(std::chrono::milliseconds(100));
        tell("body_bytes", static_cast<double>(shared_->lastBodyBytes.load()));
    }

    void deliverInWindows(std::size_t events) {
        for (std::size_t sent = 0; sent < events; sent += window) {
            const std::uint64_t before = requests();
            const std::size_t count = std::min(window, events - sent);
            for (std::size_t i = 0; i < count; ++i) {
                client_.track();
            }
            waitFor(before + count);
        }
    }

    /// What a call costs its caller.
    void track() {
        warmUp();
        const std::uint64_t before = requests();
        std::vector<std::int64_t> samples(job_.events);
        const std::uint64_t blocks = allocationsOfThisThread();
        std::int64_t due = steadyNanoseconds();
        for (std::int64_t& sample : samples) {
            if (job_.pause > 0) {
                due += job_.pause;
                const timespec until{due / 1'000'000'000, due % 1'000'000'000};
                clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &until, nullptr);
            }
            const std::int64_t begin = steadyNanoseconds();
            job_.build ? client_.buildAndTrack() : client_.track();
            sample = steadyNanoseconds() - begin;
        }
        const auto events = static_cast<double>(job_.events);
        tell("allocations", static_cast<double>(allocationsOfThisThread() - blocks) / events);
        waitFor(before + job_.events, std::chrono::milliseconds(5));
        double sum = 0;
        for (const std::int64_t sample : samples) {
            sum += static_cast<double>(sample);
        }
        tell("mean", sum / events);
        tell("p50", static_cast<double>(percentile(samples, 0.5)));
        tell("p99", static_cast<double>(percentile(samples, 0.99)));
        tell("max", static_cast<double>(percentile(samples, 1)));
    }

    /// A burst, until the collector has the last of it.
    void deliver() {
        warmUp();
        const std::uint64_t before = requests();
        const std::int64_t processor = processorNanoseconds();
        const std::int64_t begin = steadyNanoseconds();
        for (std::size_t i = 0; i < job_.events; ++i) {
            client_.track();
        }
        waitFor(before + job_.events, std::chrono::milliseconds(5));
        const auto events = static_cast<double>(job_.events);
        tell("events_per_second", events * 1e9 / static_cast<double>(shared_->lastAt.load() - begin));
        sleepFor(std::chrono::milliseconds(50)); // the last answers belong to it
        tell("processor_ns", static_cast<double>(processorNanoseconds() - processor) / events);
    }

    void memory() {
        client_.start();
        client_.prepare();
        client_.track();
        waitFor(1);
        sleepFor(std::chrono::milliseconds(500));
        const auto start = ProcessStatus::now();
        deliverInWindows(job_.events);
        sleepFor(std::chrono::milliseconds(500));
        const auto delivered = ProcessStatus::now();
        const std::uint64_t before = requests();
        for (std::size_t i = 0; i < job_.events; ++i) {
            client_.track();
        }
        waitFor(before + job_.events);
        sleepFor(std::chrono::milliseconds(500));
        const auto burst = ProcessStatus::now();
        tell("resident_kb", static_cast<double>(start.residentKilobytes));
        tell("private_kb", static_cast<double>(start.privateKilobytes));
        tell("delivered_growth_kb", static_cast<double>(delivered.residentKilobytes - start.residentKilobytes));
        tell("burst_growth_kb", static_cast<double>(burst.residentKilobytes - start.residentKilobytes));
        tell("threads", static_cast<double>(std::max(start.threads, burst.threads)));
        tell("body_bytes", static_cast<double>(shared_->lastBodyBytes.load()));
    }

    /// With a collector that never answers: what an event costs while it waits.
    void queue() {
        client_.start();
        client_.prepare();
        // The first thousand make connections and fill what the heap has left over.
        for (std::size_t i = 0; i < 1000; ++i) {
            client_.track();
        }
        waitFor(1);
        sleepFor(std::chrono::milliseconds(300));
        const auto start = ProcessStatus::now();
        for (std::size_t i = 0; i < job_.events; ++i) {
            client_.track();
        }
        sleepFor(std::chrono::milliseconds(300));
        const auto queued = ProcessStatus::now();
        const auto bytes = static_cast<double>(queued.residentKilobytes - start.residentKilobytes) * 1024.0;
        tell("bytes", bytes / static_cast<double>(job_.events));
        tell("body_bytes", static_cast<double>(shared_->lastBodyBytes.load()));
        tell("threads", static_cast<double>(queued.threads));
    }

    /// Leaves `main` right after a few events.
    void leave() {
        client_.start();
        client_.prepare();
        for (std::size_t i = 0; i < job_.events; ++i) {
            client_.track();
        }
        tell("leaving_at", static_cast<double>(steadyNanoseconds()));
    }

    const Job job_;
    const SharedTraffic shared_;
    Client client_;
};

/// The `main` of a measured program.
template <class Client>
int runSubject(int argc, char** argv) {
    try {
        Subject<Client>(Job::fromArguments(argc, argv)).run();
    } catch (const Failure& failure) {
        std::fprintf(stderr, "%s: %s\n", argv[0], failure.what());
        return 2;
    }
    return 0;
}

} // namespace bench
