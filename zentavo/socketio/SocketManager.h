#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "zentavo/foundation/Export.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/foundation/Result.h"
#include "zentavo/socketio/ManagerOptions.h"
#include "zentavo/socketio/SocketIOClient.h"

namespace zentavo::socketio {

class Connection;

/// One connection to a Socket.IO server, which its namespaces share. It is opened by the first socket's `connect`,
/// closed with the last one's `disconnect`, and opened again in between whenever it is lost. Any thread; no call waits.
class ZENTAVO_EXPORT SocketManager : public std::enable_shared_from_this<SocketManager> {
public:
    /// `url` is http, https, ws or wss with a host, perhaps a port and a query, and no path. An error for any other,
    /// for options without a transport, and for services that these options need and that are not there.
    static Result<std::shared_ptr<SocketManager>> make(std::string_view url, ManagerOptions options, Services services,
                                                       ManagerHandlers handlers = {});
    ~SocketManager();
    SocketManager(const SocketManager&) = delete;
    SocketManager& operator=(const SocketManager&) = delete;

    /// The socket of a namespace, "/" or "/admin"; the same one for as long as somebody holds it, and then `auth` is
    /// not looked at. It does not connect by itself: handlers come first.
    Result<std::shared_ptr<SocketIOClient>> socket(std::string_view name = "/", Auth auth = {});
    /// Disconnects every namespace, and tries no more.
    void disconnect();

private:
    explicit SocketManager(std::shared_ptr<Connection> connection);

    const std::shared_ptr<Connection> connection_;
    Mutex mutex_;
    std::map<std::string, std::weak_ptr<SocketIOClient>> sockets_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo::socketio
