// A WebSocket server on this machine that sends everything back, until its input ends: zentavo-websocket-server PORT
#include <cstdlib>
#include <iostream>
#include <limits>

#include <zentavo/websocket/WebSocketServer.h>

namespace ws = zentavo::websocket;

int main(int argc, char** argv) {
    ws::ServerOptions options;
    options.compression.emplace();
    ws::ServerHandlers handlers;
    handlers.onMessage = [](const auto& connection, ws::MessageKind kind, std::string_view content) {
        if (connection->send(kind, content) != ws::Sent::taken) {
            connection->close(ws::CloseCode::policyViolation, "read faster");
        }
    };
    ws::WebSocketServer server(handlers, options);
    const auto port = server.listen("127.0.0.1", static_cast<std::uint16_t>(argc > 1 ? std::atoi(argv[1]) : 0));
    if (!port) {
        std::cerr << port.error().message << "\nusage: zentavo-websocket-server PORT\n";
        return 1;
    }
    std::cout << "ws://127.0.0.1:" << *port << "/" << std::endl;
    std::cin.ignore(std::numeric_limits<std::streamsize>::max());
}
