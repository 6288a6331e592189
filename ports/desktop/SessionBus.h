#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "ports/desktop/MethodCall.h"
#include "ports/desktop/Variant.h"
#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Result.h"

namespace zentavo::desktop {

/// The user's message bus, with a connection and a thread of our own: the host may have neither, or a loop that stands
/// still. Both are made when they are first needed. Members on any thread, and none of them waits; what arrives is told
/// on the bus's thread, in the order in which it came.
///
/// Where there is no bus, calls fail with an error and nothing else ever happens. A bus that is lost is not sought again:
/// it ends with the user's session.
class ZENTAVO_EXPORT SessionBus {
public:
    using Block = std::function<void()>;
    using Answer = std::function<void(Result<Variant> values)>;
    using SignalHandler = std::function<void(const std::string& sender, const Variant& parameters)>;
    using MethodHandler = std::function<void(MethodCall call)>;
    using OwnerHandler = std::function<void(const std::string& owner)>;
    using PresenceHandler = std::function<void(bool present)>;

    static constexpr std::chrono::milliseconds usualTimeout{10'000};

    /// That the other side lacks the interface or the method, or that it refuses the arguments.
    enum class Expected { nothing, unknownMethod, refusedArguments };

    struct Call {
        std::string destination;
        std::string path;
        std::string interface;
        std::string method;
        /// A tuple, or nothing for a method without arguments.
        Variant parameters;
        /// What the answer must be, as a type string; any other answer is an error.
        const char* answerType = "()";
        /// Whether the bus may start a program for `destination`.
        bool mayStart = true;
        /// An error of the other side that is none to the caller: the answer is then a null value.
        Expected expected = Expected::nothing;
        std::chrono::milliseconds timeout = usualTimeout;
    };

    /// `address` is for tests; without one the bus is that of the session.
    explicit SessionBus(std::string address = {});
    /// Waits for the handler that runs at the moment, unless this is its thread. Calls that are under way are not
    /// answered any more, names are given back.
    ~SessionBus();
    SessionBus(const SessionBus&) = delete;
    SessionBus& operator=(const SessionBus&) = delete;

    /// Runs `block` on the bus's thread, after what was asked for before.
    void run(Block block);
    /// Runs `block` there after `delay`.
    void after(std::chrono::milliseconds delay, Block block);

    /// `answer` is called once, unless the bus goes before.
    void call(Call call, Answer answer = {});
    /// Sends a signal from an object of ours to whoever listens.
    void emit(std::string path, std::string interface, std::string signal, Variant parameters);

    /// Listens to a signal. `sender` is a name of the bus, which the bus follows from owner to owner, or empty for
    /// whoever sends it; `path` may be empty as well.
    void listen(std::string sender, std::string path, std::string interface, std::string signal, SignalHandler handler);
    /// Told whether somebody owns `name`: once at the beginning, then at each change.
    void watch(std::string name, PresenceHandler handler);
    /// The same, with the unique name of whoever owns it, or none. In order with what the owner sends us.
    void watchOwner(std::string name, OwnerHandler handler);
    /// Makes `name` ours, waiting for it where another program has it. Told when we have it, and when we lose it.
    void own(std::string name, PresenceHandler handler = {});
    /// Gives a name back: what is sent to it from now on is for whoever has it next, or starts that program. `left` is
    /// called when all that was sent to it before has been told here.
    void disown(std::string name, Block left);
    /// Answers calls of the object at `path`. `interfaces` is introspection XML, a "node" with any number of
    /// interfaces; calls that do not fit it are refused before `handler` sees them. To be called before `own`, or a
    /// program that was started for a call misses it.
    void serve(std::string path, const char* interfaces, MethodHandler handler);
    /// The same on a connection that the process has besides this one, and on which it may have a name.
    void serveOn(GDBusConnection* connection, std::string path, const char* interfaces, MethodHandler handler);

private:
    class Core;
    const std::shared_ptr<Core> core_;
};

} // namespace zentavo::desktop
