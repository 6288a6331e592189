#pragma once

#include <string>

#include <httplib.h>

#include "devserver/DevServer.h"
#include "zentavo/foundation/Value.h"

namespace zentavo::devserver {

/// An event with which nothing is wrong, for portal "1000" and props "555".
Map sampleEvent(const std::string& name = "view_product");
/// The query that goes with it.
inline const std::string sampleQuery = "?resp_type=json&portal_id=1000&prop_id=555";

std::string text(const Map& map);
/// The JSON object in `answer`'s body; empty when there is none.
Map bodyOf(const httplib::Result& answer);

/// A server with a client that keeps its connection.
struct RunningServer {
    explicit RunningServer(DevServer::Settings settings = {});

    httplib::Client client() const;
    /// Sends `event` to the production twin.
    httplib::Result send(const Map& event = sampleEvent()) const;
    /// Plans a fault and expects it to be accepted.
    void fault(const std::string& query) const;

    std::unique_ptr<DevServer> server;
};

/// A TCP connection to the server on which a test may say what it likes.
class RawConnection {
public:
    explicit RawConnection(std::uint16_t port);
    ~RawConnection();
    RawConnection(const RawConnection&) = delete;
    RawConnection& operator=(const RawConnection&) = delete;

    void send(const std::string& bytes) const;
    /// What comes until `end` has come, the other side closes, or nothing has come for long enough to be sure.
    std::string readUntil(const std::string& end) const;
    std::string readAll() const { return readUntil(std::string(1, '\0')); }
    /// How the last read ended: true when the connection was broken rather than closed.
    bool wasReset() const noexcept { return reset_; }

private:
    int socket_;
    mutable bool reset_ = false;
};

} // namespace zentavo::devserver
