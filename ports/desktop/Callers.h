#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ports/desktop/SessionBus.h"
#include "zentavo/foundation/Export.h"

namespace zentavo::desktop {

/// The programs that may call an object of ours: those that have certain names on the bus, and our own. Everybody on the
/// user's bus can call; only these are heard.
///
/// A connection belongs to a program when it has the program's name, or is of the process that has it (a host's
/// application object has a connection of its own). It stays the program's for as long as it lasts, as the bus never
/// gives a connection's own name twice: one that has given the program's name back, to end, has last things to say.
///
/// Who has a name is followed, and told in order with the calls, so a call of somebody who has left the bus since is still
/// heard. Of whom that does not settle the bus is asked, and the call waits for the answer. The bus's thread.
class ZENTAVO_EXPORT Callers : public std::enable_shared_from_this<Callers> {
public:
    /// Of one connection's calls that wait, more are refused.
    static constexpr std::size_t maximumWaiting = 64;
    /// Of more connections, those that were known first are asked about anew.
    static constexpr std::size_t maximumKnown = 16;

    /// Follows `names` from now on: to be made before the object is served. `bus` outlives this. Any thread.
    static std::shared_ptr<Callers> make(SessionBus& bus, std::vector<std::string> names);
    /// `handler` for calls of programs with `names` alone.
    static SessionBus::MethodHandler only(SessionBus& bus, std::vector<std::string> names,
                                          SessionBus::MethodHandler handler);

    /// Hands `call` to `handler`, after those of the same connection before it, or refuses it as denied.
    void admit(const MethodCall& call, const SessionBus::MethodHandler& handler);

private:
    using ProcessHandler = std::function<void(std::optional<std::uint32_t> process)>;
    struct Waiting {
        MethodCall call;
        SessionBus::MethodHandler handler;
    };

    Callers(SessionBus& bus, std::vector<std::string> names) : bus_(bus), names_(std::move(names)) {}

    bool knows(const std::string& sender) const;
    void remember(const std::string& sender);
    void askProcess(const std::string& name, ProcessHandler answer);
    /// Settles who `sender`, of `process`, is: of the same process as one of `candidates`, from the last on, or a stranger.
    void compare(const std::string& sender, std::uint32_t process, std::vector<std::string> candidates);
    void settle(const std::string& sender, bool known);
    static void refuse(const MethodCall& call);

    SessionBus& bus_;
    const std::vector<std::string> names_;
    std::deque<std::string> known_;                       ///< connections, by their own names
    std::map<std::string, std::vector<Waiting>> waiting_; ///< by the connection that is asked about
};

} // namespace zentavo::desktop
