// Sends each line of standard input to a WebSocket server and prints what comes back.
//
//   zentavo-websocket-client URL
#include <future>
#include <iostream>
#include <string>

#include <zentavo/websocket/WebSocketClient.h>

namespace ws = zentavo::websocket;

int main(int argc, char** argv) {
    std::promise<bool> opened;
    std::promise<void> closed;
    bool waiting = true;
    ws::WebSocketClient client({
        [&](const ws::Handshake&) {
            waiting = false;
            opened.set_value(true);
        },
        [](ws::MessageKind, std::string_view content) { std::cout << content << std::endl; },
        nullptr,
        [&](const ws::Closed& how, int) {
            std::cerr << "closed: " << static_cast<int>(how.code) << " " << how.reason << "\n";
            if (waiting) {
                opened.set_value(false);
            }
            closed.set_value();
        },
    });
    if (const auto started = client.open(argc > 1 ? argv[1] : ""); !started) {
        std::cerr << started.error().message << "\nusage: zentavo-websocket-client URL\n";
        return 2;
    }
    const bool isOpen = opened.get_future().get();
    std::string line;
    while (isOpen && std::getline(std::cin, line) && client.sendText(line) == ws::Sent::taken) {
    }
    client.close();
    closed.get_future().wait();
    return isOpen ? 0 : 1;
}
