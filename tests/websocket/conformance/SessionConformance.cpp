// Every case against a session of either role, with the bytes arriving at once and cut in every manner.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ports/memory/SeededRandom.h"
#include "tests/websocket/conformance/Cases.h"
#include "tests/websocket/conformance/Tally.h"
#include "zentavo/websocket/Session.h"

namespace zentavo::websocket::conformance {
namespace {

class Echo : public SessionHandler {
public:
    explicit Echo(Session& session) : session_(session) {}
    void onMessage(MessageKind kind, std::string_view content) override { session_.send(kind, content); }

private:
    Session& session_;
};

/// What an echoing session of `role` answers to `bytes`, given in parts of at most `stride`.
std::string answerOf(Role role, std::string bytes, std::size_t stride) {
    Session session(role, std::nullopt, {messageLimit, std::size_t{1} << 20U},
                    std::make_shared<testing::SeededRandom>(1));
    Echo echo(session);
    for (std::size_t at = 0; at < bytes.size(); at += stride) {
        session.receive({bytes.data() + at, std::min(stride, bytes.size() - at)}, echo);
    }
    std::string answer;
    session.takeOutput(answer);
    return answer;
}

class SessionConformance : public ::testing::TestWithParam<Role> {};

TEST_P(SessionConformance, answersEveryCaseHoweverTheBytesAreCut) {
    const Role role = GetParam();
    const Role peer = role == Role::client ? Role::server : Role::client;
    for (const Case& one : allCases()) {
        const std::string bytes = encode(one.sent, peer);
        std::string wrong;
        for (const std::size_t stride :
             {bytes.size(), std::size_t{1}, std::size_t{3}, std::size_t{7}, std::size_t{1447}}) {
            const auto answered = withoutReasons(decode(answerOf(role, bytes, stride), role));
            if (answered != one.answered) {
                wrong += " in parts of " + std::to_string(stride) + ": " + ::testing::PrintToString(answered);
            }
        }
        judge(role == Role::client ? "client session" : "server session", one.name, wrong.empty(), wrong);
    }
}

TEST_P(SessionConformance, survivesACutAtEveryByte) {
    const Role role = GetParam();
    const Role peer = role == Role::client ? Role::server : Role::client;
    const std::vector<RawFrame> sent{{0x01, "H\xC3\xA9llo, "}, ping("p"), {0x80, std::string(140, 'x')}, close(1000)};
    const std::string bytes = encode(sent, peer);
    const std::vector<RawFrame> wanted{pong("p"), text("H\xC3\xA9llo, " + std::string(140, 'x')), close(1000)};
    for (std::size_t cut = 1; cut < bytes.size(); ++cut) {
        Session session(role, std::nullopt, {}, std::make_shared<testing::SeededRandom>(1));
        Echo echo(session);
        std::string input = bytes;
        session.receive({input.data(), cut}, echo);
        session.receive({input.data() + cut, input.size() - cut}, echo);
        std::string answer;
        session.takeOutput(answer);
        ASSERT_EQ(decode(answer, role), wanted) << "cut at " << cut;
    }
}

INSTANTIATE_TEST_SUITE_P(BothRoles, SessionConformance, ::testing::Values(Role::client, Role::server),
                         [](const auto& which) { return which.param == Role::client ? "client" : "server"; });

} // namespace
} // namespace zentavo::websocket::conformance
