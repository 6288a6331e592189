#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "devserver/InboxMessages.h"
#include "tests/devserver/SampleEvent.h"
#include "zentavo/foundation/JSON.h"

namespace zentavo::devserver {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

const std::string base = "/access/api/app-inbox";

class InboxTest : public ::testing::Test, protected RunningServer {
protected:
    static Map bodyFor(const std::string& customer, std::initializer_list<Map::Entry> more = {}) {
        Map body{{"lookupId", customer}, {"lookupType", "customer"}, {"portalId", 1000}};
        body.merge(Map(more));
        return body;
    }
    static Map pageBody(const std::string& customer, std::int64_t page = 1, std::int64_t limit = 100,
                        List catalogs = {}) {
        return bodyFor(customer, {{"destinationId", 77},
                                  {"page", page},
                                  {"limit", limit},
                                  {"catalogs", std::move(catalogs)},
                                  {"source", "mobile"}});
    }
    httplib::Result post(const std::string& path, const Map& body) const {
        return client().Post(base + path, text(body), "application/json");
    }
    httplib::Result put(const std::string& path, const Map& body) const {
        return client().Put(base + path, text(body), "application/json");
    }
    static const Value& dataOf(const Map& answer, const char* key) {
        static const Value none;
        const Map* data = mapMember(answer, "data");
        const Value* member = data != nullptr ? data->find(key) : nullptr;
        return member != nullptr ? *member : none;
    }
    static const Map* mapMember(const Map& map, const char* key) {
        const Value* member = map.find(key);
        return member != nullptr ? member->asMap() : nullptr;
    }
    std::vector<std::string> ids(const Map& body) const {
        std::vector<std::string> found;
        const Map answer = bodyOf(post("/message/performance", body));
        if (const List* entries = dataOf(answer, "entries").asList()) {
            for (const Value& entry : *entries) {
                found.push_back(*entry.asMap()->find("item_id")->asString());
            }
        }
        return found;
    }
    Value unread(const std::string& customer) const {
        return dataOf(bodyOf(post("/message/count-unread", bodyFor(customer, {{"destinationId", 77}}))), "total");
    }
    httplib::Result modify(const std::string& customer, List messages, int status) const {
        return put("/message",
                   bodyFor(customer, {{"ids", std::move(messages)}, {"status", status}, {"destination_id", 77}}));
    }
    static std::vector<std::string> problems(const httplib::Result& answer) {
        std::vector<std::string> list;
        const Map body = bodyOf(answer);
        const Value* found = body.find("problems");
        for (const Value& problem : found != nullptr ? *found->asList() : List()) {
            list.push_back(*problem.asString());
        }
        return list;
    }
};

TEST_F(InboxTest, PagesHoldTheUsersMessagesNewestFirst) {
    EXPECT_THAT(ids(pageBody("c9")), ElementsAre("hours", "basket", "autumn", "order-4711", "shoes", "welcome"));
    EXPECT_THAT(ids(pageBody("c1")).front(), "points") << "one that is for c1 alone";
    EXPECT_THAT(ids(pageBody("c9", 1, 2)), ElementsAre("hours", "basket"));
    EXPECT_THAT(ids(pageBody("c9", 3, 2)), ElementsAre("shoes", "welcome"));
    EXPECT_THAT(ids(pageBody("c9", 4, 2)), IsEmpty());
    EXPECT_THAT(ids(pageBody("c9", 1, 100, {"orders", "sales"})), ElementsAre("basket", "autumn", "order-4711"));
    EXPECT_THAT(ids(pageBody("c9", 1, 100, {"'; DROP TABLE messages; --"})), IsEmpty());

    Map visitor = pageBody("u1");
    visitor.set("lookupType", "visitor");
    EXPECT_THAT(ids(visitor), ElementsAre("hours", "autumn", "shoes", "welcome"));
    visitor.set("destinationId", 78);
    EXPECT_THAT(ids(visitor), ElementsAre("other-place"));
}

TEST_F(InboxTest, AMessageHasAllThatTheSDKRequires) {
    const Map answer = bodyOf(post("/message//autumn", bodyFor("c9")));
    EXPECT_EQ(*answer.find("code"), 200);
    const Map item = *mapMember(answer, "data");
    for (const char* key :
         {"item_id", "last_updated", "heading", "date_created", "lookup_type", "template_id", "content"}) {
        ASSERT_NE(item.find(key), nullptr) << key;
        EXPECT_NE(item.find(key)->asString(), nullptr) << key;
    }
    EXPECT_EQ(*item.find("catalog_ids"), Value(List{"sales", "news"}));
    EXPECT_EQ(*item.find("status"), 1);
    const auto missing = post("/message//no%2Fsuch", bodyFor("c9"));
    EXPECT_EQ(missing->status, 404);
    EXPECT_THAT(missing->body, HasSubstr("no/such"));
    EXPECT_EQ(post("/message//points", bodyFor("c9"))->status, 404) << "somebody else's";
    EXPECT_EQ(post("/message//", bodyFor("c9"))->status, 404);
}

TEST_F(InboxTest, EachUserHasStatesOfTheirOwn) {
    EXPECT_EQ(unread("c9"), 6);
    EXPECT_EQ(modify("c9", {"hours", "basket"}, 2)->status, 200);
    EXPECT_EQ(unread("c9"), 4);
    EXPECT_EQ(modify("c9", {"basket"}, 1)->status, 200);
    EXPECT_EQ(unread("c9"), 5);
    EXPECT_EQ(modify("c9", {"welcome"}, 3)->status, 200);
    EXPECT_THAT(ids(pageBody("c9")), ElementsAre("hours", "basket", "autumn", "order-4711", "shoes"));
    EXPECT_EQ(post("/message//welcome", bodyFor("c9"))->status, 404);
    EXPECT_EQ(put("/message/mark-all-as-read", bodyFor("c9", {{"destinationId", 77}}))->status, 200);
    EXPECT_EQ(unread("c9"), 0);
    EXPECT_EQ(unread("c8"), 6) << "and another's are untouched";
    const Map item = *mapMember(bodyOf(post("/message//hours", bodyFor("c9"))), "data");
    EXPECT_EQ(*item.find("status"), 2);

    const Map everything = bodyOf(client().Get("/_dev/inbox"));
    const Map& first = *everything.find("messages")->asList()->front().asMap();
    EXPECT_EQ(*first.find("item_id"), "welcome");
    EXPECT_EQ(*first.find("states"), Value(List{Map{{"lookup_type", "customer"}, {"lookup_id", "c9"}, {"status", 3}}}));
}

TEST_F(InboxTest, CatalogsNeedTheNetworkInTheQuery) {
    const Map body = bodyFor("c9", {{"destinationId", 77}});
    const Map answer = bodyOf(post("/catalog/performance?_network_id=1000", body));
    EXPECT_EQ(dataOf(answer, "entries").asList()->front(),
              Value(Map{{"catalogId", "orders"}, {"catalogName", "Orders"}}));
    EXPECT_THAT(problems(post("/catalog/performance?_network_id=7", body)),
                ElementsAre("query item _network_id is \"7\"; expected \"1000\""));
    EXPECT_THAT(problems(post("/catalog/performance", body)), ElementsAre("query item _network_id is missing"));
}

TEST_F(InboxTest, WhatIsWrongIsSaidAndChangesNothing) {
    Map page = pageBody("");
    page.set("page", 0);
    page.set("source", "web");
    EXPECT_THAT(problems(post("/message/performance", page)), ElementsAre("lookupId is empty"));
    page.set("lookupId", "c9");
    EXPECT_THAT(problems(post("/message/performance", page)),
                ElementsAre("page is 0; expected 1 to 1000000", "source is \"web\"; expected \"mobile\""));
    EXPECT_THAT(problems(post("/message/performance?a=b", pageBody("c9"))), ElementsAre(HasSubstr("does not belong")));
    EXPECT_THAT(problems(post("/message/performance", pageBody("c9", 1, 5, {"news", 7}))),
                ElementsAre("catalogs[1] is a number; expected text"));

    EXPECT_THAT(problems(modify("c9", {"hours", "nothing", "points"}, 3)),
                ElementsAre("ids[1] is \"nothing\"; this user has no such message at 77",
                            "ids[2] is \"points\"; this user has no such message at 77"));
    EXPECT_THAT(problems(modify("c9", {"hours"}, 4)), ElementsAre("status is 4; expected 1 to 3"));
    Map misspelt = bodyFor("c9", {{"ids", List{"hours"}}, {"status", 2}, {"destinationId", 77}});
    EXPECT_THAT(problems(put("/message", misspelt)),
                ElementsAre("destination_id is missing", "\"destinationId\" does not belong in the body"));
    EXPECT_EQ(unread("c9"), 6);

    Map early = bodyFor("c9", {{"destinationId", 77}});
    early.set("portalId", 0);
    EXPECT_THAT(problems(post("/message/count-unread", early)), ElementsAre(HasSubstr("no portal id")));
    EXPECT_THAT(problems(post("/message//hours", bodyFor("c9", {{"destinationId", 77}}))),
                ElementsAre("\"destinationId\" does not belong in the body"));
    EXPECT_EQ(post("/message", bodyFor("c9"))->status, 405);
}

TEST_F(InboxTest, AMessageCanBeAddedByHand) {
    const auto add = [&](const Map& message) {
        return client().Post("/_dev/inbox", text(message), "application/json");
    };
    const Map added = bodyOf(add({{"heading", "Hello"}, {"content", ""}}));
    EXPECT_EQ(*added.find("item_id"), "message-1");
    EXPECT_EQ(*bodyOf(add({{"heading", "Again"}, {"content", ""}, {"lookup_id", "c9"}})).find("item_id"), "message-2");
    EXPECT_EQ(unread("c9"), 8);
    EXPECT_EQ(unread("c8"), 7);

    const auto wrong = add({{"item_id", "hours"},
                            {"heading", ""},
                            {"catalog_ids", List{"news", "olds"}},
                            {"image_url", "http://"},
                            {"status", 2}});
    EXPECT_EQ(wrong->status, 400);
    EXPECT_THAT(problems(wrong),
                ElementsAre("heading is empty", "content is missing", "\"status\" does not belong in the body",
                            "image_url is \"http://\"; expected a URL", "catalog_ids: there is no catalog \"olds\"",
                            "item_id is \"hours\", which another message has"));
    EXPECT_THAT(problems(client().Post("/_dev/inbox", "[]", "application/json")),
                ElementsAre(HasSubstr("expected a JSON object")));
    EXPECT_EQ(client().Post("/_dev/inbox", {{"Origin", "http://evil.example"}}, "{}", "application/json")->status, 403);
}

class InboxFilesTest : public ::testing::Test {
protected:
    InboxFilesTest() {
        std::string pattern = ::testing::TempDir() + "zentavo-inbox-XXXXXX";
        folder = mkdtemp(pattern.data());
    }
    ~InboxFilesTest() override { std::filesystem::remove_all(folder); }
    void write(const std::string& name, const std::string& content) const { std::ofstream(folder / name) << content; }
    /// Why the server cannot be opened; empty when it can.
    std::string refusal() const {
        const auto server = DevServer::open(settings());
        return server ? "" : server.error().message;
    }
    DevServer::Settings settings() const {
        DevServer::Settings settings;
        settings.inboxFolder = folder;
        settings.inboxStore = folder / "inbox.sqlite";
        return settings;
    }
    std::filesystem::path folder;
};

TEST_F(InboxFilesTest, AFolderTakesThePlaceOfTheBuiltInMessagesAndAFileOutlivesTheServer) {
    write("a.json", R"({"messages":[{"item_id":"m1","heading":"One","content":"","catalog_ids":["k"]}]})");
    write("b.json", R"({"catalogs":[{"catalogId":"k","catalogName":"Kept"}]})");
    write("notes.txt", "not read");
    const auto messages = [](const RunningServer& running) {
        return bodyOf(running.client().Get("/_dev/inbox")).find("messages")->asList()->size();
    };
    {
        const RunningServer first(settings());
        EXPECT_EQ(messages(first), 1U);
        first.client().Post("/_dev/inbox", R"({"heading":"Two","content":""})", "application/json");
        first.client().Put(
            base + "/message",
            R"({"ids":["m1"],"status":2,"destination_id":77,"lookupId":"c","lookupType":"customer","portalId":1})",
            "application/json");
    }
    const RunningServer second(settings());
    EXPECT_EQ(messages(second), 2U) << "what is there is not filled again";
    EXPECT_THAT(second.client().Get("/_dev/inbox")->body, HasSubstr(R"("lookup_id":"c","status":2)"));
}

TEST_F(InboxFilesTest, AFileWithAMistakeIsNamed) {
    write("a.json", R"({"messages":[{"heading":"One","content":""},{"content":""}]})");
    EXPECT_EQ(refusal(), "the inbox cannot be filled: a.json: messages[1].heading is missing");
    EXPECT_THAT(refusal(), HasSubstr("messages[1].heading")) << "nothing of it was kept";
    write("a.json", "{");
    EXPECT_THAT(refusal(), HasSubstr("a.json: not JSON"));
    write("a.json", R"({"messages":[1]})");
    EXPECT_THAT(refusal(), HasSubstr("a.json: messages[0] is a number; expected a map"));
    std::filesystem::remove_all(folder / "inbox.sqlite");
    std::filesystem::create_directory(folder / "inbox.sqlite");
    EXPECT_THAT(refusal(), HasSubstr("cannot be opened"));
}

} // namespace
} // namespace zentavo::devserver
