#include "websocket/BareSocket.h"

#include <bit>
#include <cstring>

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include "support/Failure.h"

namespace bench {
namespace {

sockaddr_in loopback(std::uint16_t port) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    address.sin_port = htons(port);
    return address;
}

} // namespace

BareSocket::BareSocket(int fd) : fd_(fd), buffer_(262144, '\0') {
    const int yes = 1;
    setsockopt(fd_, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
    fcntl(fd_, F_SETFL, O_NONBLOCK);
}

BareSocket::~BareSocket() { close(fd_); }

int BareSocket::connectTo(std::uint16_t port) {
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in address = loopback(port);
    checkSystem(connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0, "connect");
    return fd;
}

int BareSocket::listenAnywhere(std::uint16_t& port) {
    const int fd = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address = loopback(0);
    socklen_t length = sizeof address;
    checkSystem(bind(fd, reinterpret_cast<const sockaddr*>(&address), length) == 0 && listen(fd, 16) == 0 &&
                    getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) == 0,
                "listen");
    port = ntohs(address.sin_port);
    return fd;
}

std::span<char> BareSocket::turn() {
    for (;;) {
        if (written_ < out.size()) {
            const ssize_t sent = send(fd_, out.data() + written_, out.size() - written_, MSG_NOSIGNAL);
            written_ += sent > 0 ? static_cast<std::size_t>(sent) : 0;
            if (written_ == out.size()) {
                out.clear();
                written_ = 0;
            }
        }
        const ssize_t got = recv(fd_, buffer_.data(), buffer_.size(), 0);
        if (got >= 0) {
            return {buffer_.data(), static_cast<std::size_t>(got)};
        }
        if (errno != EAGAIN) {
            return {};
        }
        const bool unsent = !out.empty();
        pollfd poller{fd_, static_cast<short>(POLLIN | (unsent ? POLLOUT : 0)), 0};
        poll(&poller, 1, 10000);
    }
}

std::string BareSocket::head() {
    std::string text;
    while (text.find("\r\n\r\n") == std::string::npos) {
        const auto some = turn();
        checkSystem(!some.empty(), "a handshake");
        text.append(some.data(), some.size());
    }
    return text;
}

BareHeader readHeader(std::span<const char> bytes) {
    BareHeader header;
    const auto at = [&](std::size_t i) { return static_cast<std::uint64_t>(static_cast<unsigned char>(bytes[i])); };
    if (bytes.size() < 2) {
        return header;
    }
    const std::size_t extra = (at(1) & 127) == 126 ? 2 : (at(1) & 127) == 127 ? 8 : 0;
    const std::size_t mask = (at(1) & 128) != 0 ? 4 : 0;
    if (bytes.size() < 2 + extra + mask) {
        return header;
    }
    header.first = static_cast<unsigned>(at(0));
    header.length = extra == 0 ? at(1) & 127 : 0;
    for (std::size_t i = 0; i < extra; ++i) {
        header.length = header.length << 8 | at(2 + i);
    }
    std::memcpy(&header.key, bytes.data() + 2 + extra, mask);
    header.size = 2 + extra + mask;
    return header;
}

void writeHeader(std::string& out, unsigned first, std::uint64_t length, bool masked, std::uint32_t key) {
    char head[14];
    std::size_t size = 2;
    head[0] = static_cast<char>(first);
    const std::size_t extra = length < 126 ? 0 : length < 65536 ? 2 : 8;
    head[1] = static_cast<char>((masked ? 128U : 0U) | (extra == 0 ? length : extra == 2 ? 126U : 127U));
    for (std::size_t i = 0; i < extra; ++i) {
        head[size++] = static_cast<char>(length >> (8 * (extra - 1 - i)));
    }
    if (masked) {
        std::memcpy(head + size, &key, 4);
        size += 4;
    }
    out.append(head, size);
}

void bareMask(std::span<char> bytes, std::uint32_t key, std::uint64_t position) {
    key = std::rotr(key, static_cast<int>(position % 4 * 8)); // little-endian machines, which all of ours are
    const std::uint64_t wide = std::uint64_t{key} << 32 | key;
    std::size_t i = 0;
    for (; i + 8 <= bytes.size(); i += 8) {
        std::uint64_t word;
        std::memcpy(&word, bytes.data() + i, 8);
        word ^= wide;
        std::memcpy(bytes.data() + i, &word, 8);
    }
    for (; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(bytes[i] ^ static_cast<char>(key >> (i % 4 * 8)));
    }
}

} // namespace bench
