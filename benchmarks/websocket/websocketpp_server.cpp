// websocketpp as an echo server.

#include <websocketpp/server.hpp>

#include "websocket/Task.h"
#include "websocket/WebsocketppConfig.h"

int main() {
    websocketpp::server<bench::Deflating<websocketpp::config::asio>> server;
    bench::prepare(server);
    server.set_open_handler([&](websocketpp::connection_hdl handle) { bench::sendAtOnce(server, handle); });
    server.set_message_handler([&](websocketpp::connection_hdl handle, const auto& message) {
        websocketpp::lib::error_code ignored;
        server.send(handle, message->get_payload(), message->get_opcode(), ignored);
    });
    server.listen(websocketpp::lib::asio::ip::tcp::endpoint(websocketpp::lib::asio::ip::address_v4::loopback(), 0));
    server.start_accept();
    websocketpp::lib::asio::error_code error;
    bench::announce(server.get_local_endpoint(error).port());
    server.run();
}
