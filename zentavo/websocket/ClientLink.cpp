#include "zentavo/websocket/ClientLink.h"

#include <algorithm>
#include <utility>

#include <asio/buffer.hpp>
#include <asio/connect.hpp>
#include <asio/post.hpp>
#include <asio/write.hpp>

#include "zentavo/foundation/URL.h"
#include "zentavo/websocket/HeaderGrammar.h"
#include "zentavo/websocket/PlainStream.h"
#include "zentavo/websocket/SecureStream.h"

namespace zentavo::websocket {
namespace {

// Of several addresses one that swallows everything does not use up the time of the others.
constexpr std::chrono::milliseconds longestAttempt{3000};

} // namespace

Result<Address> Address::of(std::string_view text) {
    const auto url = URL::parse(text);
    if (!url || (url->scheme() != "ws" && url->scheme() != "wss") || url->host().empty()) {
        return Error{"this is no ws or wss URL"};
    }
    if (url->fragment() || !url->userInfo().empty()) {
        return Error{"a WebSocket URL has neither a fragment nor a user"};
    }
    Address address;
    address.secure = url->scheme() == "wss";
    address.host = url->host();
    const std::uint16_t usual = address.secure ? 443 : 80;
    address.port = url->port().value_or(usual);
    const bool literal = address.host.find(':') != std::string::npos;
    address.authority = literal ? "[" + address.host + "]" : address.host;
    if (address.port != usual) {
        address.authority += ":" + std::to_string(address.port);
    }
    address.target = url->path().empty() ? "/" : std::string(url->path());
    if (const auto query = url->query()) {
        address.target += "?" + std::string(*query);
    }
    return address;
}

ClientLink::ClientLink(std::shared_ptr<const ClientHandlers> handlers, std::shared_ptr<platform::DispatchQueue> queue,
                       Address address, ClientOptions options, ClientHandshake handshake)
    : Link(Role::client, options, std::move(queue)), handlers_(std::move(handlers)), address_(std::move(address)),
      asked_(std::move(options)), handshake_(std::move(handshake)), resolver_(IOThread::shared().context()),
      socket_(IOThread::shared().context()), attemptTimer_(IOThread::shared().context()) {}

void ClientLink::start() {
    asio::post(IOThread::shared().context(), [this, link = shared_from_this()] {
        turn([&] {
            if (!dead()) {
                arm(Wait::connect, asked_.connectTimeout);
                resolve();
            }
        });
    });
}

template <class Then>
auto ClientLink::step(const char* what, Then then) {
    return [this, link = shared_from_this(), what, then](const asio::error_code& error, auto&&... results) {
        turn([&] {
            if (dead()) {
                return;
            }
            if (error) {
                fail(std::string(what) + ": " + error.message(),
                     what == std::string_view("TLS") ? CloseCode::tlsFailure : CloseCode::abnormal);
                return;
            }
            then(results...);
        });
    };
}

void ClientLink::resolve() {
    const std::string& host = asked_.proxy ? asked_.proxy->host : address_.host;
    const std::uint16_t port = asked_.proxy ? asked_.proxy->port : address_.port;
    resolver_.async_resolve(host, std::to_string(port), asio::ip::tcp::resolver::numeric_service,
                            step("looking up the host", [this](const auto& addresses) { connect(addresses); }));
}

void ClientLink::connect(const asio::ip::tcp::resolver::results_type& addresses) {
    addressesLeft_ = addresses.size();
    const auto share = asked_.connectTimeout / static_cast<std::int64_t>(std::max<std::size_t>(addressesLeft_, 1));
    const auto time = share.count() > 0 ? std::min(share, longestAttempt) : longestAttempt;
    const auto attempt = [this, time](const asio::error_code&, const auto&) {
        boundAttempt(time);
        return true;
    };
    asio::async_connect(socket_, addresses, attempt, step("connecting", [this](const auto&) {
                            addressesLeft_ = 0;
                            attemptTimer_.cancel();
                            asked_.proxy ? askProxy() : secure();
                        }));
}

/// Before each attempt. The last one has all the time that is left.
void ClientLink::boundAttempt(std::chrono::milliseconds time) {
    attemptTimer_.cancel();
    if (--addressesLeft_ == 0) {
        return;
    }
    attemptTimer_.expires_after(time);
    attemptTimer_.async_wait([link = shared_from_this(), left = addressesLeft_](const asio::error_code& error) {
        if (!error && link->addressesLeft_ == left) {
            asio::error_code ignored;
            link->socket_.cancel(ignored); // the next address has its turn
        }
    });
}

void ClientLink::askProxy() {
    const std::string there =
        (address_.host.find(':') != std::string::npos ? "[" + address_.host + "]" : address_.host) + ":" +
        std::to_string(address_.port);
    proxyBytes_ =
        "CONNECT " + there + " HTTP/1.1\r\nHost: " + there + "\r\n" +
        (asked_.proxy->authorization.empty() ? "" : "Proxy-Authorization: " + asked_.proxy->authorization + "\r\n") +
        "\r\n";
    asio::async_write(socket_, asio::buffer(proxyBytes_), step("asking the proxy", [this](std::size_t) {
                          proxyBytes_.resize(4096);
                          readProxy();
                      }));
}

void ClientLink::readProxy() {
    socket_.async_read_some(asio::buffer(proxyBytes_),
                            step("the proxy's answer", [this](std::size_t size) { takeProxyAnswer(size); }));
}

void ClientLink::takeProxyAnswer(std::size_t size) {
    std::span<char> input(proxyBytes_.data(), size);
    const auto taken = proxyAnswer_.take(input);
    if (taken == HTTPHeadReader::Step::needMore) {
        readProxy();
        return;
    }
    const std::string& line = proxyAnswer_.head().startLine;
    // A server that is not spoken to yet stays silent: what follows the answer is no part of the connection.
    if (taken == HTTPHeadReader::Step::done && input.empty() && line.starts_with("HTTP/1.") && line.size() >= 12 &&
        line[9] == '2') {
        secure();
    } else {
        fail("the proxy answered " + grammar::readable(line));
    }
}

void ClientLink::secure() {
    if (!address_.secure) {
        attach(std::make_unique<PlainStream>(std::move(socket_)));
        greet();
        return;
    }
    const auto context = TLSContext::client(asked_);
    if (!context) {
        fail(context.error().message, CloseCode::tlsFailure);
        return;
    }
    auto stream =
        std::make_unique<SecureStream>(std::move(socket_), std::make_unique<TLSEngine>(**context, address_.host));
    stream->handshake(step("TLS", [this] { greet(); }));
    attach(std::move(stream));
}

void ClientLink::greet() {
    arm(Wait::handshake, asked_.handshakeTimeout);
    sendRaw(handshake_.request());
    read();
}

void ClientLink::takeHandshake(std::span<char>& input) {
    switch (handshake_.receive(input)) {
    case ClientHandshake::Step::needMore:
        break;
    case ClientHandshake::Step::done:
        begin(handshake_.result(), {});
        break;
    case ClientHandshake::Step::failed:
        status_ = handshake_.status();
        fail(handshake_.error());
        break;
    }
}

void ClientLink::onEnd() {
    asio::error_code ignored;
    resolver_.cancel();
    attemptTimer_.cancel();
    socket_.close(ignored);
}

void ClientLink::deliverOpen() {
    if (handlers_->onOpen) {
        handlers_->onOpen(agreed());
    }
}

void ClientLink::deliverMessage(MessageKind kind, std::string_view content) {
    if (handlers_->onMessage) {
        handlers_->onMessage(kind, content);
    }
}

void ClientLink::deliverDrain() {
    if (handlers_->onDrain) {
        handlers_->onDrain();
    }
}

void ClientLink::deliverClose() {
    if (handlers_->onClose) {
        handlers_->onClose(closed(), status_);
    }
}

} // namespace zentavo::websocket
