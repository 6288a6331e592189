// A server that is never the limit: it unmasks payloads as they come and sends them back as they are. What was
// compressed stays so: the client reads the very stream that it wrote, which is sound as long as both ends keep the same context.
// One connection at a time.

#include <strings.h>
#include <sys/socket.h>

#include "websocket/BareSocket.h"
#include "websocket/Task.h"
#include "zentavo/websocket/Handshake.h"

namespace {

using namespace bench;

void serve(int fd) {
    BareSocket socket(fd);
    const std::string head = socket.head();
    std::size_t at = 0;
    for (std::size_t i = 0; i + 19 < head.size(); ++i) {
        if (strncasecmp(head.data() + i, "Sec-WebSocket-Key: ", 19) == 0) {
            at = i + 19;
        }
    }
    socket.out =
        "HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
        "Sec-WebSocket-Accept: " +
        zentavo::websocket::acceptFor(head.substr(at, 24)) + "\r\n" +
        (head.find("permessage-deflate") == std::string::npos ? ""
                                                              : "Sec-WebSocket-Extensions: permessage-deflate\r\n") +
        "\r\n";
    std::string stash;
    BareHeader header;
    std::uint64_t missing = 0;
    for (auto input = socket.turn(); !input.empty(); input = socket.turn()) {
        while (!input.empty()) {
            if (missing == 0) {
                const std::size_t before = stash.size();
                stash.append(input.data(), std::min<std::size_t>(input.size(), 14 - before));
                header = readHeader(stash);
                if (header.size == 0) {
                    break; // all of it is stashed
                }
                stash.clear();
                input = input.subspan(header.size - before);
                missing = header.length;
                writeHeader(socket.out, header.first, header.length, false, 0);
            }
            const auto part = input.first(std::min<std::size_t>(missing, input.size()));
            bareMask(part, header.key, header.length - missing);
            socket.out.append(part.data(), part.size());
            input = input.subspan(part.size());
            missing -= part.size();
        }
    }
}

} // namespace

int main() {
    std::uint16_t port = 0;
    const int listener = BareSocket::listenAnywhere(port);
    announce(port);
    for (;;) {
        serve(accept4(listener, nullptr, nullptr, SOCK_CLOEXEC));
    }
}
