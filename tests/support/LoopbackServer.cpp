#include "tests/support/LoopbackServer.h"

#include <cstdlib>
#include <optional>
#include <stdexcept>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

namespace zentavo::tests {

namespace {

constexpr auto patience = std::chrono::seconds(20);
constexpr int pollInterval = 20; // ms; how soon a stop is noticed

int listenAnywhere(std::uint16_t& port) {
    const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* plain = reinterpret_cast<sockaddr*>(&address);
    if (listener < 0 || bind(listener, plain, size) != 0 || listen(listener, 512) != 0 ||
        getsockname(listener, plain, &size) != 0) {
        throw std::runtime_error("no loopback socket");
    }
    port = ntohs(address.sin_port);
    return listener;
}

bool readable(int socket) {
    pollfd waiting{socket, POLLIN, 0};
    return poll(&waiting, 1, pollInterval) > 0;
}

/// Takes a whole request off the front of `bytes`; none while it is not whole.
std::optional<LoopbackServer::Request> take(std::string& bytes) {
    if (bytes.substr(0, 1) == "\x16") {
        bytes.clear();
        return LoopbackServer::Request{"TLS", "/tls", {}, {}};
    }
    const auto headEnd = bytes.find("\r\n\r\n");
    if (headEnd == std::string::npos) {
        return std::nullopt;
    }
    LoopbackServer::Request request;
    std::size_t line = bytes.find("\r\n");
    const auto first = bytes.find(' ');
    const auto second = bytes.find(' ', first + 1);
    request.method = bytes.substr(0, first);
    request.target = bytes.substr(first + 1, second - first - 1);
    while (line < headEnd) {
        const auto begin = line + 2;
        line = bytes.find("\r\n", begin);
        const auto colon = bytes.find(':', begin);
        const auto value = bytes.find_first_not_of(' ', colon + 1);
        request.headers.emplace_back(bytes.substr(begin, colon - begin), bytes.substr(value, line - value));
    }
    const auto length = std::strtoul(request.header("Content-Length").c_str(), nullptr, 10);
    if (bytes.size() - headEnd - 4 < length) {
        return std::nullopt;
    }
    request.body = bytes.substr(headEnd + 4, length);
    bytes.erase(0, headEnd + 4 + length);
    return request;
}

} // namespace

std::string LoopbackServer::Request::header(std::string_view name) const {
    for (const auto& [key, value] : headers) {
        if (key.size() == name.size() && strncasecmp(key.data(), name.data(), name.size()) == 0) {
            return value;
        }
    }
    return "(none)";
}

void LoopbackServer::Reply::send(std::string_view bytes) {
    while (!bytes.empty() && !closed_) {
        const auto sent = ::send(socket_, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) {
            closed_ = true;
            return;
        }
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
}

void LoopbackServer::Reply::answer(int status, std::string_view body, std::string_view headers) {
    std::string bytes = "HTTP/1.1 " + std::to_string(status) + " Whatever\r\nContent-Length: ";
    bytes.append(std::to_string(body.size())).append("\r\n").append(headers).append("\r\n").append(body);
    send(bytes);
}

void LoopbackServer::Reply::close() { closed_ = true; }

void LoopbackServer::Reply::reset() {
    const linger atOnce{1, 0};
    setsockopt(socket_, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    closed_ = true;
}

void LoopbackServer::Reply::hang() {
    const auto until = std::chrono::steady_clock::now() + patience;
    while (!closed_ && !server_.stopping_ && std::chrono::steady_clock::now() < until) {
        char byte = 0;
        if (readable(socket_) && recv(socket_, &byte, 1, MSG_PEEK) <= 0) {
            closed_ = true;
        }
    }
    closed_ = true;
}

LoopbackServer::LoopbackServer(Handler handler) : handler_(std::move(handler)), listener_(listenAnywhere(port_)) {
    accepting_ = std::thread([this] { accept(); });
}

LoopbackServer::~LoopbackServer() {
    stopping_ = true;
    accepting_.join();
    ::close(listener_);
    MutexLock lock(mutex_);
    auto threads = std::move(threads_);
    lock.unlock();
    for (auto& thread : threads) {
        thread.join();
    }
}

URL LoopbackServer::url(std::string_view path, std::string_view scheme) const {
    return *URL::parse(std::string(scheme) + "://127.0.0.1:" + std::to_string(port_) + std::string(path));
}

std::vector<LoopbackServer::Request> LoopbackServer::requests() const {
    MutexLock lock(mutex_);
    return requests_;
}

int LoopbackServer::connections() const {
    MutexLock lock(mutex_);
    return connections_;
}

void LoopbackServer::accept() {
    while (!stopping_) {
        if (!readable(listener_)) {
            continue;
        }
        const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (socket < 0) {
            continue;
        }
        const int on = 1;
        setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
        MutexLock lock(mutex_);
        const int number = ++connections_;
        threads_.emplace_back([this, socket, number] { serve(socket, number); });
    }
}

void LoopbackServer::serve(int socket, int number) {
    Reply reply(*this, socket);
    std::string bytes;
    const auto until = std::chrono::steady_clock::now() + patience;
    while (!reply.closed_ && !stopping_ && std::chrono::steady_clock::now() < until) {
        if (auto request = take(bytes)) {
            request->connection = number;
            MutexLock lock(mutex_);
            requests_.push_back(*request);
            lock.unlock();
            handler_(*request, reply);
            continue;
        }
        char buffer[16384];
        if (!readable(socket)) {
            continue;
        }
        const auto size = recv(socket, buffer, sizeof buffer, 0);
        if (size <= 0) {
            break;
        }
        bytes.append(buffer, static_cast<std::size_t>(size));
    }
    ::close(socket);
}

std::uint16_t closedPort() {
    std::uint16_t port = 0;
    ::close(listenAnywhere(port));
    return port;
}

} // namespace zentavo::tests
