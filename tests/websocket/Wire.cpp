#include "tests/websocket/Wire.h"

#include <stdexcept>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "zentavo/websocket/Handshake.h"

namespace zentavo::websocket::test {
namespace {

sockaddr_in loopback(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

void check(bool good, const char* what) {
    if (!good) {
        throw std::runtime_error(what);
    }
}

} // namespace

Wire::Wire(std::uint16_t port) : fd_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    bound();
    const sockaddr_in address = loopback(port);
    check(connect(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0, "connect");
}

Wire::Wire(Taken taken) : fd_(taken.fd) { bound(); }

Wire::~Wire() {
    if (fd_ >= 0) {
        ::close(fd_);
    }
}

void Wire::bound() const {
    const timeval patience{5, 0};
    setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    setsockopt(fd_, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
}

void Wire::send(std::string_view bytes) const {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(fd_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) {
            return; // the other end may have had enough; what it said will tell
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
}

std::string Wire::receive() const {
    std::string bytes(65536, '\0');
    const ssize_t size = recv(fd_, bytes.data(), bytes.size(), 0);
    bytes.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return bytes;
}

std::string Wire::receiveHead() const {
    std::string bytes;
    while (bytes.find("\r\n\r\n") == std::string::npos) {
        const std::string more = receive();
        if (more.empty()) {
            break;
        }
        bytes += more;
    }
    return bytes;
}

std::string Wire::receiveAll() const {
    std::string bytes;
    for (std::string more = receive(); !more.empty(); more = receive()) {
        bytes += more;
    }
    return bytes;
}

void Wire::endSending() const { shutdown(fd_, SHUT_WR); }

Door::Door() : fd_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = loopback(0);
    socklen_t length = sizeof address;
    check(bind(fd_, reinterpret_cast<const sockaddr*>(&address), length) == 0 && ::listen(fd_, 16) == 0 &&
              getsockname(fd_, reinterpret_cast<sockaddr*>(&address), &length) == 0,
          "listen");
    port_ = ntohs(address.sin_port);
    const timeval patience{5, 0};
    setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
}

Door::~Door() { ::close(fd_); }

Wire Door::accept() const {
    const int fd = ::accept4(fd_, nullptr, nullptr, SOCK_CLOEXEC);
    check(fd >= 0, "nobody connects");
    return Wire(Wire::Taken{fd});
}

std::string upgradeRequest(const std::string& more) {
    return "GET / HTTP/1.1\r\nHost: localhost\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
           "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\n" +
           more + "\r\n";
}

std::string upgradeAnswer(const std::string& head, const std::string& more) {
    const std::size_t at = head.find("Sec-WebSocket-Key: ");
    const std::string key = at == std::string::npos ? std::string() : head.substr(at + 19, 24);
    return "HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Accept: " +
           acceptFor(key) + "\r\n" + more + "\r\n";
}

} // namespace zentavo::websocket::test
