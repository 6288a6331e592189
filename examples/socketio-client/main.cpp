// A chat over Socket.IO, of lines of standard input: zentavo-socketio-client URL [NAME]
#include <future>
#include <iostream>

#include <ports/linux/LinuxServices.h>
#include <zentavo/socketio/SocketManager.h>

namespace io = zentavo::socketio;

int main(int argc, char** argv) {
    const auto os = zentavo::linux_port::makeLinuxServices();
    const io::ManagerOptions options{{.transports = {io::TransportKind::webSocket}}}; // polling: os.urlSession, too
    const auto manager = io::SocketManager::make(argc > 1 ? argv[1] : "", options, {os.worker, os.clock, os.random});
    if (!manager) {
        std::cerr << manager.error().message << "\nusage: zentavo-socketio-client URL [NAME]\n";
        return 2;
    }
    const auto socket = *(*manager)->socket("/", {{{"name", argc > 2 ? argv[2] : "guest"}}});
    socket->onConnect([] { std::cout << "connected" << std::endl; });
    socket->onDisconnect([](const io::Disconnection& how) { std::cout << text(how.reason) << std::endl; });
    socket->onConnectError([](const io::ConnectError& error) { std::cout << error.message << std::endl; });
    socket->on("message", [](const io::Event& event) { std::cout << event.arguments.text(0) << std::endl; });
    socket->connect(); // and again, whenever the connection is lost
    for (std::string line; std::getline(std::cin, line);) {
        socket->emit("message", {line}); // waits while there is no connection
    }
    std::promise<void> said; // answered or not, by then the lines before it have left
    socket->emit("bye", {}, std::chrono::seconds(2), [&](const auto&) { said.set_value(); });
    said.get_future().wait();
}
