#include "zentavo/tracking/HTTPClient.h"

#include "tests/support/SdkTest.h"

namespace zentavo {
namespace {

using namespace std::chrono_literals;
using platform::URLErrorKind;
using testing::ScriptedAnswer;

class HTTPClientTest : public SdkTest {
protected:
    HTTPClientTest() { sdk->setDebug(true); }

    void post(const Map& body = {{"n", 1}}) {
        client->request(url, "POST", body, [this](std::optional<std::string> data, std::optional<Error> error) {
            completions.push_back(data ? *data : "error: " + error->message);
        });
    }
    std::size_t requests() const { return memory.session->count(); }

    const URL url = *URL::parse("http://127.0.0.1/event");
    std::shared_ptr<HTTPClient> client = std::make_shared<HTTPClient>(memory.platform(), sdk->state()->log);
    std::vector<std::string> completions;
};

TEST_F(HTTPClientTest, SendsJSONAndTellsTheCompletionOnceWhateverTheStatus) {
    struct Case {
        ScriptedAnswer answer;
        const char* completion;
        std::size_t retries;
    };
    const std::vector<Case> cases{
        {{200, "ok"}, "ok", 0},
        {{204, ""}, "", 0}, // an empty body is data
        {{299, "odd"}, "odd", 0},
        {{302, "moved"}, "moved", 1},
        {{404, "missing"}, "missing", 1},
        {{500, "broken"}, "broken", 1},
        {ScriptedAnswer::failure(URLErrorKind::cannotConnect), nullptr, 1},
    };
    for (const Case& each : cases) {
        memory.session->clear();
        completions.clear();
        memory.session->setDefault(each.answer);
        post({{"status", each.answer.status}});
        settle();
        ASSERT_EQ(completions.size(), 1U) << each.answer.status;
        if (each.completion != nullptr) {
            EXPECT_EQ(completions[0], each.completion);
        } else {
            EXPECT_TRUE(completions[0].starts_with("error: "));
        }
        EXPECT_EQ(requests(), 1U);
        memory.session->setDefault({});
        memory.queues->advance(59s);
        EXPECT_EQ(requests(), 1U);
        memory.queues->advance(1s);
        EXPECT_EQ(requests(), 1 + each.retries) << each.answer.status;
        EXPECT_EQ(completions.size(), 1U);
        memory.queues->advance(48h);
        EXPECT_EQ(requests(), 1 + each.retries) << "a repeated request is not repeated again";
    }
    const auto request = memory.session->requests().front();
    EXPECT_EQ(request->method, "POST");
    EXPECT_EQ(request->headers, (std::vector<platform::Header>{{"Content-Type", "application/json"}}));
    EXPECT_EQ(request->idleTimeout, 60s);
}

TEST_F(HTTPClientTest, EveryFailureIsOneLineOfTheLog) {
    const auto lines = [&](const ScriptedAnswer& answer) {
        memory.console->clear();
        memory.session->setDefault(answer);
        post();
        settle();
        return logged();
    };
    const std::string subject = "; POST http://127.0.0.1/event is ";
    const auto failed = [&](const char* next) {
        return ::testing::AllOf(::testing::StartsWith("Error: "), ::testing::EndsWith(subject + next));
    };
    EXPECT_THAT(lines({200, "ok"}), ::testing::IsEmpty());
    EXPECT_THAT(lines({404, "missing"}), ::testing::ElementsAre("Error: status 404" + subject + "sent again in 60 s"));
    const auto cut = ScriptedAnswer::failure(URLErrorKind::cannotConnect);
    EXPECT_THAT(lines(cut), ::testing::ElementsAre(failed("sent again in 60 s")));
    EXPECT_THAT(lines(cut), ::testing::ElementsAre(failed("sent again in 60 s")));
    EXPECT_THAT(lines(cut), ::testing::ElementsAre(failed("sent again in 3600 s")));
    memory.console->clear();
    memory.session->setDefault({500, "broken"});
    memory.queues->advance(60s); // retries that fail as well
    const std::string last = "Error: status 500" + subject + "not sent again";
    EXPECT_THAT(memory.console->lines(),
                ::testing::AllOf(::testing::SizeIs(3), ::testing::Each(::testing::EndsWith(last))));
}

TEST_F(HTTPClientTest, CountsOfOneRequestTooManyBeginAnew) {
    memory.session->setDefault({500, ""});
    for (int i = 0; i < 3; ++i) {
        post();
    }
    for (std::size_t n = 0; n < HTTPClient::maximumCounted; ++n) {
        client->get(*URL::parse("http://127.0.0.1/" + std::to_string(n)), nullptr);
    }
    settle();
    memory.console->clear();
    post();
    settle();
    EXPECT_THAT(logged(), ::testing::ElementsAre(::testing::EndsWith("in 60 s"))) << "not the hour of a fourth failure";
}

TEST_F(HTTPClientTest, RepeatsTheSameRequestBitByBit) {
    memory.session->setDefault(ScriptedAnswer::failure(URLErrorKind::connectionLost));
    post();
    settle();
    memory.queues->advance(60s);
    ASSERT_EQ(requests(), 2U);
    EXPECT_EQ(*memory.session->requests()[0], *memory.session->requests()[1]);
    EXPECT_THAT(logged().back(), ::testing::HasSubstr("Error "));
}

TEST_F(HTTPClientTest, CountsFailuresOfEqualRequestsTogether) {
    memory.session->setDefault({500, ""});
    // Three failures wait a minute each, the fourth an hour; another request starts from the beginning.
    for (int i = 0; i < 4; ++i) {
        post();
        settle();
    }
    post({{"n", 2}});
    settle();
    memory.session->hold(); // retries are counted, not answered
    memory.session->clear();
    memory.queues->advance(60s);
    EXPECT_EQ(requests(), 4U);
    memory.queues->advance(3540s);
    EXPECT_EQ(requests(), 5U);
}

TEST_F(HTTPClientTest, AnAnswerToARetryForgetsTheFailures) {
    memory.session->setDefault({500, ""});
    for (int i = 0; i < 4; ++i) {
        post();
        settle();
    }
    memory.queues->advance(2h); // all retries answered, with data
    memory.session->clear();
    post();
    settle();
    memory.queues->advance(60s);
    EXPECT_EQ(requests(), 2U);
}

TEST_F(HTTPClientTest, ADayAfterTheFirstFailureAllCountersAreForgotten) {
    memory.session->setDefault(ScriptedAnswer::failure(URLErrorKind::timedOut));
    post();
    settle();
    memory.queues->advance(24h);
    memory.session->clear();
    post(); // second failure, past the period: dropped, counters cleared
    settle();
    memory.queues->advance(2h);
    EXPECT_EQ(requests(), 1U);
    post(); // and so this is a first failure again
    settle();
    memory.queues->advance(60s);
    EXPECT_EQ(requests(), 3U);
}

TEST_F(HTTPClientTest, AClientThatIsGoneRepeatsNothing) {
    memory.session->hold();
    post();
    client.reset();
    memory.session->answer(0, {500, "late"});
    settle();
    EXPECT_EQ(completions, std::vector<std::string>{"late"});
    EXPECT_THAT(logged(), ::testing::ElementsAre(::testing::EndsWith("is not sent again")));
    memory.queues->advance(48h);
    EXPECT_EQ(requests(), 1U);
}

TEST_F(HTTPClientTest, ABodyThatJSONCannotSayIsDroppedAndTold) {
    post({{"price", std::numeric_limits<double>::quiet_NaN()}});
    EXPECT_TRUE(completions.empty()); // never inside the call
    settle();
    ASSERT_EQ(completions.size(), 1U);
    EXPECT_THAT(completions[0], ::testing::HasSubstr("price"));
    EXPECT_THAT(logged().back(), ::testing::StartsWith("Error: "));
    EXPECT_EQ(requests(), 0U);
}

TEST_F(HTTPClientTest, GetSendsNoBodyAndPutOne) {
    client->get(url, nullptr);
    client->put(url, {{"a", 1}}, nullptr);
    settle();
    const auto all = memory.session->requests();
    ASSERT_EQ(all.size(), 2U);
    EXPECT_EQ(all[0]->method, "GET");
    EXPECT_EQ(all[0]->body, nullptr);
    EXPECT_TRUE(all[0]->headers.empty());
    EXPECT_EQ(all[1]->method, "PUT");
    EXPECT_EQ(*all[1]->body, R"({"a":1})");
}

TEST_F(HTTPClientTest, WhatWaitsForAnAnswerIsBounded) {
    memory.session->hold();
    const std::string text(8U << 20U, 'x');
    for (int i = 0; i < 9; ++i) {
        post({{"text", text}});
    }
    settle();
    EXPECT_EQ(requests(), 7U); // 8 MiB and a little each, 64 MiB in all
    EXPECT_EQ(completions.size(), 2U);
    EXPECT_THAT(logged().back(), ::testing::HasSubstr("too many requests"));
    memory.session->answer(0, {200, "ok"});
    settle();
    memory.session->clear();
    completions.clear();
    post({{"text", text}});
    EXPECT_EQ(requests(), 1U) << "an answer makes room";
}

TEST_F(HTTPClientTest, AnOutageThatOutlastsTheRetriesEnds) {
    memory.session->setDefault(ScriptedAnswer::failure(URLErrorKind::cannotConnect));
    const std::string text(8U << 20U, 'x');
    for (int i = 0; i < 7; ++i) { // as much as may be held
        post({{"n", i}, {"text", text}});
    }
    settle();
    memory.queues->advance(60s); // every retry fails as well
    ASSERT_EQ(requests(), 14U);
    memory.session->setDefault({});
    memory.session->clear();
    completions.clear();
    for (int i = 0; i < 7; ++i) {
        post({{"n", i}, {"text", text}});
    }
    settle();
    EXPECT_EQ(requests(), 7U) << "what has been given up makes room";
    EXPECT_THAT(completions, ::testing::Each("{}"));
}

} // namespace
} // namespace zentavo
