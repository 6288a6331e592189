// A stranger who wants a WebSocket and nothing else: a server and a client in one program.
#include <cstdio>
#include <future>
#include <string>

#include <zentavo/websocket/WebSocketClient.h>
#include <zentavo/websocket/WebSocketServer.h>

namespace ws = zentavo::websocket;

int main() {
    ws::ServerHandlers echo;
    echo.onMessage = [](const auto& connection, ws::MessageKind kind, std::string_view content) {
        connection->send(kind, content);
    };
    ws::WebSocketServer server(echo);
    const auto port = server.listen("127.0.0.1", 0);
    if (!port) {
        return 1;
    }
    std::promise<std::string> answer;
    ws::ClientHandlers handlers;
    ws::WebSocketClient* self = nullptr;
    handlers.onOpen = [&](const ws::Handshake&) { self->sendText("hello"); };
    handlers.onMessage = [&](ws::MessageKind, std::string_view content) { answer.set_value(std::string(content)); };
    ws::WebSocketClient client(handlers);
    self = &client;
    if (!client.open("ws://127.0.0.1:" + std::to_string(*port))) {
        return 1;
    }
    const bool same = answer.get_future().get() == "hello";
    std::printf("websocket: %s\n", same ? "hello came back" : "something else came back");
    return same ? 0 : 1;
}
