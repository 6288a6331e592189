// The opening handshake from both sides, and what they agree upon. What is refused of the other end is among the
// conformance tests.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ports/memory/SeededRandom.h"
#include "zentavo/websocket/ClientHandshake.h"
#include "zentavo/websocket/ServerHandshake.h"

namespace zentavo::websocket {
namespace {

using ::testing::HasSubstr;

TEST(Handshake, clientAndServerAgreeHoweverTheBytesAreCut) {
    for (const std::size_t stride : {std::size_t{1}, std::size_t{5}, std::size_t{4096}}) {
        testing::SeededRandom random(1);
        auto made = ClientHandshake::make(
            {"example.org:81", "/chat?x=1", {"soap", "chat"}, {{"Origin", "http://a"}}, DeflateOptions{}}, random);
        ASSERT_TRUE(made.ok());
        ClientHandshake& ours = made.value();
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
    for (const int bits : {0, 7, 16}) {
        DeflateOptions options;
        options.server.windowBits = bits;
        EXPECT_TRUE(refused({"a", "/", {}, {}, options}));
    }
}

TEST(Handshake, repeatsARefusalInReadableText) {
    testing::SeededRandom random(1);
    auto made = ClientHandshake::make({"a", "/", {}, {}, {}}, random);
    ASSERT_TRUE(made.ok());
    std::string answer = "HTTP/1.1 403 no \xC3\xA9\xFF" + std::string(5000, 'x') + "\r\n\r\n";
    std::span<char> input(answer);
    ASSERT_EQ(made.value().receive(input), ClientHandshake::Step::failed);
    EXPECT_EQ(made.value().status(), 403);
    EXPECT_THAT(made.value().error(), ::testing::StartsWith("the server answered 403 no \xC3\xA9?xx"));
    EXPECT_LT(made.value().error().size(), 250U);
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
