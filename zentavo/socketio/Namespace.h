#pragma once

#include <atomic>
#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "zentavo/foundation/Mutex.h"
#include "zentavo/socketio/EarlyEvents.h"
#include "zentavo/socketio/Event.h"
#include "zentavo/socketio/HandlerTable.h"
#include "zentavo/socketio/ManagerOptions.h"
#include "zentavo/socketio/Packet.h"
#include "zentavo/socketio/PendingAcks.h"

namespace zentavo::socketio {

class Connection;

/// One end's side of a namespace. What the host calls comes from any thread and is posted to the queue; all else
/// happens on the queue, where no call of the host's gets in between.
class Namespace final : public std::enable_shared_from_this<Namespace> {
public:
    Namespace(std::string name, Auth auth, const std::shared_ptr<Connection>& connection);

    // Any thread.
    const std::string& name() const noexcept { return name_; }
    HandlerTable& handlers() noexcept { return handlers_; }
    void connect();
    void disconnect();
    void setAuth(Auth auth);
    bool connected() const;
    bool recovered() const;
    std::string id() const;
    Result<void> emit(std::string_view event, Arguments arguments, bool isVolatile, AckHandler handler,
                      std::chrono::milliseconds timeout);
    Result<void> acknowledge(std::uint64_t id, std::uint64_t session, Arguments arguments);
    /// The host let go: no handler starts any more, and the namespace is left.
    void abandon();

    // On the queue.
    bool wanted() const noexcept { return wanted_; }
    /// Not wanted any more, without a word: nobody will try again.
    void giveUp() { wanted_ = false; }
    void join();
    void receive(Packet packet);
    void lose(const Disconnection& how);
    void fail(ConnectError error);
    void leave(bool tellServer);

private:
    enum class State { idle, joining, connected };
    struct Outgoing {
        std::vector<EngineFrame> frames;
        std::optional<std::uint64_t> ackId;
        bool isVolatile = false;
        std::shared_ptr<const Event> seen; ///< for any-handlers
    };
    /// What other threads may ask for.
    struct Snapshot {
        bool connected = false;
        bool recovered = false;
        std::string id;
    };

    template <class Body>
    void post(Body body);
    /// `copies` is how many times the packet is in memory while it waits.
    Result<std::vector<EngineFrame>> framesOf(PacketType type, std::optional<std::uint64_t> id, List data,
                                              std::vector<std::string> attachments, std::size_t copies = 1);
    void sendConnect(Map payload);
    void onJoinTimeout();
    void onConnected(const Packet& packet);
    void onEvent(Packet packet);
    void onAcknowledgement(Packet packet);
    void send(Outgoing outgoing);
    void transmit(Outgoing outgoing);
    void await(std::uint64_t id, AckHandler handler, std::chrono::milliseconds timeout);
    /// Not joined and not joining: nothing of this join reaches into the next one.
    void rest();
    void stopJoinTimer();
    void tell(Event event);
    void publish(Snapshot snapshot);

    const std::string name_;
    const std::weak_ptr<Connection> connection_;
    const std::shared_ptr<platform::DispatchQueue> queue_;
    const Limits limits_;
    HandlerTable handlers_;
    std::atomic<std::uint64_t> nextAck_ = 0;
    std::atomic<bool> abandoned_ = false;

    // On the queue.
    bool wanted_ = false;
    State state_ = State::idle;
    std::uint64_t session_ = 0;       ///< counts joins: what belongs to an earlier one is dropped
    platform::TimerId joinTimer_ = 0; ///< while it is joining
    EarlyEvents early_;
    std::deque<Outgoing> buffer_;
    PendingAcks acks_;
    /// The server keeps what it sends for a while under the first, and knows by the second what we have.
    std::string recoveryId_;
    std::string recoveryOffset_;

    mutable Mutex mutex_;
    Snapshot snapshot_ ZENTAVO_GUARDED_BY(mutex_);
    Auth auth_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo::socketio
