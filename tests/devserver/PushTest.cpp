#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "devserver/EndpointStore.h"
#include "devserver/PushFiles.h"
#include "tests/devserver/SampleEvent.h"
#include "zentavo/foundation/Hex.h"
#include "zentavo/foundation/JSON.h"
#include "zentavo/push/NotificationProperties.h"

namespace zentavo::devserver {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class PushTest : public ::testing::Test, protected RunningServer {
protected:
    static std::string tokenOf(const std::string& url) {
        return hex::encode({reinterpret_cast<const std::uint8_t*>(url.data()), url.size()});
    }
    /// The uid of a device with this token.
    std::string identify(const std::string& token) const {
        const Map body{{"portal_id", 1000}, {"identifier", token}, {"channel", "ios"}, {"device_id", "D"}};
        const Map answer = bodyOf(client().Post("/api/app/identify", text(body), "application/json"));
        return *answer.find("data")->asMap()->find("zentavo_apppush_uid")->asString();
    }
    httplib::Result push(const Map& order) const {
        return client().Post("/_dev/push", text(order), "application/json");
    }
    /// The newest push of the log.
    Map newest() const {
        const Map answer = bodyOf(client().Get("/_dev/pushes"));
        return *answer.find("pushes")->asList()->front().asMap();
    }
};

std::vector<std::string> problems(const httplib::Result& answer) {
    std::vector<std::string> list;
    const Map body = bodyOf(answer);
    if (const Value* found = body.find("problems")) {
        for (const Value& problem : *found->asList()) {
            list.push_back(*problem.asString());
        }
    }
    return list;
}

TEST_F(PushTest, AnOrderThatCannotBeMeantIsExplained) {
    EXPECT_THAT(problems(push({{"file", "plain"}})), ElementsAre(HasSubstr("no device is known yet")));
    identify("0aff");
    const std::vector<std::pair<Map, const char*>> cases{
        {{}, "one of file, payload and text"},
        {{{"file", "plain"}, {"text", "x"}}, "one of file, payload and text"},
        {{{"file", "plian"}}, "there is no push \"plian\""},
        {{{"payload", "x"}}, "payload is text; expected a map"},
        {{{"text", 7}}, "text is a number; expected text"},
        {{{"text", "x"}, {"tokn", "a"}}, "\"tokn\" does not belong"},
        {{{"text", "x"}, {"token", "0aff"}, {"uid", "u"}}, "not both"},
        {{{"text", "x"}, {"token", "0afe"}}, "no device has the token \"0afe\""},
        {{{"text", "x"}, {"uid", "u"}}, "no device has the uid \"u\""},
    };
    for (const auto& [order, problem] : cases) {
        const auto answer = push(order);
        EXPECT_EQ(answer->status, 400) << problem;
        EXPECT_THAT(problems(answer), ElementsAre(HasSubstr(problem)));
    }
    EXPECT_THAT(problems(client().Post("/_dev/push", "{", "application/json")),
                ElementsAre(HasSubstr("cannot be read")));
    EXPECT_EQ(client().Post("/_dev/push", {{"Origin", "http://evil.example"}}, "{}", "application/json")->status, 403);
    EXPECT_EQ(*bodyOf(client().Get("/_dev/pushes")).find("pushes"), Value(List())) << "nothing was sent";
}

TEST_F(PushTest, SaysForEachDeviceWhyNothingArrived) {
    const std::string own = server->url() + "/_push/";
    const std::vector<std::pair<std::string, const char*>> devices{
        {"0aff", "no URL of an endpoint"},
        {tokenOf("https://push.shop.example/_push/1"), "another server's"},
        {tokenOf("http://127.0.0.1:1/_push/1"), "another server's"},
        {tokenOf(server->url() + "/event"), "another server's"},
        {tokenOf(own + "1#p256dh=x&auth=y"), "p256dh in the token's fragment"},
        {tokenOf(own + "1"), "no app has this endpoint"},
    };
    for (const auto& [token, reason] : devices) {
        const std::string uid = identify(token);
        for (const Map& order : {Map{{"text", "x"}, {"token", token}}, Map{{"file", "rating"}, {"uid", uid}}}) {
            const Map answer = bodyOf(push(order));
            const List& results = *answer.find("devices")->asList();
            ASSERT_EQ(results.size(), 1U);
            EXPECT_THAT(*results[0].asMap()->find("result")->asString(), HasSubstr(reason));
        }
    }
    EXPECT_EQ(bodyOf(push({{"text", "x"}})).find("devices")->asList()->size(), devices.size()) << "to all";
    EXPECT_THAT(client().Get("/_dev/devices")->body, HasSubstr(own + "1"));
    EXPECT_EQ(client().Post("/_push/nobody", "x", "text/plain")->status, 404);
    EXPECT_EQ(*newest().find("source"), "a POST to the endpoint");
    client().Delete("/_dev/pushes");
    EXPECT_EQ(*bodyOf(client().Get("/_dev/pushes")).find("pushes"), Value(List()));
}

TEST_F(PushTest, WithoutADistributorAnEndpointSaysSo) {
    const std::string file = ::testing::TempDir() + "zentavo-endpoints.sqlite";
    std::filesystem::remove(file);
    const auto kept = (*EndpointStore::open(file))->add({"t", "shop.example.App", "", "", 1});
    DevServer::Settings settings;
    settings.pushStore = file;
    const RunningServer running(settings);
    const auto answer = running.client().Post("/_push/" + kept->id, "x", "text/plain");
    EXPECT_EQ(answer->status, 503);
    EXPECT_THAT(answer->body, HasSubstr("not started with --distributor"));
    std::filesystem::remove(file);
}

TEST_F(PushTest, ClicksAndRatingsFindTheirPush) {
    identify("0aff");
    const std::string id = *bodyOf(push({{"file", "rating"}})).find("push_id")->asString();
    EXPECT_EQ(bodyOf(push({{"file", "rating"}})).find("push_id")->asString()->find(id), std::string::npos)
        << "each its own";
    const Map payload{{"aps", Map{{"pushId", "mine"}, {"template", "rating"}, {"storyId", "s"}, {"url", "{{click}}"}}}};
    const Map mine = bodyOf(push({{"payload", payload}}));
    EXPECT_EQ(*mine.find("push_id"), "mine");

    EXPECT_EQ(client().Get("/track/click?push=" + id)->get_header_value("Content-Type"), "image/gif");
    EXPECT_EQ(client().Get("/track/click?push=mine")->status, 200);
    EXPECT_EQ(client().Get("/track/click?push=" + *mine.find("id")->asString())->status, 200) << "as {{click}} has it";
    EXPECT_EQ(client().Get("/track/click?push=nobody")->status, 400);
    EXPECT_EQ(client().Get("/track/click?push=mine&story=9007")->status, 400);

    const auto rate = [&](const std::string& lead, const std::string& story) {
        Map event = sampleEvent("submit_rating");
        Map extra = *event.find("extra")->asMap();
        extra.merge(
            {{"rating_scale", 5}, {"selected_rating", 4}, {"lead_source_id", lead}, {"story", Map{{"id", story}}}});
        if (lead != "123") {
            extra.merge({{"campaign", Map{{"id", "910"}}}, {"variant", Map{{"id", "91011"}}}});
        }
        event.set("extra", extra);
        EXPECT_EQ(send(event)->status, 200);
    };
    rate("123", "s");
    rate("123", "another");
    rate(id, "9101");
    const Map answer = bodyOf(client().Get("/_dev/pushes"));
    const List& pushes = *answer.find("pushes")->asList();
    ASSERT_EQ(pushes.size(), 3U);
    const auto fact = [&](std::size_t index, const char* key) { return *pushes[index].asMap()->find(key); };
    EXPECT_EQ(fact(0, "clicks"), 2);
    EXPECT_EQ(fact(0, "rating_count"), 1);
    EXPECT_EQ(fact(1, "clicks"), 0);
    EXPECT_EQ(fact(1, "rating_count"), 0);
    EXPECT_EQ(fact(2, "clicks"), 1);
    ASSERT_EQ(fact(2, "rating_count"), 1);
    EXPECT_EQ(*fact(2, "ratings").asList()->front().asMap()->find("selected"), 4);
}

TEST_F(PushTest, TheFilesAreWhatTheyAreCalled) {
    const Map answer = bodyOf(client().Get("/_dev/push"));
    EXPECT_GE(answer.find("files")->asList()->size(), 15U);
    const auto files = PushFiles::read("");
    for (const PushFiles::File& file : files->all()) {
        const auto payload = json::readMap(file.text);
        const Value* aps = payload ? payload->find("aps") : nullptr;
        const bool right =
            aps != nullptr && aps->asMap() != nullptr && NotificationProperties::read(*aps->asMap()).ok();
        const bool large = file.name == "wrong_too_large";
        EXPECT_EQ(right && !large, !file.name.starts_with("wrong_")) << file.name;
        EXPECT_EQ(file.text.size() > PushEndpoints::maximumMessage, large) << file.name;
    }
    for (const char* shape :
         {"stylized_basic", "basic_notification", "small_image", "text_overlay", "rating", "simple_image_carousel"}) {
        ASSERT_NE(files->find(shape), nullptr);
        EXPECT_THAT(files->find(shape)->text, HasSubstr("\"template\": \"" + std::string(shape) + '"'));
    }
}

} // namespace
} // namespace zentavo::devserver
