// The opening handshake from both sides: answers and requests, right and wrong.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ports/memory/SeededRandom.h"
#include "zentavo/websocket/ClientHandshake.h"
#include "zentavo/websocket/ServerHandshake.h"

namespace zentavo::websocket {
namespace {

using ::testing::HasSubstr;

constexpr const char* sampleKey = "dGhlIHNhbXBsZSBub25jZQ==";

ClientHandshake client(ClientRequest request = {"example.org", "/chat", {}, {}, {}}) {
    testing::SeededRandom random(1);
    return ClientHandshake::make(std::move(request), random).value();
}

/// What `handshake` says to `text`, given at once.
ClientHandshake::Step give(ClientHandshake& handshake, std::string text) {
    std::span<char> input(text);
    return handshake.receive(input);
}

std::string keyOf(const ClientHandshake& handshake) {
    const std::string& text = handshake.request();
    return text.substr(text.find("Key: ") + 5, 24);
}

std::string answerTo(const ClientHandshake& handshake, const std::string& more = {}) {
    return "HTTP/1.1 101 Switching Protocols\r\nupgrade: WebSocket\r\nCONNECTION: keep-alive, upgrade\r\n"
           "sec-websocket-accept: " +
           acceptFor(keyOf(handshake)) + "\r\n" + more + "\r\n";
}

std::string request(const std::string& more = {}) {
    return "GET /chat?x=1 HTTP/1.1\r\nHost: example.org\r\nupgrade: WEBSOCKET\r\nConnection: Upgrade, x\r\n"
           "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: " +
           std::string(sampleKey) + "\r\n" + more + "\r\n";
}

/// The status of what a server with compression says to `text`; 0 when it takes the request.
int statusFor(std::string text) {
    ServerHandshake handshake(DeflateOptions{});
    std::span<char> input(text);
    if (handshake.receive(input) == ServerHandshake::Step::refused) {
        return std::stoi(handshake.answer().substr(9, 3));
    }
    return 0;
}

std::string replaced(std::string text, const std::string& what, const std::string& with) {
    return text.replace(text.find(what), what.size(), with);
}

TEST(Handshake, answersTheKeyOfTheStandardsExample) { EXPECT_EQ(acceptFor(sampleKey), "s3pPLMBiTxaQ9kYGzzhZRbK+xOo="); }

TEST(Handshake, clientAndServerAgreeHoweverTheBytesAreCut) {
    for (const std::size_t stride : {std::size_t{1}, std::size_t{5}, std::size_t{4096}}) {
        ClientHandshake ours =
            client({"example.org:81", "/chat?x=1", {"soap", "chat"}, {{"Origin", "http://a"}}, DeflateOptions{}});
        ServerHandshake theirs{DeflateOptions{}};
        const auto feed = [stride](auto& handshake, std::string bytes, auto waiting) {
            auto step = waiting;
            std::size_t at = 0;
            while (at < bytes.size() && step == waiting) {
                std::span<char> input(bytes.data() + at, std::min(stride, bytes.size() - at));
                const std::size_t before = input.size();
                step = handshake.receive(input);
                at += before - input.size();
            }
            return std::pair(step, bytes.substr(at));
        };
        const auto [asked, rest] = feed(theirs, ours.request(), ServerHandshake::Step::needMore);
        ASSERT_EQ(asked, ServerHandshake::Step::request);
        EXPECT_EQ(rest, "");
        EXPECT_EQ(theirs.request().target, "/chat?x=1");
        EXPECT_EQ(theirs.request().origin, "http://a");
        EXPECT_THAT(theirs.request().subprotocols, ::testing::ElementsAre("soap", "chat"));
        const std::string answer = theirs.accept("chat", {{"X-Room", "1"}, {"X-Bad", "a\r\nb"}});
        EXPECT_THAT(answer, ::testing::Not(HasSubstr("X-Bad")));
        const auto [done, frames] = feed(ours, answer + "\x81\x00", ClientHandshake::Step::needMore);
        ASSERT_EQ(done, ClientHandshake::Step::done);
        EXPECT_TRUE(std::string("\x81\x00").starts_with(frames)) << "what follows the answer is left";
        EXPECT_EQ(ours.result().subprotocol, "chat");
        EXPECT_TRUE(ours.result().compression.has_value());
        EXPECT_TRUE(theirs.result().compression.has_value());
    }
}

TEST(Handshake, clientRefusesAnswersThatAreNotToItsRequest) {
    ClientHandshake sound = client();
    EXPECT_EQ(give(sound, answerTo(sound)), ClientHandshake::Step::done) << sound.error();
    const auto fails = [](const std::string& what, const std::string& with) {
        ClientHandshake handshake = client();
        const auto step = give(handshake, replaced(answerTo(handshake), what, with));
        EXPECT_EQ(step, ClientHandshake::Step::failed) << what << " -> " << with;
        return handshake.status();
    };
    EXPECT_EQ(fails("101 Switching Protocols", "404 Not Found"), 404);
    EXPECT_EQ(fails("101 Switching Protocols", "200 OK"), 200);
    fails("HTTP/1.1", "HTTP/1.0");
    fails("WebSocket", "h2c");
    fails("upgrade: WebSocket\r\n", "");
    fails("keep-alive, upgrade", "keep-alive");
    fails("accept: ", "accept: x");
    fails("accept: ", "accept : ");
    fails("\r\n\r\n", "\r\nSec-WebSocket-Protocol: chat\r\n\r\n");
    fails("\r\n\r\n", "\r\nSec-WebSocket-Extensions: permessage-deflate\r\n\r\n");
    fails("\r\n\r\n", "\r\n folded\r\n\r\n");
    fails("\r\n\r\n", "\r\nA: b\nc\r\n\r\n");
    fails("\r\n\r\n", "\r\nno colon\r\n\r\n");
}

TEST(Handshake, serverRefusesWhatIsNoSoundRequest) {
    EXPECT_EQ(statusFor(request()), 0);
    EXPECT_EQ(statusFor(replaced(request(), "GET", "POST")), 405);
    EXPECT_EQ(statusFor(replaced(request(), "HTTP/1.1", "HTTP/1.0")), 400);
    EXPECT_EQ(statusFor(replaced(request(), "Host: example.org\r\n", "")), 400);
    EXPECT_EQ(statusFor(request("Host: other\r\n")), 400);
    EXPECT_EQ(statusFor(replaced(request(), "WEBSOCKET", "tls")), 426);
    EXPECT_EQ(statusFor(replaced(request(), "Connection: Upgrade, x", "Connection: x")), 426);
    EXPECT_EQ(statusFor(replaced(request(), "Version: 13", "Version: 8")), 426);
    EXPECT_EQ(statusFor(replaced(request(), sampleKey, "c2hvcnQ=")), 400);
    EXPECT_EQ(statusFor(request("Sec-WebSocket-Key: " + std::string(sampleKey) + "\r\n")), 400);
    EXPECT_EQ(statusFor(request("Sec-WebSocket-Protocol: a b\r\n")), 400);
    EXPECT_EQ(statusFor(request("Sec-WebSocket-Extensions: ;\r\n")), 400);
    EXPECT_EQ(statusFor(request("Sec-WebSocket-Extensions: x-unknown; a=1, other\r\n")), 0);
    std::string many;
    for (std::size_t i = 0; i <= HTTPHeadReader::maximumFields; ++i) {
        many += "X: y\r\n";
    }
    EXPECT_EQ(statusFor(request(many)), 431);
    EXPECT_EQ(statusFor(request("X: " + std::string(HTTPHeadReader::maximumSize, 'x') + "\r\n")), 431);
}

TEST(Handshake, clientRefusesToAskForWhatCannotBeAsked) {
    testing::SeededRandom random(1);
    const auto refused = [&](ClientRequest request) { return !ClientHandshake::make(std::move(request), random).ok(); };
    EXPECT_TRUE(refused({"", "/", {}, {}, {}}));
    EXPECT_TRUE(refused({"a\r\nb", "/", {}, {}, {}}));
    EXPECT_TRUE(refused({"a", "no-slash", {}, {}, {}}));
    EXPECT_TRUE(refused({"a", "/a b", {}, {}, {}}));
    EXPECT_TRUE(refused({"a", "/", {"a b"}, {}, {}}));
    EXPECT_TRUE(refused({"a", "/", {"x", "x"}, {}, {}}));
    EXPECT_TRUE(refused({"a", "/", {}, {{"X", "a\r\nY: b"}}, {}}));
    EXPECT_TRUE(refused({"a", "/", {}, {{"upgrade", "x"}}, {}}));
}

struct Offer {
    const char* offered;
    const char* answered; ///< null: declined
};

TEST(Extensions, serverMeetsTheFirstOfferThatItCan) {
    DeflateOptions options;
    options.threshold = 0;
    for (const Offer& one : std::initializer_list<Offer>{
             {"permessage-deflate", "permessage-deflate"},
             {"x, permessage-deflate; client_max_window_bits", "permessage-deflate"},
             {"permessage-deflate; client_max_window_bits=\"9\"", "permessage-deflate; client_max_window_bits=9"},
             {"permessage-deflate; server_max_window_bits=15", "permessage-deflate; server_max_window_bits=15"},
             {"permessage-deflate;server_max_window_bits=8;server_no_context_takeover;client_no_context_takeover",
              "permessage-deflate; server_no_context_takeover; client_no_context_takeover; server_max_window_bits=8"},
             {"permessage-deflate; server_max_window_bits=7, permessage-deflate", "permessage-deflate"},
             {"permessage-deflate; server_max_window_bits=16", nullptr},
             {"permessage-deflate; server_max_window_bits=010", nullptr},
             {"permessage-deflate; server_max_window_bits", nullptr},
             {"permessage-deflate; client_max_window_bits=1", nullptr},
             {"permessage-deflate; server_no_context_takeover=1", nullptr},
             {"permessage-deflate; server_no_context_takeover; server_no_context_takeover", nullptr},
             {"permessage-deflate; unknown", nullptr},
             {"permessage-bzip2", nullptr},
             {"", nullptr}}) {
        const auto answer = answerDeflateOffer(one.offered, options);
        ASSERT_TRUE(answer.ok()) << one.offered;
        ASSERT_EQ(answer->has_value(), one.answered != nullptr) << one.offered;
        if (one.answered != nullptr) {
            EXPECT_EQ((*answer)->header, one.answered) << one.offered;
        }
    }
    EXPECT_FALSE(answerDeflateOffer("permessage-deflate; =1", options).ok());
    EXPECT_FALSE(answerDeflateOffer("permessage-deflate; a=\"x", options).ok());
    EXPECT_FALSE(answerDeflateOffer("permessage-deflate x", options).ok());
}

TEST(Extensions, clientHoldsTheServerToTheOffer) {
    DeflateOptions strict;
    strict.server = {10, false};
    strict.client = {11, true};
    EXPECT_EQ(deflateOffer(strict), "permessage-deflate; server_no_context_takeover; server_max_window_bits=10; "
                                    "client_max_window_bits=11");
    const auto accepts = [](const char* answer, const std::optional<DeflateOptions>& offered) {
        return acceptDeflateAnswer(answer, offered).ok();
    };
    EXPECT_FALSE(accepts("permessage-deflate", std::nullopt));
    EXPECT_FALSE(accepts("other", DeflateOptions{}));
    EXPECT_FALSE(accepts("permessage-deflate, permessage-deflate", DeflateOptions{}));
    EXPECT_FALSE(accepts("permessage-deflate; client_max_window_bits", DeflateOptions{}));
    EXPECT_FALSE(accepts("permessage-deflate; what=1", DeflateOptions{}));
    EXPECT_FALSE(accepts("permessage-deflate", strict));
    EXPECT_FALSE(accepts("permessage-deflate; server_no_context_takeover", strict));
    EXPECT_FALSE(accepts("permessage-deflate; server_no_context_takeover; server_max_window_bits=11", strict));
    const auto agreed = acceptDeflateAnswer(
        "permessage-deflate; server_no_context_takeover; server_max_window_bits=9; client_max_window_bits=8; "
        "client_no_context_takeover",
        strict);
    ASSERT_TRUE(agreed.ok() && agreed->has_value());
    EXPECT_EQ((*agreed)->server.windowBits, 9);
    EXPECT_EQ((*agreed)->client.windowBits, 8);
    EXPECT_FALSE((*agreed)->client.takeover);
}

} // namespace
} // namespace zentavo::websocket
