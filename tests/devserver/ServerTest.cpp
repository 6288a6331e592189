#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/devserver/SampleEvent.h"
#include "zentavo/foundation/JSON.h"

namespace zentavo::devserver {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class ServerTest : public ::testing::Test, protected RunningServer {
protected:
    List requests(const std::string& query = "") const {
        return *bodyOf(client().Get("/_dev/requests" + query)).find("requests")->asList();
    }
};

std::vector<std::string> problems(const httplib::Result& answer) {
    std::vector<std::string> list;
    const Map body = bodyOf(answer);
    for (const Value& problem : *body.find("problems")->asList()) {
        list.push_back(*problem.asString());
    }
    return list;
}

TEST_F(ServerTest, AnEventIsAnsweredAndLoggedAsItWasSent) {
    const auto answer = send();
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->status, 200);
    EXPECT_EQ(answer->body, R"({"status":"ok"})");

    const List list = requests();
    ASSERT_EQ(list.size(), 1U);
    const Map& logged = *list[0].asMap();
    EXPECT_EQ(*logged.find("number"), 1);
    EXPECT_EQ(*logged.find("twin"), "production");
    EXPECT_EQ(*logged.find("method"), "POST");
    EXPECT_EQ(*logged.find("path"), "/event");
    EXPECT_EQ(*logged.find("query"), Value(Map{{"resp_type", "json"}, {"portal_id", "1000"}, {"prop_id", "555"}}));
    EXPECT_EQ(*logged.find("headers")->asMap()->find("Content-Type"), "application/json");
    EXPECT_EQ(*logged.find("body"), Value(sampleEvent()));
    EXPECT_EQ(*logged.find("status"), 200);
    EXPECT_EQ(*logged.find("event"), "view_product");
    EXPECT_EQ(*logged.find("problems"), Value(List()));

    EXPECT_EQ(client().Get("/_dev/body?number=1")->body, text(sampleEvent()));
    const auto plain = client().Get("/_dev/status", {{"Accept-Encoding", "gzip"}});
    EXPECT_FALSE(plain->has_header("Content-Encoding")) << "compressing costs more than it saves on one machine";
    EXPECT_EQ(client().Get("/_dev/request?number=2")->status, 404);
    EXPECT_EQ(client().Delete("/_dev/requests")->status, 200);
    EXPECT_TRUE(requests().empty());
}

TEST_F(ServerTest, TwinsAreToldApartByTheirPath) {
    Map event = sampleEvent();
    event.set("portal_id", "33167");
    const std::string query = "/event?resp_type=json&portal_id=33167&prop_id=555";
    EXPECT_EQ(client().Post("/sandbox" + query, text(event), "application/json")->status, 200);
    const auto wrong = client().Post(query, text(event), "application/json");
    EXPECT_EQ(wrong->status, 400);
    EXPECT_THAT(problems(wrong), ElementsAre(HasSubstr("belongs to the sandbox")));
    EXPECT_EQ(*requests("?twin=sandbox")[0].asMap()->find("path"), "/sandbox/event");
    EXPECT_EQ(*requests("?problems=1")[0].asMap()->find("twin"), "production");
}

TEST_F(ServerTest, WrongRequestsAreExplainedAndKept) {
    struct Case {
        const char* method;
        const char* path;
        std::string body;
        int status;
        const char* problem;
    };
    const std::vector<Case> cases{
        {"POST", "/event", R"({"en": )", 400, "the body cannot be read: "},
        {"POST", "/event", "[]", 400, "the body is a list; expected a JSON object"},
        {"POST", "/event", "", 400, "the body is empty"},
        {"POST", "/event", "\xFF\xFE{}", 400, "the body cannot be read: "},
        {"POST", "/event", std::string(100'000, '['), 400, "the body cannot be read: "},
        {"POST", "/sandbox/api/application", "{}", 400, "portal_id is missing"},
        {"POST", "/nowhere", "{}", 404, "nothing answers at \"/nowhere\""},
        {"POST", "/sandboxed/event", "{}", 404, "nothing answers at"},
        {"PUT", "/event", "{}", 405, "/event takes POST, not PUT"},
        {"POST", "/event", std::string(IncomingRequest::maximumBody + 1, ' '), 413,
         "the body is larger than 8388608 bytes"},
    };
    for (const Case& each : cases) {
        httplib::Request request;
        request.method = each.method;
        request.path = each.path;
        request.body = each.body;
        request.set_header("Content-Type", "application/json");
        auto connection = client();
        const auto answer = connection.send(request);
        ASSERT_TRUE(answer) << each.problem;
        EXPECT_EQ(answer->status, each.status) << each.problem;
        EXPECT_THAT(problems(answer).front(), StartsWith(each.problem));
    }
    EXPECT_EQ(requests("?problems=1").size(), cases.size());
    EXPECT_THAT(*bodyOf(client().Get("/nowhere")).find("available")->asList(),
                ::testing::IsSupersetOf({"POST /event", "POST /api/app/identify", "POST /api/application",
                                         "POST /interaction/v2", "POST /access/api/app-inbox/message//…"}));
    EXPECT_EQ(client().Get("/event")->get_header_value("Allow"), "POST");
    const auto untyped = client().Post("/api/application", R"({"portal_id":"1"})", "text/plain");
    EXPECT_THAT(problems(untyped), ElementsAre(HasSubstr("Content-Type is \"text/plain\"")));
}

TEST_F(ServerTest, WhatIsHardlyHTTPIsRefusedAndHarmsNobody) {
    const std::string chunk = "40000\r\n" + std::string(0x40000, 'x') + "\r\n"; // 256 KiB
    std::string chunks;
    for (int i = 0; i < 40; ++i) {
        chunks += chunk;
    }
    std::string headers;
    for (int i = 0; i < 20'000; ++i) {
        headers += "X-Filler: y\r\n";
    }
    const std::vector<std::pair<std::string, std::string>> cases{
        {"HELLO\r\n\r\n", " 400 "},
        {"GET /" + std::string(3'000, 'a') + " HTTP/1.1\r\n\r\n", " 414 "},
        {"GET / HTTP/1.1\r\n" + headers + "\r\n", " 400 "},
        {"GET http://elsewhere/event HTTP/1.1\r\nConnection: close\r\n\r\n", " 400 "},
        {"POST /event HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n" + chunks + "0\r\n\r\n", " 413 "},
        {"POST /event HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\nnonsense\r\n", " 400 "},
        {"POST /event HTTP/1.1\r\nContent-Encoding: gzip\r\nContent-Length: 4\r\n\r\nnope", " 400 "},
        {"POST /event HTTP/1.1\r\nContent-Type: multipart/form-data; boundary=b\r\nContent-Length: 1\r\n\r\nx",
         " 415 "},
        {"GET /_dev/body HTTP/1.1\r\nContent-Length: 5\r\n\r\nxxxxx", " 400 "},
    };
    for (const auto& [bytes, status] : cases) {
        const RawConnection connection(server->port());
        connection.send(bytes);
        const std::string answer = connection.readAll();
        EXPECT_THAT(answer.substr(0, answer.find('\n')), HasSubstr(status)) << bytes.substr(0, 60);
    }
    EXPECT_EQ(send()->status, 200);
}

TEST_F(ServerTest, ARequestWithoutABodyNeedsNoLength) {
    const RawConnection connection(server->port());
    connection.send("POST /_dev/fault?path=/event&hang=1 HTTP/1.1\r\nHost: x\r\n\r\n");
    EXPECT_THAT(connection.readUntil("hang=1"), HasSubstr(" 200 "));
}

TEST_F(ServerTest, WaitingEndsWhenTheRequestsHaveCome) {
    EXPECT_EQ(client().Get("/_dev/wait?timeout=0.01")->status, 504);
    std::thread sender([&] {
        send(sampleEvent("a"));
        send(sampleEvent("b"));
        send(sampleEvent("a"));
    });
    const auto answer = client().Get("/_dev/wait?event=a&count=2&timeout=5");
    sender.join();
    EXPECT_EQ(answer->status, 200);
    EXPECT_EQ(bodyOf(answer).find("requests")->asList()->size(), 2U);
    for (const char* wrong :
         {"/_dev/wait?timeout=61", "/_dev/wait?count=0", "/_dev/requests?limit=x", "/_dev/requests?paht=/event"}) {
        EXPECT_EQ(client().Get(wrong)->status, 400) << wrong;
    }
}

TEST_F(ServerTest, AServerThatStopsKeepsNobodyWaiting) {
    const RawConnection waiting(server->port());
    waiting.send("GET /_dev/wait?timeout=60 HTTP/1.1\r\n\r\n");
    const RawConnection idle(server->port());
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const auto start = std::chrono::steady_clock::now();
    server.reset();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST_F(ServerTest, DevicesAreRemembered) {
    const auto answer =
        client().Post("/api/app/identify", R"({"portal_id":1000,"identifier":"0aff","channel":"ios","device_id":"D"})",
                      "application/json");
    const Map data = *bodyOf(answer).find("data")->asMap();
    EXPECT_EQ(client().Post("/api/application", R"({"portal_id":"1000"})", "application/json")->status, 200);
    const auto devices = json::read(client().Get("/_dev/devices")->body);
    ASSERT_TRUE(devices);
    EXPECT_EQ(*devices->asList()->at(0).asMap()->find("zentavo_apppush_uid"), *data.find("zentavo_apppush_uid"));
}

TEST_F(ServerTest, AnotherSitesPageGetsNothing) {
    const std::string own = server->url();
    EXPECT_EQ(client().Get("/_dev/requests", {{"Origin", "http://evil.example"}})->status, 403);
    EXPECT_EQ(client().Post("/_dev/fault?path=*&hang=1", {{"Origin", "null"}}, "", "")->status, 403);
    EXPECT_EQ(client().Get("/_dev/requests", {{"Origin", own}})->status, 200);
    EXPECT_THAT(client().Get("/")->get_header_value("Content-Security-Policy"), HasSubstr("default-src 'none'"));
}

TEST_F(ServerTest, ManyEventsOverKeptConnections) {
    constexpr int connections = 6;
    constexpr int each = 300;
    std::atomic<int> good = 0;
    std::vector<std::thread> senders;
    for (int i = 0; i < connections; ++i) {
        senders.emplace_back([&] {
            auto kept = client();
            kept.set_keep_alive(true);
            const std::string body = text(sampleEvent());
            for (int n = 0; n < each; ++n) {
                const auto answer = kept.Post("/event" + sampleQuery, body, "application/json");
                good += answer && answer->status == 200 ? 1 : 0;
            }
        });
    }
    for (std::thread& sender : senders) {
        sender.join();
    }
    EXPECT_EQ(good, connections * each);
    EXPECT_EQ(server->log().counters().total, static_cast<std::uint64_t>(connections * each));
}

} // namespace
} // namespace zentavo::devserver
