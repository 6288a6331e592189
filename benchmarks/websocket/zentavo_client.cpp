// Our client, its handlers on the I/O thread.

#include <future>
#include <optional>

#include "websocket/Task.h"
#include "zentavo/websocket/WebSocketClient.h"

namespace ws = zentavo::websocket;

int main(int argc, char** argv) {
    const bench::Task task = bench::Task::of(argc, argv);
    const std::string message = task.message();
    std::optional<bench::Meter> meter;
    std::promise<void> over;
    bool going = true;
    std::optional<ws::WebSocketClient> client;
    ws::ClientHandlers handlers;
    handlers.onOpen = [&](const ws::Handshake&) {
        meter.emplace(task);
        for (std::size_t i = 0; i < task.window; ++i) {
            client->sendBinary(message);
        }
    };
    handlers.onMessage = [&](ws::MessageKind, std::string_view) {
        if (going && !meter->more()) {
            going = false;
            meter->report();
            over.set_value();
        }
        if (going) {
            client->sendBinary(message);
        }
    };
    client.emplace(handlers);
    ws::ClientOptions options;
    if (task.deflate) {
        options.compression.emplace().threshold = 0;
    }
    if (!client->open("ws://127.0.0.1:" + std::to_string(task.port) + "/", options)) {
        return 1;
    }
    over.get_future().wait();
    return 0;
}
