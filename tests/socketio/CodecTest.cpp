// The wire, read and written; what hostile ends may not do; the small pure rules.

#include <algorithm>
#include <cmath>
#include <deque>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "zentavo/foundation/JSON.h"
#include "zentavo/socketio/Arguments.h"
#include "zentavo/socketio/Backoff.h"
#include "zentavo/socketio/CookieDate.h"
#include "zentavo/socketio/CookieJar.h"
#include "zentavo/socketio/EngineHandshake.h"
#include "zentavo/socketio/EnginePacket.h"
#include "zentavo/socketio/PacketDecoder.h"

namespace zentavo::socketio {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

std::string written(const Packet& packet) {
    const auto frames = writePacket(packet);
    if (!frames) {
        return "error: " + frames.error().message;
    }
    std::string text;
    for (const auto& frame : *frames) {
        appendToPayload(text, frame);
    }
    std::replace(text.begin(), text.end(), '\x1e', '|');
    return text;
}

Packet event(Arguments arguments) {
    Packet packet;
    packet.data = arguments.values();
    packet.attachments = arguments.takeAttachments();
    return packet;
}

TEST(SocketPackets, areWrittenAsTheServerReadsThem) {
    EXPECT_EQ(written(event({"echo", 1, "zwei", Map{{"three", List{3}}}, nullptr, "ünï"})),
              "42[\"echo\",1,\"zwei\",{\"three\":[3]},null,\"ünï\"]");
    EXPECT_EQ(written({PacketType::connect, "/admin", {}, Map{{"token", "secret"}}, {}}),
              "40/admin,{\"token\":\"secret\"}");
    EXPECT_EQ(written({PacketType::connect, "/", {}, {}, {}}), "40");
    EXPECT_EQ(written({PacketType::disconnect, "/admin", {}, {}, {}}), "41/admin,");

    Packet question = event({"whoami"});
    question.space = "/admin";
    question.id = 0;
    EXPECT_EQ(written(question), "42/admin,0[\"whoami\"]");

    Arguments arguments{"echo", Binary{{"\1\2\3\xff", 4}}};
    arguments.add(Map{{"k", arguments.attach("\4")}}).add("z");
    EXPECT_EQ(written(event(arguments)), "452-[\"echo\",{\"_placeholder\":true,\"num\":0},"
                                         "{\"k\":{\"_placeholder\":true,\"num\":1}},\"z\"]|bAQID/w==|bBA==");
}

TEST(SocketPackets, thatNobodyCouldReadAreNotWritten) {
    EXPECT_THAT(written(event({"x", "\xff"})), testing::StartsWith("error"));
    EXPECT_THAT(written(event({"x", 1.0 / 0.0})), testing::StartsWith("error"));
    Arguments many{"x"};
    for (int i = 0; i < 11; ++i) {
        many.add(Binary{"b"});
    }
    EXPECT_THAT(written(event(many)), testing::HasSubstr("11 attachments"));
    EXPECT_THAT(written(event({"x", Binary{"b"}, Map{{"_placeholder", true}, {"num", 7}}})),
                testing::StartsWith("error"));
}

TEST(SocketPackets, areReadAcrossMessages) {
    PacketDecoder decoder({});
    auto header = decoder.takeText("51-/a b,7[\"e\",{\"_placeholder\":true,\"num\":0},{\"n\":12}]");
    ASSERT_TRUE(header.ok()) << header.error().message;
    EXPECT_FALSE(header->has_value());
    auto whole = decoder.takeBinary(std::string_view("\0\1", 2));
    ASSERT_TRUE(whole.ok() && whole->has_value());
    const Packet& packet = **whole;
    EXPECT_EQ(packet.type, PacketType::event);
    EXPECT_EQ(packet.space, "/a b");
    EXPECT_EQ(packet.id, 7U);
    const Arguments arguments(*packet.data.asList(), packet.attachments);
    ASSERT_NE(arguments.binary(1), nullptr);
    EXPECT_EQ(*arguments.binary(1), std::string("\0\1", 2));
    EXPECT_EQ(arguments.binary(2), nullptr);
    EXPECT_TRUE(arguments[9].isNull());

    // The decoder is free again; a packet may announce no attachments at all.
    auto next = decoder.takeText("60-3[]");
    ASSERT_TRUE(next.ok() && next->has_value());
    EXPECT_EQ((*next)->type, PacketType::acknowledgement);
    EXPECT_EQ((*next)->id, 3U);
    next = decoder.takeText("2[5,1]");
    ASSERT_TRUE(next.ok() && next->has_value());
    EXPECT_EQ((*next)->data.asList()->front(), Value("5"));
}

TEST(SocketPackets, ofHostileServersAreRefused) {
    const std::string deep = "2[\"e\"," + std::string(100, '[') + std::string(100, ']') + "]";
    for (const std::string& text : {std::string(),
                                    std::string("7"),
                                    std::string("x"),
                                    std::string("2"),
                                    std::string("2[]"),
                                    std::string("2{}"),
                                    std::string("2[null]"),
                                    std::string("2[\"disconnect\"]"),
                                    std::string("2[\"connect_error\",1]"),
                                    std::string("2[\"e\"]x"),
                                    std::string("2[\"\xff\"]"),
                                    std::string("3[]"),
                                    std::string("31{}"),
                                    std::string("0[]"),
                                    std::string("1[]"),
                                    std::string("4"),
                                    std::string("4[]"),
                                    std::string("5[\"e\"]"),
                                    std::string("511-[\"e\"]"),
                                    std::string("599999999999999999999-[\"e\"]"),
                                    std::string("5-[\"e\"]"),
                                    std::string("21234567890123456[\"e\"]"),
                                    "2/" + std::string(2000, 'a') + ",[\"e\"]",
                                    std::string("51-[\"e\",{\"_placeholder\":true,\"num\":1}]"),
                                    std::string("51-[\"e\",{\"_placeholder\":true,\"num\":-1}]"),
                                    std::string("51-[\"e\",{\"_placeholder\":true,\"num\":\"0\"}]"),
                                    deep}) {
        EXPECT_FALSE(PacketDecoder({}).takeText(text).ok()) << text;
    }
    EXPECT_FALSE(PacketDecoder({}).takeBinary("lonely").ok());
    PacketDecoder interrupted({});
    ASSERT_TRUE(interrupted.takeText("51-[\"e\"]").ok());
    EXPECT_FALSE(interrupted.takeText("2[\"e\"]").ok());

    Limits small;
    small.maximumPacket = 20;
    small.maximumValues = 4;
    EXPECT_FALSE(PacketDecoder(small).takeText("2[\"e\",\"0123456789abcdef\"]").ok());
    EXPECT_FALSE(PacketDecoder(small).takeText("2[1,2,3,4,5]").ok());
    PacketDecoder sum(small);
    ASSERT_TRUE(sum.takeText("52-[\"e\"]").ok());
    ASSERT_TRUE(sum.takeBinary("01234567").ok());
    EXPECT_FALSE(sum.takeBinary("01234567").ok());
}

TEST(EnginePackets, areReadFromPollingBodies) {
    std::vector<std::string> seen;
    PayloadReader reader("42[\"n\",1]\x1e"
                         "bAQID\x1e"
                         "2\x1e"
                         "6");
    for (auto packet = reader.next(); packet.ok() && packet->has_value(); packet = reader.next()) {
        seen.push_back(std::to_string(static_cast<int>((*packet)->type)) + ((*packet)->binary ? "b" : "t") +
                       std::string((*packet)->data));
    }
    EXPECT_THAT(seen, ElementsAre("4t2[\"n\",1]", "4b\1\2\3", "2t", "6t"));
    for (const char* bad : {"", "7", "bA", "b*", "2\x1e",
                            "\x1e"
                            "2"}) {
        PayloadReader broken(bad);
        auto packet = broken.next();
        for (; packet.ok() && packet->has_value(); packet = broken.next()) {
        }
        EXPECT_FALSE(packet.ok()) << bad;
        EXPECT_TRUE(broken.next().ok()) << "nothing more after an error";
    }
    EXPECT_EQ(sizeInPayload({"12345", false}), 5U);
    EXPECT_EQ(sizeInPayload({"1234", true}), 9U);
}

TEST(EngineHandshakes, areReadWithTheirTimesAndLimits) {
    const auto read = readEngineHandshake(R"({"sid":"ab","upgrades":["webtransport","websocket"],"pingInterval":300,)"
                                          R"("pingTimeout":9999999999999,"maxPayload":1000})");
    ASSERT_TRUE(read.ok());
    EXPECT_EQ(read->sid, "ab");
    EXPECT_TRUE(read->offersWebSocket);
    EXPECT_EQ(read->pingInterval, 300ms);
    EXPECT_EQ(read->pingTimeout, 24h);
    EXPECT_EQ(read->maxPayload, 1000U);
    for (const char* bad : {"", "[]", "{}", R"({"sid":""})", R"({"sid":1})", R"({"sid":"a","pingInterval":0})",
                            R"({"sid":"a","pingTimeout":"x"})", R"({"sid":"a","maxPayload":-1})"}) {
        EXPECT_FALSE(readEngineHandshake(bad).ok()) << bad;
    }
}

/// Gives what a test says, in units of 1/2^53 of the whole and as a coin.
class FixedRandom final : public platform::Random {
public:
    FixedRandom(double chance, bool longer) : draws_{static_cast<std::uint64_t>(chance * 0x1p53), longer ? 1U : 0U} {}
    void fill(std::span<std::uint8_t> bytes) override {
        const auto draw = draws_.front();
        draws_.pop_front();
        std::copy_n(reinterpret_cast<const std::uint8_t*>(&draw), bytes.size(), bytes.begin());
    }

private:
    std::deque<std::uint64_t> draws_;
};

TEST(BackoffRule, doublesMovesAndThenCuts) {
    struct Row {
        Backoff backoff;
        unsigned attempt;
        double chance;
        bool longer;
        std::chrono::milliseconds wanted;
    };
    const Backoff usual;
    const Backoff quick{200ms, 1000ms, 0.5};
    const Backoff steady{100ms, 5000ms, 0};
    for (const Row& row : {
             Row{usual, 0, 0, false, 10s},
             Row{usual, 0, 0.999999, false, 5001ms},
             Row{usual, 0, 0.5, true, 12500ms},
             Row{usual, 1, 0.999999, false, 10001ms},
             Row{usual, 1, 0.75, true, 27500ms},
             Row{usual, 2, 0.999999, false, 20001ms},
             Row{usual, 2, 0.1, true, 30s},
             Row{usual, 3, 0.999999, false, 30s},
             Row{usual, 64, 0.3, false, 30s},
             Row{usual, 4'000'000'000U, 0.999999, true, 30s},
             Row{quick, 1, 0.25, false, 350ms},
             Row{quick, 3, 0.1, true, 1000ms},
             Row{steady, 3, 0.9, true, 800ms},
             Row{{-5ms, -1ms, 7}, 3, 0.9, true, 0ms},
             Row{{10s, std::chrono::milliseconds::max(), 0.5}, 4'000'000'000U, 0.5, true, std::chrono::hours(24 * 365)},
             Row{{10s, 30s, std::nan("")}, 0, 0.5, true, 10s},
         }) {
        FixedRandom random(row.chance, row.longer);
        EXPECT_EQ(backoffDelay(row.backoff, row.attempt, random), row.wanted)
            << row.attempt << " " << row.chance << " " << row.longer;
    }
}

TEST(CookieJars, keepWhatTheServerSetAndNoMore) {
    CookieJar jar;
    const std::chrono::system_clock::time_point civil = std::chrono::sys_days(2026y / 11 / 21) + 10h;
    jar.take("io=abc; Path=/; HttpOnly; SameSite=Strict", 0s, civil);
    jar.take("node=7;Max-Age=10", 0s, civil);
    jar.take("key=1; Secure", 0s, civil);
    EXPECT_EQ(jar.header(false, 1s), "io=abc; node=7");
    EXPECT_EQ(jar.header(true, 10s), "io=abc; key=1");
    jar.take("io=def", 1s, civil);
    EXPECT_EQ(jar.header(false, 11s), "io=def");
    jar.take("io=; Expires=Thu, 01 Jan 1970 00:00:00 GMT", 1s, civil);
    EXPECT_EQ(jar.header(false, 11s), "");

    // A date ends a cookie when it comes; an age goes before it, in either order.
    jar = {};
    jar.take("d=1; Expires=Sat, 21 Nov 2026 10:00:05 GMT", 1s, civil);
    EXPECT_EQ(jar.header(false, 6s - 1ns), "d=1");
    EXPECT_EQ(jar.header(false, 6s), "");
    jar.take("d=2; Max-Age=2; Expires=Sat, 21 Nov 2026 09:59:59 GMT", 1s, civil);
    EXPECT_EQ(jar.header(false, 2s), "d=2");
    jar.take("d=3; Expires=Fri, 31 Dec 9999 23:59:59 GMT; Max-Age = 2", 1s, civil);
    EXPECT_EQ(jar.header(false, 3s), "");
    jar.take("d=4; Max-Age=x; Max-Age=99999999999999999999; Expires=never", 1s, civil);
    EXPECT_EQ(jar.header(false, 100h), "d=4");
    jar.take("d=5; Expires=Sat, 21-Nov-26 09:59:59 GMT", 1s, civil);
    EXPECT_EQ(jar.header(false, 1s), "");
    for (const std::string& bad :
         {std::string("x"), std::string("=x"), std::string("a=b\r\nEvil: 1"), "a=" + std::string(5000, 'x')}) {
        jar.take(bad, 1s, civil);
    }
    EXPECT_EQ(jar.header(false, 11s), "");
    for (int i = 0; i < 100; ++i) {
        jar.take("c" + std::to_string(i) + "=1", 1s, civil);
    }
    EXPECT_LT(jar.header(false, 1s).size(), 400U);
}

TEST(CookieDates, areReadAsServersWriteThem) {
    const auto moment = std::chrono::sys_days(1994y / 11 / 6) + 8h + 49min + 37s;
    for (const char* same : {"Sun, 06 Nov 1994 08:49:37 GMT", "Sunday, 06-Nov-94 08:49:37 GMT",
                             "Sun Nov  6 08:49:37 1994", "1994 november 6 8:49:37.123 +0100", "6 08:49:37 Nov 94"}) {
        EXPECT_EQ(cookieDate(same), moment) << same;
    }
    EXPECT_EQ(cookieDate("29 Feb 2028 0:0:0"), std::chrono::sys_days(2028y / 2 / 29));
    EXPECT_EQ(cookieDate("1 Jan 69 0:0:0"), std::chrono::sys_days(2069y / 1 / 1));
    for (const std::string& bad :
         {std::string(), std::string("1970"), std::string("6 Nov 1994"), std::string("Nov 1994 08:49:37"),
          std::string("31 Feb 2026 08:49:37"), std::string("6 Nov 1600 08:49:37"), std::string("6 Nov 1994 24:00:00"),
          std::string("6 Nov 1994 08:49"), std::string("6 Nov 19945 08:49:37"),
          std::string(200, ' ') + "6 Nov 1994 08:49:37"}) {
        EXPECT_FALSE(cookieDate(bad)) << bad;
    }
}

} // namespace
} // namespace zentavo::socketio
