// A chat over Socket.IO, of lines of standard input: zentavo-socketio-client URL [NAME]
#include <future>
#include <iostream>
#include <string>

#include <ports/linux/LinuxPlatform.h>
#include <zentavo/socketio/SocketManager.h>

namespace io = zentavo::socketio;

int main(int argc, char** argv) {
    const auto system = zentavo::linux_port::makeLinuxPlatform();
    const auto manager = io::SocketManager::make(argc > 1 ? argv[1] : "http://127.0.0.1:3000", {},
                                                 {system->queues->make("chat", zentavo::platform::QueueKind::serial),
                                                  system->clock, system->random, system->urlSession});
    if (!manager) {
        std::cerr << manager.error().message << "\nusage: zentavo-socketio-client URL [NAME]\n";
        return 2;
    }
    const auto socket = *(*manager)->socket("/", {{{"name", argc > 2 ? argv[2] : "guest"}}, nullptr});
    socket->onConnect([] { std::cout << "connected" << std::endl; });
    socket->onDisconnect([](const io::Disconnection& how) { std::cout << text(how.reason) << std::endl; });
    socket->onConnectError([](const io::ConnectError& error) { std::cout << error.message << std::endl; });
    socket->on("message", [](const io::Event& event) {
        const auto* words = event.arguments[0].asString();
        std::cout << (words != nullptr ? *words : "(no text)") << std::endl;
    });
    socket->connect(); // and again, whenever the connection is lost
    for (std::string line; std::getline(std::cin, line);) {
        socket->emit("message", {line}); // waits while there is no connection
    }
    std::promise<void> said; // answered or not, by then the lines before it have left
    const auto answered = [&](const auto&) { said.set_value(); };
    socket->emit("bye", {}, answered, std::chrono::seconds(2));
    said.get_future().wait();
}
