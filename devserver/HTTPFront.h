#pragma once

#include <functional>

#include <httplib.h>

#include "devserver/Connection.h"
#include "devserver/IncomingRequest.h"

namespace zentavo::devserver {

/// Speaks HTTP on the connections that the listener takes: the library parses and frames, the handler decides. Every
/// request comes to the handler whole, whatever its method and path, its body read within bounds.
class HTTPFront final : private httplib::Server {
public:
    /// Called on the connection's thread, one request of a connection after the other. May throw what the standard
    /// library throws; the client then gets status 500.
    using Handler = std::function<void(IncomingRequest&&, Connection&, httplib::Response&)>;

    explicit HTTPFront(Handler handler);

    /// Serves the connection until it ends.
    void serve(Connection& connection);
    /// Ends bodies that are written piece by piece.
    void stop() noexcept;

private:
    void run(const httplib::Request& request, const httplib::ContentReader* reader, httplib::Response& response);

    const Handler handler_;
};

inline constexpr const char* jsonType = "application/json";

void answerContent(httplib::Response& response, int status, std::string body, const std::string& type);
/// Answers with the JSON text of `body`.
void answerJSON(httplib::Response& response, int status, std::string body);

} // namespace zentavo::devserver
