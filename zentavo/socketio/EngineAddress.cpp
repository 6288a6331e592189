#include "zentavo/socketio/EngineAddress.h"

#include <utility>

namespace zentavo::socketio {

Result<EngineAddress> EngineAddress::make(const URL& url, const EngineOptions& options) {
    const auto scheme = url.scheme();
    const bool secure = scheme == "https" || scheme == "wss";
    if ((!secure && scheme != "http" && scheme != "ws") || url.host().empty()) {
        return Error{"a Socket.IO server has an http, https, ws or wss URL"};
    }
    if ((!url.path().empty() && url.path() != "/") || url.fragment() || !url.userInfo().empty()) {
        return Error{"the URL of a Socket.IO server ends behind its port: the path is an option, and namespaces are "
                     "asked for by name"};
    }
    const bool literal = url.host().find(':') != std::string_view::npos;
    std::string text = std::string(secure ? "https://" : "http://") + (literal ? "[" : "") + std::string(url.host()) +
                       (literal ? "]" : "");
    if (const auto port = url.port()) {
        text += ":" + std::to_string(*port);
    }
    text += (options.path.starts_with('/') ? "" : "/") + options.path + (options.path.ends_with('/') ? "" : "/");
    auto base = URL::parse(text);
    if (!base || base->query() || base->fragment()) {
        return Error{"the path of a Socket.IO server cannot be one: " + options.path};
    }
    auto query = url.queryItems();
    query.insert(query.end(), options.query.begin(), options.query.end());
    return EngineAddress(*base, secure, std::move(query));
}

URL EngineAddress::urlFor(const char* transport, const std::string& sid, const std::string& nonce) const {
    auto items = query_;
    items.push_back({"EIO", "4"});
    items.push_back({"transport", transport});
    if (!nonce.empty()) {
        items.push_back({"t", nonce});
    }
    if (!sid.empty()) {
        items.push_back({"sid", sid});
    }
    return base_.withQueryItems(items);
}

std::string EngineAddress::webSocket(const std::string& sid) const {
    return "ws" + urlFor("websocket", sid, {}).text().substr(4);
}

} // namespace zentavo::socketio
