// Our client and our server with implementations that nobody here wrote: node's `ws` and Python's `websockets`.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/e2e/Process.h"
#include "tests/websocket/Client.h"

namespace zentavo::websocket::test {
namespace {

using e2e::Process;

enum class Peer { node, python };

Process peer(Peer which, const std::string& program, std::vector<std::string> arguments) {
    const std::string script = ZENTAVO_INTEROP "/" + program + (which == Peer::node ? ".cjs" : ".py");
    std::vector<std::string> line = which == Peer::node ? std::vector<std::string>{"/usr/bin/env", "node", script}
                                                        : std::vector<std::string>{"/usr/bin/python3", script};
    line.insert(line.end(), arguments.begin(), arguments.end());
    return Process(line, {"NODE_PATH=" ZENTAVO_INTEROP_MODULES});
}

std::string sample(std::size_t size) {
    std::string text;
    for (std::size_t i = 0; text.size() < size; ++i) {
        text += "{\"id\":" + std::to_string(i * 7919 % 1000) + ",\"name\":\"Zo\xC3\xAB\"}";
    }
    return text;
}

std::optional<DeflateOptions> compression(DeflateSide client, DeflateSide server) {
    DeflateOptions options;
    options.client = client;
    options.server = server;
    options.threshold = 0;
    return options;
}

class Interop : public ::testing::TestWithParam<Peer> {
protected:
    /// Our client against the peer's echo server at `port`: every kind of message, parts, pings, both goodbyes.
    static void converse(std::uint16_t port, const std::optional<DeflateOptions>& wish,
                         std::optional<DeflateAgreement>& agreed) {
        ClientOptions options;
        options.compression = wish;
        options.subprotocols = {"soap", "chat"};
        for (const bool weEnd : {true, false}) {
            Story story;
            WebSocketClient client(story.handlers());
            ASSERT_TRUE(client.open(urlOf(port), options).ok());
            std::vector<std::string> sent;
            ASSERT_TRUE(story.await([&] { return story.opened || story.closes > 0; }));
            ASSERT_TRUE(story.opened) << story.closed.reason;
            EXPECT_EQ(story.handshake.subprotocol, "chat");
            agreed = story.handshake.compression;
            for (const std::size_t size : {0U, 1U, 100U, 125U, 126U, 127U, 65500U, 65536U, 1000000U, 300U}) {
                sent.push_back(sample(size));
                EXPECT_EQ(client.sendText(sent.back()), Sent::taken);
                sent.push_back(std::string(size, '\xFE'));
                EXPECT_EQ(client.sendBinary(sent.back()), Sent::taken);
            }
            client.ping("hello");
            client.sendText("in parts");
            sent.push_back("one, two, three");
            EXPECT_TRUE(story.awaitMessages(sent.size())) << story.closed.reason;
            EXPECT_EQ(story.messages, sent);
            weEnd ? client.close(static_cast<CloseCode>(4002), "done, Zo\xC3\xAB")
                  : static_cast<void>(client.sendText("goodbye"));
            ASSERT_TRUE(story.awaitClosed());
            EXPECT_TRUE(story.closed.clean);
            EXPECT_EQ(static_cast<int>(story.closed.code), weEnd ? 4002 : 4001);
            EXPECT_TRUE(weEnd || story.closed.reason.find("enough") == 0) << story.closed.reason;
        }
    }
    static std::uint16_t portOf(Process& server) {
        const std::string line = server.readLine(20s);
        return static_cast<std::uint16_t>(std::atoi(line.c_str()));
    }
};

TEST_P(Interop, ourClientWithTheirServer) {
    const bool node = GetParam() == Peer::node;
    Process plain = peer(GetParam(), "server", {});
    std::optional<DeflateAgreement> agreed;
    converse(portOf(plain), DeflateOptions{}, agreed);
    EXPECT_FALSE(agreed) << "the peer has no compression";

    Process willing = peer(GetParam(), "server", {node ? R"({"threshold":0})" : "{}"});
    const std::uint16_t port = portOf(willing);
    converse(port, std::nullopt, agreed);
    EXPECT_FALSE(agreed);
    for (const int bits : {9, 12, 15}) {
        for (const bool takeover : {true, false}) {
            converse(port, compression({bits, takeover}, {bits, takeover}), agreed);
            ASSERT_TRUE(agreed) << bits;
            EXPECT_EQ(agreed->server.windowBits, bits == 15 && !node ? agreed->server.windowBits : bits);
            EXPECT_EQ(agreed->client.takeover, takeover);
            EXPECT_EQ(agreed->server.takeover, takeover);
        }
    }

    Process strict = peer(GetParam(), "server",
                          {node ? R"({"threshold":0,"serverNoContextTakeover":true,"clientNoContextTakeover":true,
                                     "serverMaxWindowBits":10,"clientMaxWindowBits":9})"
                                : R"({"server_no_context_takeover":true,"client_no_context_takeover":true,
                                     "server_max_window_bits":10,"client_max_window_bits":9})"});
    converse(portOf(strict), compression({}, {}), agreed);
    ASSERT_TRUE(agreed);
    EXPECT_EQ(agreed->client.windowBits, 9);
    EXPECT_EQ(agreed->server.windowBits, 10);
    EXPECT_FALSE(agreed->client.takeover);
    EXPECT_FALSE(agreed->server.takeover);
}

TEST_P(Interop, theirClientWithOurServer) {
    const bool node = GetParam() == Peer::node;
    const auto run = [&](const std::optional<DeflateOptions>& ours, const std::string& theirs) {
        ServerOptions options;
        options.compression = ours;
        ServerHandlers handlers = echo();
        handlers.onRequest = [](const ServerRequest&) {
            Verdict verdict;
            verdict.subprotocol = "chat";
            return verdict;
        };
        WebSocketServer server(handlers, options);
        const auto port = server.listen("127.0.0.1", 0);
        Process client = peer(GetParam(), "client", {urlOf(*port), theirs});
        EXPECT_EQ(client.wait(25s), 0) << client.output();
        return client.output();
    };
    EXPECT_EQ(run(std::nullopt, node ? R"({"threshold":0})" : "{}"), "ok chat \n");
    EXPECT_EQ(run(DeflateOptions{}, "false"), "ok chat \n");
    EXPECT_THAT(run(compression({}, {}), node ? R"({"threshold":0})" : "{}"),
                ::testing::StartsWith("ok chat permessage-deflate"));
    // What they ask for, and what we would grant at most, meet in the middle.
    const std::string met = run(compression({12, true}, {9, false}),
                                node ? R"({"threshold":0,"clientNoContextTakeover":true,"clientMaxWindowBits":10})"
                                     : R"({"client_no_context_takeover":true,"client_max_window_bits":10})");
    for (const char* parameter : {"server_no_context_takeover", "client_no_context_takeover",
                                  "server_max_window_bits=9", "client_max_window_bits=10"}) {
        EXPECT_THAT(met, ::testing::HasSubstr(parameter));
    }
}

INSTANTIATE_TEST_SUITE_P(Peers, Interop, ::testing::Values(Peer::node, Peer::python),
                         [](const auto& which) { return which.param == Peer::node ? "node" : "python"; });

} // namespace
} // namespace zentavo::websocket::test
