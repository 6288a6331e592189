#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "zentavo/socketio/Engine.h"
#include "zentavo/socketio/ManagerOptions.h"
#include "zentavo/socketio/Namespace.h"
#include "zentavo/socketio/PacketDecoder.h"
#include "zentavo/socketio/SendBudget.h"

namespace zentavo::socketio {

/// What the namespaces of one manager share: the engine, one after the other, and the waits between them. On the queue
/// only, unless it says otherwise.
class Connection final : public EngineOwner, public std::enable_shared_from_this<Connection> {
public:
    Connection(EngineAddress address, ManagerOptions options, Services services, ManagerHandlers handlers);

    // Any thread.
    const std::shared_ptr<platform::DispatchQueue>& queue() const noexcept { return services_.queue; }
    const Limits& limits() const noexcept { return options_.limits; }
    std::chrono::milliseconds connectTimeout() const noexcept { return options_.connectTimeout; }
    SendBudget& budget() noexcept { return budget_; }
    /// The host let go of the manager: no handler of its own starts any more.
    void abandon() { abandoned_ = true; }

    /// `space` wants to be joined: now, or as soon as there is a connection.
    void add(const std::shared_ptr<Namespace>& space);
    /// Without any namespace the connection ends.
    void remove(const Namespace& space);
    void disconnectAll();

    bool alive() { return engine_ && engine_->alive(); }
    bool writable() const { return engine_ && engine_->writable(); }
    void send(std::vector<EngineFrame> frames);
    /// Asks the server to join the namespace `name`: now, or once it has answered what it was asked about it before, or
    /// has had time to see it left.
    void ask(const std::string& name, std::vector<EngineFrame> frames);
    /// Tells the server that the namespace `name` is left.
    void sayLeft(const std::string& name);

private:
    /// A join that the server has not answered yet, or a leave that it may not have seen.
    struct Question {
        bool stale = false;            ///< whoever asked has left
        platform::TimerId pause = 0;   ///< there is no answer to wait for, only time …
        int pauses = 0;                ///< … so many times `apart`
        std::vector<EngineFrame> next; ///< to be asked after it
    };

    void onEngineOpen() override;
    void onEngineMessage(std::string_view content, bool binary) override;
    void onEngineEnd(const Disconnection& how) override;

    /// False when nobody waits for this answer any more.
    bool answers(const Packet& packet);
    void askNext(const std::string& name);
    void pauseBeforeNext(const std::string& name);
    void forgetQuestions();
    void open();
    void scheduleAttempt();
    void close();
    std::vector<std::shared_ptr<Namespace>> spaces() const;
    template <class Handler, class... Values>
    void tell(const Handler& handler, const Values&... values);

    const EngineAddress address_;
    const ManagerOptions options_;
    const Services services_;
    const ManagerHandlers handlers_;
    const std::shared_ptr<CookieJar> cookies_ = std::make_shared<CookieJar>();
    SendBudget budget_;
    std::atomic<bool> abandoned_ = false;

    std::map<std::string, std::shared_ptr<Namespace>, std::less<>> spaces_;
    std::map<std::string, Question, std::less<>> asked_; ///< by namespace
    std::shared_ptr<Engine> engine_;
    std::unique_ptr<PacketDecoder> decoder_;
    bool handshaken_ = false; ///< the engine has been open
    unsigned attempts_ = 0;   ///< since the connection was there
    platform::TimerId timer_ = 0;
};

} // namespace zentavo::socketio
