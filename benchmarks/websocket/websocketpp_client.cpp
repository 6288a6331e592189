// websocketpp as a client.

#include <optional>

#include <websocketpp/client.hpp>

#include "websocket/Task.h"
#include "websocket/WebsocketppConfig.h"

namespace {

template <class Config>
void run(const bench::Task& task) {
    websocketpp::client<Config> client;
    bench::prepare(client);
    const std::string message = task.message();
    std::optional<bench::Meter> meter;
    client.set_open_handler([&](websocketpp::connection_hdl handle) {
        bench::sendAtOnce(client, handle);
        meter.emplace(task);
        for (std::size_t i = 0; i < task.window; ++i) {
            client.send(handle, message, websocketpp::frame::opcode::binary);
        }
    });
    client.set_message_handler([&](websocketpp::connection_hdl handle, auto) {
        if (!meter->more()) {
            meter->report();
            std::_Exit(0);
        }
        client.send(handle, message, websocketpp::frame::opcode::binary);
    });
    websocketpp::lib::error_code error;
    const auto connection = client.get_connection("ws://127.0.0.1:" + std::to_string(task.port) + "/", error);
    client.connect(connection);
    client.run();
    std::exit(1);
}

} // namespace

int main(int argc, char** argv) {
    const bench::Task task = bench::Task::of(argc, argv);
    task.deflate ? run<bench::Deflating<websocketpp::config::asio_client>>(task)
                 : run<websocketpp::config::asio_client>(task);
}
