// Client and server joined in one process, and what the table of conformance cases cannot say.

#include "zentavo/websocket/Session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ports/memory/SeededRandom.h"

namespace zentavo::websocket {
namespace {

class Collected : public SessionHandler {
public:
    void onMessage(MessageKind, std::string_view content) override { messages.emplace_back(content); }
    void onPong(std::string_view content) override { pongs.emplace_back(content); }
    std::vector<std::string> messages;
    std::vector<std::string> pongs;
};

struct End {
    End(Role role, const std::optional<DeflateAgreement>& compression, SessionLimits limits)
        : session(role, compression, limits, std::make_shared<testing::SeededRandom>(1)) {}
    /// Sends what waits here to the other end; returns how many bytes that were.
    std::size_t deliver(End& other, std::size_t stride = 4096) {
        std::string bytes;
        session.takeOutput(bytes);
        for (std::size_t at = 0; at < bytes.size(); at += stride) {
            other.session.receive({bytes.data() + at, std::min(stride, bytes.size() - at)}, other.got);
        }
        session.written();
        return bytes.size();
    }
    Session session;
    Collected got;
};

struct Pair {
    explicit Pair(const std::optional<DeflateAgreement>& compression = {}, SessionLimits limits = {})
        : client(Role::client, compression, limits), server(Role::server, compression, limits) {}
    End client;
    End server;
};

std::string sample(std::size_t size) {
    std::string text;
    for (int i = 0; text.size() < size; ++i) {
        text += "{\"id\":" + std::to_string(i * 7919 % 1000) + ",\"name\":\"item\"}";
    }
    text.resize(size);
    return text;
}

TEST(Session, carriesMessagesBothWaysWithEverySetOfCompressionParameters) {
    for (int clientBits = 8; clientBits <= 15; ++clientBits) {
        for (const int serverBits : {8, 9, 12, 15}) {
            for (const unsigned takeover : {0U, 1U, 2U, 3U}) {
                DeflateAgreement agreed;
                agreed.client = {clientBits, (takeover & 1U) != 0};
                agreed.server = {serverBits, (takeover & 2U) != 0};
                agreed.threshold = 0;
                Pair pair(agreed);
                std::vector<std::string> sent;
                for (const std::size_t size : {0U, 1U, 16U, 300U, 5000U, 70000U, 300U, 0U}) {
                    sent.push_back(sample(size));
                    ASSERT_EQ(pair.client.session.send(MessageKind::text, sent.back()), Sent::taken);
                    ASSERT_EQ(pair.server.session.send(MessageKind::binary, sent.back()), Sent::taken);
                }
                EXPECT_LT(pair.client.deliver(pair.server, 97), 60000U);
                pair.server.deliver(pair.client, 1);
                EXPECT_EQ(pair.server.got.messages, sent) << clientBits << " " << serverBits << " " << takeover;
                EXPECT_EQ(pair.client.got.messages, sent) << clientBits << " " << serverBits << " " << takeover;
            }
        }
    }
}

// A network that puts bytes where the session would have them, now and then, and elsewhere otherwise.
TEST(Session, readsLongMessagesInTheirOwnRoom) {
    for (const Role role : {Role::client, Role::server}) {
        for (const std::size_t stride : {std::size_t{1000}, std::size_t{4099}, std::size_t{300000}}) {
            End receiver(role, {}, {});
            End sender(role == Role::client ? Role::server : Role::client, {}, {});
            const std::vector<std::string> sent{"\xC3\xA9" + sample(700001), "x", sample(100000), "", sample(6000000)};
            for (const auto& message : sent) {
                ASSERT_EQ(sender.session.send(MessageKind::text, message), Sent::taken);
                sender.session.ping("between");
            }
            std::string bytes;
            sender.session.takeOutput(bytes);
            std::size_t inRoom = 0;
            for (std::size_t at = 0, i = 0; at < bytes.size(); ++i) {
                std::size_t size = std::min(stride, bytes.size() - at);
                std::span<char> place(bytes.data() + at, size);
                const auto room = receiver.session.room();
                if (i % 3 != 0 && !room.empty()) {
                    size = std::min(size, room.size());
                    std::copy_n(bytes.data() + at, size, room.data());
                    place = room.first(size);
                    inRoom += size;
                }
                receiver.session.receive(place, receiver.got);
                at += size;
            }
            EXPECT_EQ(receiver.got.messages == sent, true) << stride;
            EXPECT_GT(inRoom, bytes.size() / 3);
        }
    }
}

// A length is only claimed: no memory for what has not come.
TEST(Session, believesALengthOnlySoFar) {
    End receiver(Role::client, {}, {});
    std::string head("\x82\x7F\0\0\0\0\0\xF0\0\0abc", 13);
    receiver.session.receive(head, receiver.got);
    EXPECT_LE(receiver.session.room().size(), 262144U);
    EXPECT_GT(receiver.session.room().size(), 0U);
}

TEST(Session, refusesADecompressionBombWithoutExpandingIt) {
    DeflateAgreement agreed;
    SessionLimits limits;
    limits.maximumMessage = 10000;
    Pair pair(agreed, limits);
    const std::string bomb(10001, 'z');
    pair.client.session.send(MessageKind::binary, bomb.substr(1));
    pair.client.session.send(MessageKind::binary, bomb);
    EXPECT_LT(pair.client.deliver(pair.server), 200U);
    EXPECT_EQ(pair.server.got.messages, std::vector{bomb.substr(1)});
    EXPECT_EQ(pair.server.session.closed().code, CloseCode::tooLarge);
    EXPECT_TRUE(pair.server.session.violated());
    pair.server.deliver(pair.client);
    EXPECT_EQ(pair.client.session.closed().code, CloseCode::tooLarge);
    EXPECT_TRUE(pair.client.session.closed().clean);
}

TEST(Session, withoutABoundTakesEveryMessage) {
    SessionLimits limits;
    limits.maximumMessage = SIZE_MAX;
    limits.maximumQueued = SIZE_MAX;
    for (const auto& compression : {std::optional<DeflateAgreement>(), std::optional(DeflateAgreement())}) {
        Pair pair(compression, limits);
        const std::vector<std::string> sent{sample(300), sample(500000)};
        for (const auto& message : sent) {
            EXPECT_EQ(pair.client.session.send(MessageKind::text, message), Sent::taken);
        }
        pair.client.deliver(pair.server);
        EXPECT_EQ(pair.server.got.messages == sent, true);
    }
}

TEST(Session, saysGoodbyeOnceAndRemembersWhatThePeerSaid) {
    Pair pair;
    pair.client.session.close(static_cast<CloseCode>(4001), "enough, \xC3\xA9");
    pair.client.session.close(CloseCode::normal, "again");
    EXPECT_EQ(pair.client.session.send(MessageKind::text, "late"), Sent::closed);
    EXPECT_EQ(pair.client.session.ping(""), Sent::closed);
    pair.server.session.send(MessageKind::text, "crossed on the way");
    pair.server.deliver(pair.client);
    EXPECT_TRUE(pair.client.got.messages.empty());
    pair.client.deliver(pair.server);
    pair.server.deliver(pair.client);
    for (const Session* session : {&pair.client.session, &pair.server.session}) {
        EXPECT_TRUE(session->finished());
        EXPECT_TRUE(session->closed().clean);
        EXPECT_EQ(static_cast<int>(session->closed().code), 4001);
    }
    EXPECT_EQ(pair.server.session.closed().reason, "enough, \xC3\xA9");
}

TEST(Session, neverSendsWhatACloseFrameMayNotHold) {
    Pair local;
    local.client.session.close(CloseCode::abnormal, "x");
    local.client.deliver(local.server);
    EXPECT_EQ(local.server.session.closed().code, CloseCode::noStatus);
    // The reason is cut before the character that does not fit.
    Pair longer;
    longer.client.session.close(CloseCode::normal, std::string(122, 'r') + "\xC3\xA9");
    longer.client.deliver(longer.server);
    EXPECT_EQ(longer.server.session.closed().reason, std::string(122, 'r'));
}

TEST(Session, endWithoutGoodbyeIsAbnormal) {
    Pair pair;
    pair.client.session.receiveEnd();
    EXPECT_EQ(pair.client.session.closed().code, CloseCode::abnormal);
    EXPECT_FALSE(pair.client.session.closed().clean);
    EXPECT_EQ(pair.client.session.send(MessageKind::text, "x"), Sent::closed);
}

TEST(Session, queueIsBoundedAndTellsOnceWhenItDrained) {
    SessionLimits limits;
    limits.maximumQueued = 1000;
    Pair pair({}, limits);
    Session& session = pair.client.session;
    const std::string large(5000, 'x');
    EXPECT_EQ(session.send(MessageKind::binary, large), Sent::taken) << "nothing else waits";
    EXPECT_EQ(session.send(MessageKind::binary, "x"), Sent::full);
    EXPECT_EQ(session.ping("x"), Sent::full);
    std::string bytes;
    ASSERT_TRUE(session.takeOutput(bytes));
    EXPECT_EQ(session.send(MessageKind::binary, "x"), Sent::full) << "not written yet";
    EXPECT_TRUE(session.written());
    EXPECT_FALSE(session.written());
    EXPECT_EQ(session.send(MessageKind::binary, "x"), Sent::taken);
    // What has no content fills the queue too.
    for (int i = 0; i < 1000; ++i) {
        session.send(MessageKind::binary, {});
    }
    EXPECT_LE(session.queued(), 1000U);
    for (int i = 0; i < 1000; ++i) {
        session.ping({});
    }
    EXPECT_LT(session.queued(), 1020U);
    // A peer that pings and does not read gets no pongs beyond the bound.
    for (int i = 0; i < 1000; ++i) {
        pair.server.session.ping("0123456789");
    }
    pair.server.deliver(pair.client);
    EXPECT_LT(session.queued(), 1200U);
}

} // namespace
} // namespace zentavo::websocket
