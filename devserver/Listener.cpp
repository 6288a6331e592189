#include "devserver/Listener.h"

#include <cerrno>
#include <chrono>
#include <cstring>
#include <system_error>
#include <utility>

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace zentavo::devserver {

namespace {

constexpr int backlog = 128;
/// How long to wait when the process has no descriptor left for a connection.
constexpr std::chrono::milliseconds breather{20};

struct FreeAddresses {
    void operator()(addrinfo* list) const noexcept { ::freeaddrinfo(list); }
};
using Addresses = std::unique_ptr<addrinfo, FreeAddresses>;

Addresses resolve(const std::string& host, std::uint16_t port) {
    addrinfo wanted{};
    wanted.ai_socktype = SOCK_STREAM;
    wanted.ai_flags = AI_PASSIVE | AI_NUMERICSERV;
    addrinfo* list = nullptr;
    if (::getaddrinfo(host.c_str(), std::to_string(port).c_str(), &wanted, &list) != 0) {
        return nullptr;
    }
    return Addresses(list);
}

std::uint16_t boundPort(int socket) {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
    return ntohs(address.ss_family == AF_INET6 ? reinterpret_cast<const sockaddr_in6&>(address).sin6_port
                                               : reinterpret_cast<const sockaddr_in&>(address).sin_port);
}

} // namespace

bool isLoopback(const std::string& host) {
    const Addresses addresses = resolve(host, 0);
    for (const addrinfo* at = addresses.get(); at != nullptr; at = at->ai_next) {
        if (at->ai_family == AF_INET) {
            const auto* address = reinterpret_cast<const sockaddr_in*>(at->ai_addr);
            if ((ntohl(address->sin_addr.s_addr) >> 24U) != 127) {
                return false;
            }
        } else if (at->ai_family != AF_INET6 ||
                   !IN6_IS_ADDR_LOOPBACK(&reinterpret_cast<const sockaddr_in6*>(at->ai_addr)->sin6_addr)) {
            return false;
        }
    }
    return addresses != nullptr;
}

Result<std::unique_ptr<Listener>> Listener::open(const std::string& host, std::uint16_t port) {
    const Addresses addresses = resolve(host, port);
    if (!addresses) {
        return Error{"no address is known for \"" + host + '"'};
    }
    const int socket = ::socket(addresses->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const int on = 1;
    ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    if (socket < 0 || ::bind(socket, addresses->ai_addr, addresses->ai_addrlen) != 0 ||
        ::listen(socket, backlog) != 0) {
        const std::string reason = std::strerror(errno);
        if (socket >= 0) {
            ::close(socket);
        }
        return Error{"cannot listen on " + host + " port " + std::to_string(port) + ": " + reason};
    }
    return std::unique_ptr<Listener>(new Listener(socket, boundPort(socket)));
}

Listener::~Listener() {
    stop();
    ::close(socket_);
}

void Listener::start(Serve serve) {
    serve_ = std::move(serve);
    acceptor_ = std::thread([this] { acceptAll(); });
}

void Listener::acceptAll() {
    while (true) {
        const int socket = ::accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC);
        const int failure = errno;
        {
            MutexLock lock(mutex_);
            if (stopping_) {
                if (socket >= 0) {
                    ::close(socket);
                }
                return;
            }
        }
        joinFinished();
        if (socket >= 0) {
            take(socket);
        } else if (failure != EINTR && failure != ECONNABORTED) {
            std::this_thread::sleep_for(breather);
        }
    }
}

void Listener::take(int socket) {
    auto connection = std::make_unique<Connection>(socket);
    MutexLock lock(mutex_);
    if (stopping_ || sessions_.size() >= maximumConnections) {
        return;
    }
    const auto session = sessions_.insert(sessions_.end(), Session{std::move(connection), {}});
    // The thread cannot reach its session before this lock is let go.
    try {
        session->thread = std::thread([this, session] { serve(session); });
    } catch (const std::system_error&) {
        sessions_.erase(session); // no thread to be had: the client sees its connection closed
    }
}

void Listener::serve(std::list<Session>::iterator session) {
    Connection* connection = nullptr;
    {
        MutexLock lock(mutex_);
        connection = session->connection.get();
    }
    serve_(*connection);
    // The socket is closed under the lock, so that `stop` never shuts down a stranger's that got its number.
    MutexLock lock(mutex_);
    session->connection.reset();
    finished_.splice(finished_.end(), sessions_, session);
    sessionEnded_.notify_all();
}

void Listener::joinFinished() {
    std::list<Session> finished;
    {
        MutexLock lock(mutex_);
        finished.swap(finished_);
    }
    for (Session& session : finished) {
        session.thread.join();
    }
}

void Listener::stop() {
    {
        MutexLock lock(mutex_);
        stopping_ = true;
    }
    ::shutdown(socket_, SHUT_RDWR);
    if (acceptor_.joinable()) {
        acceptor_.join();
    }
    {
        // No session is added any more.
        MutexLock lock(mutex_);
        for (const Session& session : sessions_) {
            session.connection->shutDown();
        }
        while (!sessions_.empty()) {
            sessionEnded_.wait(lock);
        }
    }
    joinFinished();
}

} // namespace zentavo::devserver
