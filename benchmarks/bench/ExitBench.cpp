#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "bench/Benches.h"
#include "support/Failure.h"

namespace bench {

namespace {

constexpr double mostMilliseconds = 1000;

/// Holds a port at which nobody listens.
class ClosedPort {
public:
    ClosedPort() : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof address;
        auto* generic = reinterpret_cast<sockaddr*>(&address);
        checkSystem(bind(socket_, generic, size) == 0 && getsockname(socket_, generic, &size) == 0, "a closed port");
        port_ = ntohs(address.sin_port);
    }
    ~ClosedPort() { close(socket_); }
    ClosedPort(const ClosedPort&) = delete;
    ClosedPort& operator=(const ClosedPort&) = delete;

    std::uint16_t port() const noexcept { return port_; }

private:
    const int socket_;
    std::uint16_t port_ = 0;
};

/// Milliseconds from the end of `main` to the end of the process, and how many of its events arrived.
struct Exit {
    double milliseconds = 0;
    double arrived = 0;
};

Exit leave(const CollectorProcess& collector, std::uint16_t port) {
    const TemporaryFolder store;
    const Results results = Program("zentavo-bench-sdk")
                                .run({"leave", "port=" + std::to_string(port), "events=50",
                                      "traffic=" + std::to_string(collector.traffic().descriptor())},
                                     store.path());
    return {(results.at("ended_at") - results.at("leaving_at")) / 1e6,
            static_cast<double>(collector.traffic()->requests.load())};
}

} // namespace

void benchExit(const Options& options, Report& report) {
    const ClosedPort closed;
    std::vector<double> answering, silent, refused, arrived;
    for (int i = 0; i < options.repeats; ++i) {
        const CollectorProcess good;
        const Exit normal = leave(good, good.port());
        answering.push_back(normal.milliseconds);
        arrived.push_back(normal.arrived);
        const CollectorProcess mute(CollectorMode::silent);
        silent.push_back(leave(mute, mute.port()).milliseconds);
        refused.push_back(leave(good, closed.port()).milliseconds);
    }
    // The longest, not the median: this is a promise.
    report.add("collector answers, longest", "ms", percentile(answering, 1), noFloor, valueAtMost(mostMilliseconds));
    report.add("collector never answers, longest", "ms", percentile(silent, 1), noFloor, valueAtMost(mostMilliseconds));
    report.add("connection refused, longest", "ms", percentile(refused, 1), noFloor, valueAtMost(mostMilliseconds));
    report.add("arrived of 51 handed over, fewest", "events", percentile(arrived, 0));
    report.flush("exit: from the end of main to the end of the process, 50 events handed over");
}

} // namespace bench
