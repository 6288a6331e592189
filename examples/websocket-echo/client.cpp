// Sends each line of standard input to a WebSocket server and prints what comes back: zentavo-websocket-client URL
#include <iostream>
#include <semaphore>

#include <zentavo/websocket/WebSocketClient.h>

namespace ws = zentavo::websocket;

int main(int argc, char** argv) {
    std::counting_semaphore<> next(0); // it is open, the last line came back, or it is over
    ws::ClientHandlers handlers;
    handlers.onOpen = [&](const ws::Handshake&) { next.release(); };
    handlers.onMessage = [&](ws::MessageKind, std::string_view content) {
        std::cout << content << std::endl;
        next.release();
    };
    handlers.onClose = [&](const ws::Closed& how, int) {
        std::cerr << "closed: " << static_cast<int>(how.code) << " " << how.reason << "\n";
        next.release(2); // whether it is the next line that is waited for or the end
    };
    ws::WebSocketClient client(handlers);
    if (const auto started = client.open(argc > 1 ? argv[1] : ""); !started) {
        std::cerr << started.error().message << "\nusage: zentavo-websocket-client URL\n";
        return 2;
    }
    for (std::string line; next.acquire(), std::getline(std::cin, line) && client.sendText(line) == ws::Sent::taken;) {
    }
    client.close();
    next.acquire();
}
