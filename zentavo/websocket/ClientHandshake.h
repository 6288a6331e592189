#pragma once

#include <span>

#include "zentavo/foundation/Result.h"
#include "zentavo/platform/Random.h"
#include "zentavo/websocket/Handshake.h"

namespace zentavo::websocket {

struct ClientRequest {
    /// "example.org", with ":port" where it is not the scheme's own.
    std::string host;
    /// Path and query: "/chat?room=1".
    std::string target = "/";
    /// In order of preference.
    std::vector<std::string> subprotocols;
    /// Besides those of the handshake itself ("Origin", "Authorization", "Cookie").
    HeaderFields headers;
    std::optional<DeflateOptions> compression;
};

/// The client's side of the opening handshake: one request out, one answer in.
class ZENTAVO_EXPORT ClientHandshake {
public:
    enum class Step { needMore, done, failed };

    /// An error for a request with characters that its place cannot hold, or with a field of the handshake's own, and
    /// for compression that there is none of.
    static Result<ClientHandshake> make(ClientRequest request, platform::Random& random);

    /// The bytes to send.
    const std::string& request() const noexcept { return text_; }
    /// Takes the answer from the front of `input` and leaves what follows it: frames may come in the same read.
    Step receive(std::span<char>& input);

    /// After `done`.
    const Handshake& result() const noexcept { return result_; }
    /// After `failed`: why, and the answer's HTTP status where it was another than 101, else 0.
    const std::string& error() const noexcept { return error_; }
    int status() const noexcept { return status_; }

private:
    ClientHandshake(ClientRequest request, platform::Random& random);
    Step check();
    Step fail(std::string error);
    std::optional<std::string> faultOf(const HTTPHead& head) const;

    ClientRequest asked_;
    std::string accept_;
    std::string text_;
    HTTPHeadReader reader_;
    Handshake result_;
    std::string error_;
    int status_ = 0;
};

} // namespace zentavo::websocket
