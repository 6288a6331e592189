#include <chrono>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "devserver/FaultPlayer.h"
#include "tests/devserver/SampleEvent.h"
#include "zentavo/foundation/JSON.h"

namespace zentavo::devserver {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class FaultAnswersTest : public ::testing::Test, protected RunningServer {
protected:
    /// What a client sees that sends an event and reads until the connection ends.
    std::string rawAnswer(bool* reset = nullptr) const {
        const std::string body = text(sampleEvent());
        const RawConnection connection(server->port());
        connection.send("POST /event" + sampleQuery +
                        " HTTP/1.1\r\nConnection: close\r\nContent-Type: application/json\r\nContent-Length: " +
                        std::to_string(body.size()) + "\r\n\r\n" + body);
        std::string answer = connection.readAll();
        if (reset != nullptr) {
            *reset = connection.wasReset();
        }
        return answer;
    }
    Map lastLogged() const {
        return *bodyOf(client().Get("/_dev/requests?limit=1")).find("requests")->asList()->at(0).asMap();
    }
};

TEST_F(FaultAnswersTest, StatusAndBodyAreAsAskedForAndOnlyAsOften) {
    fault("path=/event&status=500&times=2");
    EXPECT_EQ(send()->status, 500);
    EXPECT_EQ(send()->status, 500);
    EXPECT_EQ(*lastLogged().find("fault"), "status=500");
    EXPECT_EQ(send()->status, 200);
    EXPECT_FALSE(lastLogged().contains("fault"));

    fault("path=/event&body=%3Coops%3E&status=503");
    const auto garbage = send();
    EXPECT_EQ(garbage->status, 503);
    EXPECT_EQ(garbage->body, "<oops>");
    fault("path=/event&empty=1&status=500");
    EXPECT_EQ(send()->body, "");
    fault("path=/event&status=204");
    EXPECT_EQ(send()->status, 204);
    fault("path=/event&session_id=s1");
    EXPECT_EQ(bodyOf(send()), (Map{{"status", "ok"}, {"session_id", "s1"}}));
    EXPECT_EQ(client().Post("/_dev/fault?path=/event&status=1")->status, 400);
}

TEST_F(FaultAnswersTest, ARedirectGoesInCirclesForAsLongAsItIsPlanned) {
    fault("path=/event&redirect=" + URL::encodeComponent("/event" + sampleQuery) + "&times=3");
    const auto first = send();
    EXPECT_EQ(first->status, 307) << "keeps method and body";
    EXPECT_EQ(first->get_header_value("Location"), "/event" + sampleQuery);
    auto follower = client();
    follower.set_follow_location(true);
    const auto answer = follower.Post("/event" + sampleQuery, text(sampleEvent()), "application/json");
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 200);
    EXPECT_EQ(server->log().counters().total, 4U);
    EXPECT_EQ(server->log().counters().withProblems, 0U);
}

TEST_F(FaultAnswersTest, TheConnectionBreaksBeforeOrInTheAnswer) {
    bool reset = false;
    fault("path=/event&reset=1");
    EXPECT_EQ(rawAnswer(&reset), "");
    EXPECT_TRUE(reset);
    EXPECT_TRUE(lastLogged().find("status")->isNull());

    fault("path=/event&reset=mid");
    const std::string half = rawAnswer(&reset);
    EXPECT_THAT(half, HasSubstr("Content-Length: 15"));
    EXPECT_THAT(half, HasSubstr("{\"statu"));
    EXPECT_THAT(half, Not(HasSubstr("ok")));
    EXPECT_TRUE(reset);
    EXPECT_EQ(send()->status, 200);
}

TEST_F(FaultAnswersTest, AnAnswerComesDropByDropOrLate) {
    const auto timed = [&] {
        const auto start = std::chrono::steady_clock::now();
        const auto answer = send();
        EXPECT_EQ(bodyOf(answer), (Map{{"status", "ok"}})); // 15 bytes
        return std::chrono::steady_clock::now() - start;
    };
    fault("path=/event&drip=100");
    const auto dripping = timed();
    EXPECT_GE(dripping, std::chrono::milliseconds(90));
    EXPECT_LT(dripping, std::chrono::seconds(2));
    fault("path=/event&delay=50");
    EXPECT_GE(timed(), std::chrono::milliseconds(50));
}

TEST_F(FaultAnswersTest, AHugeBodyIsOfTheSizeAskedForAndJSON) {
    for (const std::size_t size : {0U, 5U, 14U, 100'000U, 1'000'000U}) {
        fault("path=/event&size=" + std::to_string(size));
        const auto answer = send();
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->body.size(), size);
        EXPECT_EQ(json::readMap(answer->body).ok(), size >= 13) << size;
    }
}

TEST_F(FaultAnswersTest, HangingAnswersAreBoundedKeepNobodyWaitingAndEndWithTheServer) {
    fault("path=/event&hang=1&times=1000");
    std::vector<std::unique_ptr<RawConnection>> hanging;
    for (int i = 0; i < FaultPlayer::maximumSlow; ++i) {
        hanging.push_back(std::make_unique<RawConnection>(server->port()));
        hanging.back()->send("POST /event HTTP/1.1\r\nContent-Length: 0\r\n\r\n");
    }
    EXPECT_EQ(client().Get("/_dev/wait?count=256&timeout=20")->status, 200);
    EXPECT_EQ(client().Post("/api/application", R"({"portal_id":"1"})", "application/json")->status, 200);
    // One more does not hang; the last of them may be about to.
    std::string status;
    for (int i = 0; i < 100 && status.empty(); ++i) {
        auto impatient = client();
        impatient.set_read_timeout(0, 50'000);
        const auto answer = impatient.Post("/event");
        status = answer ? std::to_string(answer->status) : "";
    }
    EXPECT_EQ(status, "503");
    const auto start = std::chrono::steady_clock::now();
    server.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    EXPECT_EQ(hanging.front()->readAll(), "");
}

TEST_F(FaultAnswersTest, AClientThatLeavesTakesItsHangingAnswerWithIt) {
    fault("path=/event&hang=1&times=1000");
    for (int i = 0; i < FaultPlayer::maximumSlow + 50; ++i) {
        RawConnection leaving(server->port());
        leaving.send("POST /event HTTP/1.1\r\nContent-Length: 0\r\n\r\n");
    }
    client().Delete("/_dev/fault");
    // A slow answer needs one of the places that the hanging ones had.
    fault("path=/event&delay=1&times=1000");
    int status = 0;
    for (int i = 0; i < 100 && status != 200; ++i) {
        status = send()->status;
    }
    EXPECT_EQ(status, 200);
}

} // namespace
} // namespace zentavo::devserver
