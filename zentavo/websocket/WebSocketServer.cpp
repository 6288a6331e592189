#include "zentavo/websocket/WebSocketServer.h"

#include <unordered_set>
#include <utility>

#include <asio/ip/tcp.hpp>
#include <asio/post.hpp>
#include <asio/steady_timer.hpp>

#include "zentavo/foundation/Mutex.h"
#include "zentavo/websocket/IOThread.h"
#include "zentavo/websocket/ServerLink.h"

namespace zentavo::websocket {
namespace {

using Tcp = asio::ip::tcp;

// A process without free descriptors tries again.
constexpr std::chrono::milliseconds acceptPause{100};

} // namespace

class WebSocketServer::State : public std::enable_shared_from_this<State> {
public:
    State(ServerHandlers handlers, ServerOptions options, std::shared_ptr<platform::DispatchQueue> queue)
        : host_(std::make_shared<ServerHost>(std::move(handlers))), options_(std::move(options)),
          queue_(std::move(queue)), acceptor_(IOThread::shared().context()), pause_(IOThread::shared().context()) {}

    Result<std::uint16_t> listen(const std::string& address, std::uint16_t port);
    Result<void> adopt(int socket);
    /// `abandon`: no handler starts any more.
    void stop(bool abandon);

private:
    Result<std::uint16_t> tryListen(const std::string& address, std::uint16_t port);
    void accept();
    void accepted(const asio::error_code& error, Tcp::socket socket);
    void serve(Tcp::socket socket);
    void ended(const std::shared_ptr<ServerLink>& link);

    const std::shared_ptr<ServerHost> host_;
    const ServerOptions options_;
    const std::shared_ptr<platform::DispatchQueue> queue_;
    std::shared_ptr<TLSContext> tls_;
    std::atomic<bool> listened_ = false;

    // The I/O thread's, once the server listens.
    Tcp::acceptor acceptor_;
    asio::steady_timer pause_;
    bool listening_ = false;
    bool accepting_ = false;
    bool stopped_ = false;
    std::unordered_set<std::shared_ptr<ServerLink>> links_;
};

Result<std::uint16_t> WebSocketServer::State::listen(const std::string& address, std::uint16_t port) {
    if (listened_.exchange(true)) {
        return Error{"a server listens once"};
    }
    auto result = tryListen(address, port);
    if (!result) {
        asio::error_code ignored;
        acceptor_.close(ignored);
        listened_ = false;
    }
    return result;
}

Result<std::uint16_t> WebSocketServer::State::tryListen(const std::string& address, std::uint16_t port) {
    if (auto checked = checkDeflate(options_.compression); !checked) {
        return checked.error();
    }
    if (!options_.certificateFile.empty()) {
        auto tls = TLSContext::server(options_);
        if (!tls) {
            return tls.error();
        }
        tls_ = *std::move(tls);
    }
    asio::error_code error;
    const Tcp::endpoint endpoint(asio::ip::make_address(address, error), port);
    const auto attempt = [&error](auto&& step) {
        if (!error) {
            step();
        }
    };
    attempt([&] { acceptor_.open(endpoint.protocol(), error); });
    attempt([&] { acceptor_.set_option(Tcp::acceptor::reuse_address(true), error); });
    attempt([&] { acceptor_.bind(endpoint, error); });
    attempt([&] { acceptor_.listen(asio::socket_base::max_listen_connections, error); });
    if (error) {
        return Error{"cannot listen at " + address + ": " + error.message()};
    }
    const std::uint16_t taken = acceptor_.local_endpoint(error).port();
    asio::post(IOThread::shared().context(), [self = shared_from_this()] {
        self->listening_ = true;
        self->accept();
    });
    return taken;
}

void WebSocketServer::State::accept() {
    if (accepting_ || stopped_ || !listening_ || links_.size() >= options_.maximumConnections) {
        return;
    }
    accepting_ = true;
    acceptor_.async_accept([self = shared_from_this()](const asio::error_code& error, Tcp::socket socket) {
        self->accepting_ = false;
        self->accepted(error, std::move(socket));
    });
}

void WebSocketServer::State::accepted(const asio::error_code& error, Tcp::socket socket) {
    if (stopped_) {
        return;
    }
    if (error) {
        pause_.expires_after(acceptPause);
        pause_.async_wait([self = shared_from_this()](const asio::error_code&) { self->accept(); });
        return;
    }
    serve(std::move(socket));
    accept();
}

Result<void> WebSocketServer::State::adopt(int descriptor) {
    if (auto checked = checkDeflate(options_.compression); !checked) {
        return checked;
    }
    Tcp::socket socket(IOThread::shared().context());
    asio::error_code error;
    // The family matters only to who asks the socket for it, and nobody does.
    socket.assign(Tcp::v4(), descriptor, error);
    if (error) {
        return Error{"the connection cannot be taken over: " + error.message()};
    }
    asio::post(IOThread::shared().context(), [self = shared_from_this(), socket = std::move(socket)]() mutable {
        if (!self->stopped_ && self->links_.size() < self->options_.maximumConnections) {
            self->serve(std::move(socket));
        }
    });
    return {};
}

void WebSocketServer::State::serve(Tcp::socket socket) {
    const auto link = std::make_shared<ServerLink>(host_, queue_, options_,
                                                   [weak = weak_from_this()](const std::shared_ptr<ServerLink>& gone) {
                                                       if (const auto self = weak.lock()) {
                                                           self->ended(gone);
                                                       }
                                                   });
    links_.insert(link);
    link->start(std::move(socket), tls_.get());
}

void WebSocketServer::State::ended(const std::shared_ptr<ServerLink>& link) {
    links_.erase(link);
    accept();
}

void WebSocketServer::State::stop(bool abandon) {
    listened_ = true; // a port taken from now on would let nobody in
    if (abandon) {
        host_->gone.store(true);
    }
    asio::post(IOThread::shared().context(), [self = shared_from_this(), abandon] {
        self->stopped_ = true;
        asio::error_code ignored;
        self->acceptor_.close(ignored);
        self->pause_.cancel();
        const auto links = self->links_;
        for (const auto& link : links) {
            abandon ? link->abandon() : link->close(CloseCode::goingAway, {});
        }
    });
}

WebSocketServer::WebSocketServer(ServerHandlers handlers, ServerOptions options,
                                 std::shared_ptr<platform::DispatchQueue> queue)
    : state_(std::make_shared<State>(std::move(handlers), std::move(options), std::move(queue))) {}

WebSocketServer::~WebSocketServer() { state_->stop(true); }

Result<std::uint16_t> WebSocketServer::listen(const std::string& address, std::uint16_t port) {
    return state_->listen(address, port);
}

Result<void> WebSocketServer::adopt(int socket) { return state_->adopt(socket); }

void WebSocketServer::stop() { state_->stop(false); }

} // namespace zentavo::websocket
