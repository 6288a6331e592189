// Sends each line of standard input to a WebSocket server and prints what comes back: zentavo-websocket-client URL
#include <future>
#include <iostream>
#include <semaphore>
#include <string>

#include <zentavo/websocket/WebSocketClient.h>

namespace ws = zentavo::websocket;

int main(int argc, char** argv) {
    std::counting_semaphore<> next(0); // a line may be sent: it is open, the last one came back, or it is over
    std::promise<ws::Closed> closed;
    ws::ClientHandlers handlers;
    handlers.onOpen = [&](const ws::Handshake&) { next.release(); };
    handlers.onMessage = [&](ws::MessageKind, std::string_view content) {
        std::cout << content << std::endl;
        next.release();
    };
    handlers.onClose = [&](const ws::Closed& how, int) {
        next.release();
        closed.set_value(how);
    };
    ws::WebSocketClient client(handlers);
    if (const auto started = client.open(argc > 1 ? argv[1] : ""); !started) {
        std::cerr << started.error().message << "\nusage: zentavo-websocket-client URL\n";
        return 2;
    }
    for (std::string line; next.acquire(), std::getline(std::cin, line) && client.sendText(line) == ws::Sent::taken;) {
    }
    client.close();
    const auto how = closed.get_future().get();
    std::cerr << "closed: " << static_cast<int>(how.code) << " " << how.reason << "\n";
    return how.clean ? 0 : 1;
}
