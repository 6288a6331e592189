#pragma once

#include <span>

#include "zentavo/websocket/Handshake.h"

namespace zentavo::websocket {

/// What a client asks for, as a server's host sees it.
struct ServerRequest {
    /// Path and query as sent.
    std::string target;
    /// Empty when the client is no browser.
    std::string origin;
    /// In the client's order of preference.
    std::vector<std::string> subprotocols;
    HeaderFields headers;
};

/// The server's side of the opening handshake: one request in, one answer out.
class ZENTAVO_EXPORT ServerHandshake {
public:
    enum class Step { needMore, request, refused };

    /// `compression`: what the server grants, none to decline.
    explicit ServerHandshake(std::optional<DeflateOptions> compression) : compression_(compression) {}

    /// Takes the request from the front of `input` and leaves what follows it. `request`: a sound one, now `accept` or
    /// `refuse` it. `refused`: send `answer` and close the stream.
    Step receive(std::span<char>& input);

    const ServerRequest& request() const noexcept { return request_; }

    /// The answer that opens the connection. A subprotocol that the client did not ask for is not sent, nor are header
    /// fields with characters that they cannot hold.
    std::string accept(const std::string& subprotocol, const HeaderFields& headers = {});
    /// The answer that does not: `status` 300 to 599, otherwise 403.
    static std::string refuse(int status, const HeaderFields& headers = {}, std::string_view body = {});

    const std::string& answer() const noexcept { return answer_; }
    /// After `accept`.
    const Handshake& result() const noexcept { return result_; }

private:
    Step check(const HTTPHead& head);
    Step reject(int status, std::string_view why, const HeaderFields& headers = {});

    std::optional<DeflateOptions> compression_;
    HTTPHeadReader reader_;
    ServerRequest request_;
    std::string key_;
    std::optional<DeflateAnswer> agreed_;
    std::string answer_;
    Handshake result_;
};

} // namespace zentavo::websocket
