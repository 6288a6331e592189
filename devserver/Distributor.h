#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "devserver/EndpointStore.h"
#include "zentavo/foundation/Result.h"

namespace zentavo::devserver {

/// The program of a system that registers apps for pushes and hands pushes to them: a UnifiedPush distributor, in both
/// versions of its interface on D-Bus. For any thread.
class Distributor {
public:
    static constexpr const char* usualName = "org.unifiedpush.Distributor.zentavo_devserver";
    /// Calls to apps under way at a time; further ones fail at once.
    static constexpr std::size_t maximumCalls = 1'000;

    struct Settings {
        /// Its well-known name on the bus.
        std::string name = usualName;
        /// The bus's address; empty means the session's.
        std::string bus;
        /// Endpoints are this, followed by an id: "http://127.0.0.1:8787/_push/".
        std::string endpoints;
        /// How long an app may take, which may have to be started first.
        std::chrono::milliseconds patience{10'000};
    };
    struct Message {
        EndpointStore::Registration to;
        std::string id;
        /// 1 to 4096.
        std::string bytes;
    };

    /// The error says what is missing: a bus, the name, or the library that the program was built without.
    static Result<std::unique_ptr<Distributor>> start(const Settings& settings, std::shared_ptr<EndpointStore> store);
    virtual ~Distributor() = default;

    /// Hands all of them over at once and waits, no longer than the patience says. One text for each message: empty when
    /// its app has taken it, otherwise why not.
    virtual std::vector<std::string> deliver(const std::vector<Message>& messages) = 0;
    /// Tells an app its endpoint, or that it has none any more, without waiting.
    virtual void tellEndpoint(const EndpointStore::Registration& registration) = 0;
    virtual void tellUnregistered(const EndpointStore::Registration& registration) = 0;
    /// Ends every wait and leaves the bus. What is called later fails.
    virtual void stop() = 0;
};

} // namespace zentavo::devserver
