// Our client: PORT TRANSPORT TASK WINDOW SECONDS. It prints how many exchanges there were, the time they took, its
// processor time, both in seconds, and its resident memory in kB.

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <map>
#include <string>

#include <unistd.h>

#include "ports/linux/LinuxServices.h"
#include "support/ProcessStatus.h"
#include "zentavo/socketio/SocketManager.h"

namespace io = zentavo::socketio;

namespace {

using Clock = std::chrono::steady_clock;

constexpr int batch = 500;
const std::string text = "a line of a chat, as people write them";
const std::string bytes(10'000, '\7');

/// Everything happens on the manager's queue.
class Client {
public:
    Client(std::shared_ptr<io::SocketIOClient> socket, const char* task, double seconds)
        : socket_(std::move(socket)), seconds_(seconds), exchange_(exchanges().at(task)) {}

    void run(int window) {
        socket_->on("item", [this](const io::Event&) {
            if (++count_ % batch == 0) {
                more();
            }
        });
        socket_->onConnect([this, window] {
            begun_ = Clock::now();
            used_ = bench::processorNanoseconds();
            for (int i = 0; i < window; ++i) {
                (this->*exchange_)();
            }
        });
        socket_->onConnectError([](const io::ConnectError& error) {
            std::fprintf(stderr, "%s\n", error.message.c_str());
            std::_Exit(1);
        });
        socket_->connect();
        over_.get_future().wait();
    }

private:
    using Exchange = void (Client::*)();
    static const std::map<std::string, Exchange>& exchanges() {
        static const std::map<std::string, Exchange> all{{"ack", &Client::acknowledged},
                                                         {"binary", &Client::binary},
                                                         {"emit", &Client::emitted},
                                                         {"receive", &Client::received}};
        return all;
    }

    void acknowledged() {
        socket_->emit("ack", {text}, [this](const auto&) { counted(1); });
    }
    void binary() {
        socket_->emit("ack", {io::Binary{bytes}}, [this](const auto&) { counted(1); });
    }
    void emitted() {
        for (int i = 1; i < batch; ++i) {
            socket_->emit("emit", {i, text});
        }
        socket_->emit("ack", {0}, [this](const auto&) { counted(batch); });
    }
    void received() { socket_->emit("burst", {batch, text}); }

    void counted(int exchanges) {
        count_ += exchanges;
        more();
    }
    void more() {
        if (!going_) {
            return;
        }
        const double passed = std::chrono::duration<double>(Clock::now() - begun_).count();
        if (passed < seconds_) {
            (this->*exchange_)();
            return;
        }
        going_ = false;
        std::printf("%lld %.6f %.6f %lld\n", count_, passed,
                    static_cast<double>(bench::processorNanoseconds() - used_) / 1e9,
                    static_cast<long long>(bench::ProcessStatus::now().residentKilobytes));
        std::fflush(stdout);
        over_.set_value();
    }

    const std::shared_ptr<io::SocketIOClient> socket_;
    const double seconds_;
    const Exchange exchange_;
    std::promise<void> over_;
    Clock::time_point begun_;
    std::int64_t used_ = 0;
    long long count_ = 0;
    bool going_ = true;
};

} // namespace

int main(int argc, char** argv) {
    if (argc != 6) {
        std::fprintf(stderr, "usage: %s PORT TRANSPORT TASK WINDOW SECONDS\n", argv[0]);
        return 2;
    }
    alarm(60); // whatever goes wrong
    const auto system = zentavo::linux_port::makeLinuxServices();
    io::ManagerOptions options;
    options.reconnects = false;
    options.transports = {std::string(argv[2]) == "polling" ? io::TransportKind::polling
                                                            : io::TransportKind::webSocket};
    const auto manager = io::SocketManager::make(std::string("http://127.0.0.1:") + argv[1], options,
                                                 {system.worker, system.clock, system.random, system.urlSession});
    if (!manager) {
        return 2;
    }
    const auto socket = *(*manager)->socket("/");
    Client client(socket, argv[3], std::atof(argv[5]));
    client.run(std::atoi(argv[4]));
    socket->disconnect();
    // The goodbye leaves before the queue gets to this.
    std::promise<void> left;
    system.worker->after(std::chrono::milliseconds(50), [&left] { left.set_value(); });
    left.get_future().wait();
    return 0;
}
