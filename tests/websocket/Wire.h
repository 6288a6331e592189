#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace zentavo::websocket::test {

/// A bare TCP connection of a test, which blocks, at most a few seconds. Closed when it goes.
class Wire {
public:
    /// Connects to 127.0.0.1.
    explicit Wire(std::uint16_t port);
    Wire(Wire&& other) noexcept : fd_(other.release()) {}
    Wire& operator=(Wire&&) = delete;
    ~Wire();

    void send(std::string_view bytes) const;
    /// What is there, at least one byte; empty at the end of the stream, and when nothing comes.
    std::string receive() const;
    /// Everything up to the empty line, and what came with it.
    std::string receiveHead() const;
    /// Everything up to the end of the stream.
    std::string receiveAll() const;
    void endSending() const;
    /// The descriptor, for somebody who owns it from now on.
    int release() noexcept { return std::exchange(fd_, -1); }

private:
    friend class Door;
    struct Taken {
        int fd;
    };
    explicit Wire(Taken taken);
    void bound() const;
    int fd_;
};

/// Listens on a free port of 127.0.0.1.
class Door {
public:
    Door();
    ~Door();
    Door(const Door&) = delete;
    Door& operator=(const Door&) = delete;
    std::uint16_t port() const noexcept { return port_; }
    Wire accept() const;

private:
    int fd_;
    std::uint16_t port_ = 0;
};

/// The request of a client, without and with more fields, and the answer to the request in `head`.
std::string upgradeRequest(const std::string& more = {});
std::string upgradeAnswer(const std::string& head, const std::string& more = {});

} // namespace zentavo::websocket::test
