#include "devserver/Connection.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace zentavo::devserver {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds readTimeout{10'000};
constexpr milliseconds writeTimeout{10'000};
/// What `finish` still takes from a client that does not stop sending.
constexpr std::size_t lingeringBytes = 64U << 20U;
constexpr milliseconds lingeringPause{1'000};

/// The events that came, or 0 after `timeout`.
int await(int socket, short events, milliseconds timeout) {
    pollfd entry{socket, events, 0};
    while (true) {
        const int count = ::poll(&entry, 1, static_cast<int>(timeout.count()));
        if (count >= 0) {
            return entry.revents;
        }
        if (errno != EINTR) {
            return POLLERR;
        }
    }
}

} // namespace

Connection::Connection(int socket) noexcept : socket_(socket) {
    // Head and body of an answer are written one after the other; neither is to wait for an acknowledgement.
    const int on = 1;
    ::setsockopt(socket_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

Connection::~Connection() { ::close(socket_); }

bool Connection::waitForRequest(milliseconds idle) {
    return begin_ < end_ || (!broken_ && (await(socket_, POLLIN, idle) & POLLIN) != 0);
}

bool Connection::beginsWith(std::string_view text) {
    if (begin_ < end_ || !waitForRequest(readTimeout)) {
        return false;
    }
    std::string first(text.size(), '\0');
    const ssize_t count = ::recv(socket_, first.data(), first.size(), MSG_PEEK | MSG_DONTWAIT);
    return count == static_cast<ssize_t>(text.size()) && first == text;
}

int Connection::duplicate() const noexcept { return ::fcntl(socket_, F_DUPFD_CLOEXEC, 0); }

bool Connection::waitWhileOpen(milliseconds time) { return !broken_ && await(socket_, POLLRDHUP, time) == 0; }

void Connection::reset() noexcept {
    broken_ = true;
    closing_ = true;
    // The reset itself goes out when the socket is closed, right after this request.
    const linger abort{1, 0};
    ::setsockopt(socket_, SOL_SOCKET, SO_LINGER, &abort, sizeof abort);
}

void Connection::finish() {
    if (broken_) {
        return;
    }
    // Closing a socket with unread bytes would reset it, and the client might lose the answer.
    ::shutdown(socket_, SHUT_WR);
    std::size_t left = lingeringBytes;
    while (left > 0 && (await(socket_, POLLIN, lingeringPause) & POLLIN) != 0) {
        const ssize_t count = ::recv(socket_, buffer_.data(), buffer_.size(), 0);
        if (count <= 0) {
            return;
        }
        left -= std::min(left, static_cast<std::size_t>(count));
    }
}

void Connection::shutDown() noexcept { ::shutdown(socket_, SHUT_RDWR); }

bool Connection::is_readable() const {
    return begin_ < end_ || (!broken_ && (await(socket_, POLLIN, readTimeout) & POLLIN) != 0);
}

bool Connection::is_writable() const {
    return !broken_ && (await(socket_, POLLOUT, writeTimeout) & (POLLOUT | POLLERR | POLLHUP)) == POLLOUT;
}

ssize_t Connection::read(char* bytes, size_t size) {
    if (begin_ == end_) {
        if (!is_readable()) {
            return -1;
        }
        const ssize_t count = ::recv(socket_, buffer_.data(), buffer_.size(), 0);
        if (count <= 0) {
            return count;
        }
        begin_ = 0;
        end_ = static_cast<std::size_t>(count);
    }
    const std::size_t count = std::min({size, end_ - begin_, allowance_});
    if (count == 0) {
        closing_ = true;
        return -1;
    }
    std::memcpy(bytes, buffer_.data() + begin_, count);
    begin_ += count;
    allowance_ -= count;
    return static_cast<ssize_t>(count);
}

ssize_t Connection::write(const char* bytes, size_t size) {
    std::size_t done = 0;
    while (done < size) {
        if (broken_) {
            return -1;
        }
        const ssize_t count = ::send(socket_, bytes + done, size - done, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count > 0) {
            done += static_cast<std::size_t>(count);
        } else if ((errno != EAGAIN && errno != EINTR) || !is_writable()) {
            broken_ = true;
        }
    }
    return static_cast<ssize_t>(size);
}

void Connection::get_remote_ip_and_port(std::string& ip, int& port) const {
    ip.clear();
    port = 0;
}

void Connection::get_local_ip_and_port(std::string& ip, int& port) const {
    ip.clear();
    port = 0;
}

} // namespace zentavo::devserver
