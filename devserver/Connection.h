#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

#include <httplib.h>

namespace zentavo::devserver {

/// One client's TCP connection, used by the thread that serves it; only `shutDown` may be called from another.
class Connection final : public httplib::Stream {
public:
    /// Owns `socket`.
    explicit Connection(int socket) noexcept;
    ~Connection() override;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Waits until a request's first byte has come. False when the client has gone or `idle` has passed.
    bool waitForRequest(std::chrono::milliseconds idle);
    /// Waits for the first bytes, a while at most. True when they are `text`; they are still there to be read.
    bool beginsWith(std::string_view text);
    /// A descriptor of the same connection, which then outlives this object; -1 where there is none to be had.
    int duplicate() const noexcept;
    /// How many more bytes may be read, so that no head or body can be endless; reading beyond it fails.
    void allow(std::size_t bytes) noexcept { allowance_ = bytes; }

    /// Waits for as long as the client stays, `time` at most. True when the time has passed and the client is there.
    bool waitWhileOpen(std::chrono::milliseconds time);
    bool isOpen() { return waitWhileOpen(std::chrono::milliseconds(0)); }

    /// Breaks the connection at once with a reset; what was written but not yet sent is lost. Later writes fail.
    void reset() noexcept;
    /// The connection takes no further request.
    void closeAfterAnswer() noexcept { closing_ = true; }
    bool closing() const noexcept { return closing_; }
    /// Lets the client read what it was sent even if it is still sending itself, for a moment.
    void finish();

    /// Ends all reading, writing and waiting, from any thread.
    void shutDown() noexcept;

    bool is_readable() const override;
    bool is_writable() const override;
    ssize_t read(char* bytes, size_t size) override;
    ssize_t write(const char* bytes, size_t size) override;
    void get_remote_ip_and_port(std::string& ip, int& port) const override;
    void get_local_ip_and_port(std::string& ip, int& port) const override;
    socket_t socket() const override { return socket_; }

private:
    const int socket_;
    std::array<char, 16384> buffer_;
    std::size_t begin_ = 0;
    std::size_t end_ = 0;
    std::size_t allowance_ = 0;
    bool closing_ = false;
    bool broken_ = false;
};

} // namespace zentavo::devserver
