// The opening handshake over sockets: requests of every kind to our server, answers of every kind to our client.

#include <gtest/gtest.h>

#include "tests/websocket/Client.h"
#include "tests/websocket/Wire.h"
#include "tests/websocket/conformance/Tally.h"
#include "zentavo/websocket/HTTPHead.h"

namespace zentavo::websocket::conformance {
namespace {

using test::Door;
using test::Wire;

std::string replaced(std::string text, const std::string& what, const std::string& with) {
    return text.replace(text.find(what), what.size(), with);
}

struct Request {
    std::string name;
    std::string text;
    int status;
    std::string answered = {}; ///< what the answer must hold besides
};

std::vector<Request> requests() {
    const auto with = [](const std::string& fields) { return test::upgradeRequest(fields); };
    const std::string plain = with("");
    const auto without = [&plain](const std::string& line) { return replaced(plain, line + "\r\n", ""); };
    const auto changed = [&plain](const std::string& what, const std::string& to) { return replaced(plain, what, to); };
    const std::string key = "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==";
    std::string manyFields;
    for (std::size_t i = 0; i <= HTTPHeadReader::maximumFields; ++i) {
        manyFields += "X: y\r\n";
    }
    return {
        {"plain", plain, 101, "Sec-WebSocket-Accept: s3pPLMBiTxaQ9kYGzzhZRbK+xOo=\r\n"},
        {"names-in-any-case", changed("Sec-WebSocket-Key", "sEC-wEBsOCKET-kEY"), 101},
        {"upgrade-in-any-case", changed("Upgrade: websocket", "upgrade: WebSocket"), 101},
        {"connection-as-list", changed("Connection: Upgrade", "Connection: keep-alive, uPGRADE"), 101},
        {"connection-twice", with("Connection: keep-alive\r\n"), 101},
        {"blanks-around-values", changed(key, replaced(key, ": ", ":\t  ") + " \t"), 101},
        {"no-blank-before-values", changed(key, replaced(key, ": ", ":")), 101},
        {"target-with-query", changed("GET /", "GET /a%20b/c?d=e&f"), 101},
        {"unknown-fields", with("X-Unknown: \x80\xFF\r\nCookie: a=b; c=d\r\n"), 101},
        {"unknown-extension", with("Sec-WebSocket-Extensions: x-nothing; a=1; b=\"c\"\r\n"), 101},
        {"subprotocols", with("Sec-WebSocket-Protocol: soap, chat\r\n"), 101, "Sec-WebSocket-Protocol: chat\r\n"},
        {"subprotocols-in-two-fields", with("Sec-WebSocket-Protocol: a\r\nSec-WebSocket-Protocol: chat\r\n"), 101,
         "Sec-WebSocket-Protocol: chat\r\n"},
        {"post", changed("GET", "POST"), 405, "Allow: GET\r\n"},
        {"lower-case-method", changed("GET", "get"), 405},
        {"http-1.0", changed("HTTP/1.1", "HTTP/1.0"), 400},
        {"http-2-preface", "PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n", 405},
        {"no-target", changed("GET / ", "GET "), 400},
        {"two-targets", changed("GET / ", "GET / / "), 400},
        {"no-host", without("Host: localhost"), 400},
        {"two-hosts", with("Host: other\r\n"), 400},
        {"no-upgrade", without("Upgrade: websocket"), 426},
        {"other-upgrade", changed("Upgrade: websocket", "Upgrade: h2c"), 426, "Upgrade: websocket\r\n"},
        {"no-connection", without("Connection: Upgrade"), 426},
        {"connection-close", changed("Connection: Upgrade", "Connection: close"), 426},
        {"no-version", without("Sec-WebSocket-Version: 13"), 426, "Sec-WebSocket-Version: 13\r\n"},
        {"version-8", changed("Version: 13", "Version: 8"), 426, "Sec-WebSocket-Version: 13\r\n"},
        {"two-versions", with("Sec-WebSocket-Version: 13\r\n"), 426},
        {"no-key", without(key), 400},
        {"empty-key", changed(key, "Sec-WebSocket-Key:"), 400},
        {"short-key", changed(key, "Sec-WebSocket-Key: c2hvcnQ="), 400},
        {"key-no-base64", changed(key, "Sec-WebSocket-Key: !!!!!!!!!!!!!!!!!!!!!!=="), 400},
        {"two-keys", with(key + "\r\n"), 400},
        {"subprotocol-no-token", with("Sec-WebSocket-Protocol: a b\r\n"), 400},
        {"extension-malformed", with("Sec-WebSocket-Extensions: a=1\r\n"), 400},
        {"folded-field", with("X: a\r\n b\r\n"), 400},
        {"blank-before-colon", with("X : a\r\n"), 400},
        {"no-colon", with("nothing\r\n"), 400},
        {"empty-name", with(": a\r\n"), 400},
        {"bare-line-feed", with("X: a\nY: b\r\n"), 400},
        {"bare-carriage-return", with("X: a\rb\r\n"), 400},
        {"nul", with(std::string("X: a\0b\r\n", 8)), 400},
        {"no-start-line", "\r\n" + plain, 400},
        {"many-fields", with(manyFields), 431},
        {"long-field", with("X: " + std::string(HTTPHeadReader::maximumSize, 'x') + "\r\n"), 431},
    };
}

struct Answer {
    std::string name;
    std::string text; ///< ACCEPT stands for what belongs to the request's key
    bool taken;
};

std::vector<Answer> answers() {
    const std::string plain = "HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                              "Sec-WebSocket-Accept: ACCEPT\r\n\r\n";
    const auto changed = [&plain](const std::string& what, const std::string& to) { return replaced(plain, what, to); };
    const auto with = [&](const std::string& fields) { return changed("\r\n\r\n", "\r\n" + fields + "\r\n\r\n"); };
    std::string manyFields = "X: y";
    for (std::size_t i = 0; i <= HTTPHeadReader::maximumFields; ++i) {
        manyFields += "\r\nX: y";
    }
    return {
        {"plain", plain, true},
        {"any-case", changed("Upgrade: websocket\r\nConnection: Upgrade", "uPGRADE: WEBSOCKET\r\nconnection: uPGRADE"),
         true},
        {"connection-as-list", changed("Connection: Upgrade", "Connection: keep-alive, Upgrade"), true},
        {"no-reason", changed(" Switching Protocols", ""), true},
        {"empty-reason", changed("Switching Protocols", ""), true},
        {"blanks-around-values", changed(": ACCEPT", ":ACCEPT \t"), true},
        {"more-fields", with("Server: x\r\nSet-Cookie: a=b\r\nDate: today"), true},
        {"subprotocol-asked-for", with("Sec-WebSocket-Protocol: chat"), true},
        {"subprotocol-not-asked-for", with("Sec-WebSocket-Protocol: soap"), false},
        {"two-subprotocols", with("Sec-WebSocket-Protocol: chat, superchat"), false},
        {"empty-subprotocol", with("Sec-WebSocket-Protocol:"), false},
        {"extension-not-asked-for", with("Sec-WebSocket-Extensions: permessage-deflate"), false},
        {"http-1.0", changed("HTTP/1.1", "HTTP/1.0"), false},
        {"status-200", changed("101", "200"), false},
        {"status-302", changed("101 Switching Protocols", "302 Found\r\nLocation: ws://127.0.0.1/"), false},
        {"status-401", changed("101", "401"), false},
        {"status-500", changed("101", "500"), false},
        {"status-of-four-digits", changed("101", "1010"), false},
        {"no-upgrade", changed("Upgrade: websocket\r\n", ""), false},
        {"other-upgrade", changed("websocket", "h2c"), false},
        {"no-connection", changed("Connection: Upgrade\r\n", ""), false},
        {"connection-close", changed("Connection: Upgrade", "Connection: close"), false},
        {"no-accept", changed("Sec-WebSocket-Accept: ACCEPT\r\n", ""), false},
        {"empty-accept", changed("ACCEPT", ""), false},
        {"wrong-accept", changed("ACCEPT", "s3pPLMBiTxaQ9kYGzzhZRbK+xOo="), false},
        {"accept-and-more", changed("ACCEPT", "ACCEPTx"), false},
        {"two-accepts", with("Sec-WebSocket-Accept: ACCEPT"), false},
        {"folded-field", with("X: a\r\n b"), false},
        {"no-colon", with("nothing"), false},
        {"bare-line-feed", with("X: a\nY: b"), false},
        {"many-fields", with(manyFields), false},
        {"long-field", with("X: " + std::string(HTTPHeadReader::maximumSize, 'x')), false},
        {"no-http", "SSH-2.0-OpenSSH\r\n\r\n", false},
        {"ends-early", "HTTP/1.1 101 Switching Protocols\r\nUpgrade: webs", false},
        {"nothing", "", false},
    };
}

TEST(HandshakeConformance, ourServerTakesSoundRequestsAndAnswersTheOthers) {
    ServerOptions options;
    options.compression.emplace();
    ServerHandlers handlers = test::echo();
    handlers.onRequest = [](const ServerRequest&) {
        Verdict verdict;
        verdict.subprotocol = "chat";
        return verdict;
    };
    WebSocketServer server(handlers, options);
    const auto port = server.listen("127.0.0.1", 0);
    ASSERT_TRUE(port.ok());
    for (const Request& one : requests()) {
        const Wire wire(*port);
        wire.send(one.text);
        // A connection that is open answers the first frame; one that was refused ends by itself.
        std::string got = wire.receiveHead();
        bool right = got.starts_with("HTTP/1.1 " + std::to_string(one.status) + " ") &&
                     got.find(one.answered) != std::string::npos;
        if (one.status == 101) {
            wire.send(std::string("\x89\x80\0\0\0\0", 6));
            right = right && wire.receive() == std::string("\x8A\0", 2);
        } else {
            right = right && got.find("Connection: close\r\n") != std::string::npos;
            wire.endSending();
            wire.receiveAll();
        }
        judge("server", "handshake/" + one.name, right, got);
    }
}

TEST(HandshakeConformance, ourClientTakesAnswersToItsRequestOnly) {
    const Door door;
    for (const Answer& one : answers()) {
        test::Story story;
        WebSocketClient client(story.handlers());
        ClientOptions options;
        options.subprotocols = {"chat", "superchat"};
        ASSERT_TRUE(client.open(test::urlOf(door.port()), options).ok());
        std::optional<Wire> wire(door.accept());
        const std::string head = wire->receiveHead();
        std::string text = one.text;
        const std::string accept = acceptFor(head.substr(head.find("Sec-WebSocket-Key: ") + 19, 24));
        for (std::size_t at = text.find("ACCEPT"); at != std::string::npos; at = text.find("ACCEPT")) {
            text.replace(at, 6, accept);
        }
        // A frame behind an answer that is refused must never be told.
        wire->send(text + std::string(one.text.ends_with("\r\n\r\n") ? "\x81\x02hi" : ""));
        if (one.taken) {
            judge("client", "handshake/" + one.name, story.awaitMessages(1) && story.opened, story.closed.reason);
        } else {
            wire->endSending();
            judge("client", "handshake/" + one.name,
                  story.awaitClosed() && !story.opened && story.messages.empty() && !story.closed.clean,
                  story.closed.reason);
        }
    }
}

} // namespace
} // namespace zentavo::websocket::conformance
