// A stranger who speaks Socket.IO and links no port: he answers for queue, clock, chance and WebSocket himself, and is
// the server too.
#include <algorithm>
#include <cstdio>
#include <deque>
#include <string>

#include <zentavo/socketio/SocketManager.h>

namespace io = zentavo::socketio;
namespace platform = zentavo::platform;

namespace {

class OwnQueue final : public platform::DispatchQueue {
public:
    void async(platform::Block block) override { blocks_.push_back(std::move(block)); }
    platform::TimerId after(std::chrono::nanoseconds, platform::Block) override { return 1; }
    bool cancel(platform::TimerId) override { return true; }
    void run() {
        while (!blocks_.empty()) {
            const auto block = std::move(blocks_.front());
            blocks_.pop_front();
            block();
        }
    }

private:
    std::deque<platform::Block> blocks_;
};

class OwnClock final : public platform::Clock {
public:
    platform::TimePoint now() const override { return {}; }
    std::chrono::nanoseconds steady() const override { return {}; }
    zentavo::LocalTime local(platform::TimePoint) const override { return {}; }
};

class OwnChance final : public platform::Random {
public:
    void fill(std::span<std::uint8_t> bytes) override { std::fill(bytes.begin(), bytes.end(), std::uint8_t{7}); }
};

class OwnServer final : public io::WebSocketConnector {
public:
    std::unique_ptr<io::WebSocketConnection> open(const io::WebSocketRequest&, io::WebSocketEvents events,
                                                  std::shared_ptr<platform::DispatchQueue> queue) override {
        const auto shared = std::make_shared<io::WebSocketEvents>(std::move(events));
        queue->async([shared] {
            shared->onOpen({});
            shared->onMessage(R"(0{"sid":"s"})", false);
        });
        struct Connection final : io::WebSocketConnection {
            io::WebSocketSent send(std::string_view content, bool) override {
                const std::string answer = content == "40"               ? R"(40{"sid":"me"})"
                                           : content.starts_with("420[") ? "430" + std::string(content.substr(3))
                                                                         : "";
                if (!answer.empty()) {
                    queue->async([events = events, answer] { events->onMessage(answer, false); });
                }
                return io::WebSocketSent::taken;
            }
            std::shared_ptr<io::WebSocketEvents> events;
            std::shared_ptr<platform::DispatchQueue> queue;
        };
        auto connection = std::make_unique<Connection>();
        connection->events = shared;
        connection->queue = queue;
        return connection;
    }
};

} // namespace

int main() {
    const auto queue = std::make_shared<OwnQueue>();
    io::ManagerOptions options;
    options.transports = {io::TransportKind::webSocket};
    const auto manager = io::SocketManager::make(
        "ws://chat.example", options,
        {queue, std::make_shared<OwnClock>(), std::make_shared<OwnChance>(), nullptr, std::make_shared<OwnServer>()});
    if (!manager) {
        return 1;
    }
    const auto socket = *(*manager)->socket();
    std::string answer;
    socket->connect();
    socket->emit("hello", {1}, [&](const auto& result) { answer = *(*result)[0].asString(); });
    queue->run();
    std::printf("socketio: %s came back to %s\n", answer.c_str(), socket->id().c_str());
    return answer == "hello" ? 0 : 1;
}
