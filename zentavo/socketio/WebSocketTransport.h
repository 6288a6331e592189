#pragma once

#include <memory>
#include <string>

#include "zentavo/socketio/CookieJar.h"
#include "zentavo/socketio/EngineAddress.h"
#include "zentavo/socketio/Transport.h"

namespace zentavo::socketio {

/// Carries packets over a WebSocket connection.
class WebSocketTransport final : public Transport, public std::enable_shared_from_this<WebSocketTransport> {
public:
    WebSocketTransport(EngineAddress address, const EngineOptions& options, const Services& services,
                       const CookieJar& cookies, std::weak_ptr<TransportOwner> owner)
        : address_(std::move(address)), options_(options), services_(services), cookies_(cookies),
          owner_(std::move(owner)) {}

    void open(const std::string& sid) override;
    void setHandshake(const EngineHandshake&) override {}
    bool writable() const override { return open_ && !full_ && connection_; }
    bool idle() const override;
    void send(std::deque<EngineFrame>& frames) override;
    void pause() override {}
    void resume() override {}
    void close() override;

private:
    platform::Headers headers() const;
    void onMessage(std::string_view content, bool binary);
    void onClose(int code, const std::string& reason, int status);
    void end(bool error, const std::string& detail);

    const EngineAddress address_;
    const EngineOptions& options_; ///< the owner's
    const Services& services_;     ///< the owner's
    const CookieJar& cookies_;     ///< the owner's
    const std::weak_ptr<TransportOwner> owner_;
    std::unique_ptr<WebSocketConnection> connection_;
    bool open_ = false;
    bool full_ = false;
    bool closed_ = false;
};

} // namespace zentavo::socketio
