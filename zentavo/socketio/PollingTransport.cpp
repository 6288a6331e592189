#include "zentavo/socketio/PollingTransport.h"

#include <algorithm>
#include <utility>

namespace zentavo::socketio {

using platform::URLRequest;
using platform::URLResult;

namespace {
constexpr std::chrono::milliseconds slack{10'000};
} // namespace

PollingTransport::PollingTransport(EngineAddress address, const EngineOptions& options, const Services& services,
                                   std::weak_ptr<TransportOwner> owner)
    : address_(std::move(address)), options_(options), services_(services), owner_(std::move(owner)),
      patience_(options.connectTimeout),
      nonce_(std::to_string(services.clock->now().time_since_epoch() / std::chrono::milliseconds(1))) {}

void PollingTransport::open(const std::string& sid) {
    sid_ = sid;
    poll();
}

void PollingTransport::setHandshake(const EngineHandshake& handshake) {
    sid_ = handshake.sid;
    maxPayload_ = handshake.maxPayload;
    patience_ = handshake.pingInterval + handshake.pingTimeout + slack;
}

void PollingTransport::poll() { polling_ = start("GET", nullptr, &PollingTransport::onPolled); }

std::shared_ptr<platform::URLTask> PollingTransport::start(const char* method, std::shared_ptr<const std::string> body,
                                                           void (PollingTransport::*then)(const URLResult&)) {
    auto request = std::make_shared<URLRequest>(address_.polling(sid_, nonce_ + "-" + std::to_string(requests_++)));
    request->method = method;
    request->headers = options_.headers;
    if (body) {
        request->headers.emplace_back("Content-Type", "text/plain;charset=UTF-8");
        request->body = std::move(body);
    }
    request->idleTimeout = patience_;
    request->totalTimeout = std::max(request->totalTimeout, patience_);
    request->maximumAnswerBytes = options_.limits.maximumMessage;
    return services_.urlSession->start(std::move(request), services_.queue,
                                       [weak = weak_from_this(), then](const URLResult& result) {
                                           if (const auto self = weak.lock(); self && !self->closed_) {
                                               ((*self).*then)(result);
                                           }
                                       });
}

void PollingTransport::onPolled(const URLResult& result) {
    polling_.reset();
    const auto owner = owner_.lock();
    if (!owner || !succeeded("the poll", result)) {
        return;
    }
    PayloadReader reader(*result.data);
    for (;;) {
        const auto packet = reader.next();
        if (!packet) {
            end("the answer to a poll: " + packet.error().message);
            return;
        }
        if (!packet->has_value()) {
            break;
        }
        owner->onTransportPacket(*this, **packet);
        if (closed_) {
            return;
        }
    }
    if (pausing_) {
        settlePause();
    } else {
        poll();
    }
}

void PollingTransport::send(std::deque<EngineFrame>& frames) {
    auto body = std::make_shared<std::string>();
    while (!frames.empty()) {
        const auto size = sizeInPayload(frames.front()) + (body->empty() ? 0 : 1);
        // A packet that is too large by itself goes alone: the server says what it thinks of it.
        if (!body->empty() && maxPayload_ > 0 && body->size() + size > maxPayload_) {
            break;
        }
        appendToPayload(*body, frames.front());
        if (auto& held = frames.front().held; held && (posted_.empty() || posted_.back() != held)) {
            posted_.push_back(std::move(held)); // the body is memory too, until the server has it
        }
        frames.pop_front();
    }
    posting_ = start("POST", std::move(body), &PollingTransport::onPosted);
}

void PollingTransport::onPosted(const URLResult& result) {
    posting_.reset();
    posted_.clear();
    const auto owner = owner_.lock();
    if (!owner || !succeeded("the post", result)) {
        return;
    }
    if (pausing_) {
        settlePause();
    } else {
        owner->onTransportWritable(*this);
    }
}

bool PollingTransport::succeeded(const char* what, const URLResult& result) {
    const auto owner = owner_.lock();
    if (owner && result.response) {
        owner->onTransportHeaders(result.response->headers);
    }
    if (result.error) {
        end(std::string(what) + " failed: " + result.error->message);
        return false;
    }
    const int status = result.response ? result.response->status : 0;
    if (status != 200 || !result.data) {
        end(std::string(what) + " was answered with status " + std::to_string(status) + " " + result.data.value_or(""));
        return false;
    }
    return true;
}

void PollingTransport::end(const std::string& detail) {
    const auto self = shared_from_this();
    close();
    if (const auto owner = owner_.lock()) {
        owner->onTransportEnd(*this, true, shortened(detail));
    }
}

void PollingTransport::pause() {
    pausing_ = true;
    settlePause();
}

void PollingTransport::resume() {
    pausing_ = false;
    if (!closed_ && !polling_) {
        poll();
    }
}

void PollingTransport::settlePause() {
    if (closed_ || !pausing_ || polling_ || posting_) {
        return;
    }
    if (const auto owner = owner_.lock()) {
        owner->onTransportPaused(*this);
    }
}

void PollingTransport::close() {
    closed_ = true;
    posted_.clear();
    for (auto* task : {&polling_, &posting_}) {
        if (const auto running = std::exchange(*task, nullptr)) {
            running->cancel();
        }
    }
}

} // namespace zentavo::socketio
