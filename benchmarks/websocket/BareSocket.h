#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace bench {

/// A TCP connection of this machine that never blocks, with one buffer each way.
class BareSocket {
public:
    /// Takes over a connected socket.
    explicit BareSocket(int fd);
    ~BareSocket();
    BareSocket(const BareSocket&) = delete;
    BareSocket& operator=(const BareSocket&) = delete;

    static int connectTo(std::uint16_t port);
    /// Listens, announces the port and waits for each next connection.
    static int listenAnywhere(std::uint16_t& port);

    /// What waits to be written; whoever adds to it calls `turn`.
    std::string out;
    /// Writes and reads once, after waiting until one of them can be done. What came; empty at the end.
    std::span<char> turn();
    /// Everything up to the empty line; for the handshake.
    std::string head();

private:
    const int fd_;
    std::size_t written_ = 0;
    std::string buffer_;
};

/// The header of a frame and its length; 0 when there is not all of it.
struct BareHeader {
    std::size_t size = 0;
    std::uint64_t length = 0;
    unsigned first = 0;
    std::uint32_t key = 0;
};
BareHeader readHeader(std::span<const char> bytes);
void writeHeader(std::string& out, unsigned first, std::uint64_t length, bool masked, std::uint32_t key);
/// `position`: of the first byte in its frame.
void bareMask(std::span<char> bytes, std::uint32_t key, std::uint64_t position);

} // namespace bench
