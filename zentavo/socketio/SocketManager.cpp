#include "zentavo/socketio/SocketManager.h"

#include <algorithm>
#include <utility>

#include "zentavo/socketio/Connection.h"
#include "zentavo/socketio/Packet.h"

namespace zentavo::socketio {

SocketManager::SocketManager(std::shared_ptr<Connection> connection) : connection_(std::move(connection)) {}

SocketManager::~SocketManager() {
    // Its sockets are gone, and have posted that they leave.
    connection_->abandon();
    connection_->queue()->async([connection = connection_] { connection->disconnectAll(); });
}

Result<std::shared_ptr<SocketManager>> SocketManager::make(std::string_view url, ManagerOptions options,
                                                           Services services, ManagerHandlers handlers) {
    const auto uses = [&](TransportKind kind) {
        return std::find(options.transports.begin(), options.transports.end(), kind) != options.transports.end();
    };
    const auto parsed = URL::parse(url);
    if (!parsed) {
        return Error{"this is no URL"};
    }
    auto address = EngineAddress::make(*parsed, options);
    if (!address) {
        return address.error();
    }
    if (options.transports.empty()) {
        return Error{"no transport is allowed"};
    }
    if (!services.queue || !services.clock || !services.random) {
        return Error{"a manager needs a queue, a clock and chance"};
    }
    if ((uses(TransportKind::polling) && !services.urlSession) ||
        (uses(TransportKind::webSocket) && !services.webSockets)) {
        return Error{"nobody answers for one of the transports"};
    }
    auto connection =
        std::make_shared<Connection>(*std::move(address), std::move(options), std::move(services), std::move(handlers));
    return std::shared_ptr<SocketManager>(new SocketManager(std::move(connection)));
}

Result<std::shared_ptr<SocketIOClient>> SocketManager::socket(std::string_view name, Auth auth) {
    const auto space = namespaceName(name);
    if (!space) {
        return Error{"no namespace can be called that"};
    }
    std::shared_ptr<SocketIOClient> made; // what is not used is destroyed after the lock is gone
    MutexLock lock(mutex_);
    auto& place = sockets_[*space];
    if (auto known = place.lock()) {
        lock.unlock();
        return known;
    }
    made = std::make_shared<SocketIOClient>(std::make_shared<Namespace>(*space, std::move(auth), connection_),
                                            shared_from_this());
    place = made;
    lock.unlock();
    return made;
}

void SocketManager::disconnect() {
    connection_->queue()->async([connection = connection_] { connection->disconnectAll(); });
}

} // namespace zentavo::socketio
