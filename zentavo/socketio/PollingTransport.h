#pragma once

#include <memory>
#include <string>
#include <vector>

#include "zentavo/socketio/EngineAddress.h"
#include "zentavo/socketio/Transport.h"

namespace zentavo::socketio {

/// Carries packets over HTTP: one GET that the server answers when it has something to say, and one POST at a time.
class PollingTransport final : public Transport, public std::enable_shared_from_this<PollingTransport> {
public:
    PollingTransport(EngineAddress address, const EngineOptions& options, const Services& services,
                     std::weak_ptr<TransportOwner> owner);

    void open(const std::string& sid) override;
    void setHandshake(const EngineHandshake& handshake) override;
    bool writable() const override { return !closed_ && !pausing_ && !posting_; }
    bool idle() const override { return writable(); }
    void send(std::deque<EngineFrame>& frames) override;
    void pause() override;
    void resume() override;
    void close() override;

private:
    void poll();
    std::shared_ptr<platform::URLTask> start(const char* method, std::shared_ptr<const std::string> body,
                                             void (PollingTransport::*then)(const platform::URLResult&));
    void onPolled(const platform::URLResult& result);
    void onPosted(const platform::URLResult& result);
    /// The faults of an exchange are the transport's end.
    bool succeeded(const char* what, const platform::URLResult& result);
    void end(const std::string& detail);
    void settlePause();

    const EngineAddress address_;
    const EngineOptions& options_; ///< the owner's
    const Services& services_;     ///< the owner's
    const std::weak_ptr<TransportOwner> owner_;

    std::string sid_;
    std::size_t maxPayload_ = 0;
    std::chrono::milliseconds patience_; ///< how long a server that lives may be silent
    std::string nonce_;
    std::uint64_t requests_ = 0;
    std::shared_ptr<platform::URLTask> polling_;
    std::shared_ptr<platform::URLTask> posting_;
    std::vector<std::shared_ptr<const void>> posted_; ///< what the frames of `posting_` hold
    bool pausing_ = false;
    bool closed_ = false;
};

} // namespace zentavo::socketio
