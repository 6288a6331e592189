#include <algorithm>

#include <gtest/gtest.h>

#include "tests/inbox/SampleInbox.h"
#include "zentavo/inbox/InboxAnswer.h"
#include "zentavo/inbox/InboxResponses.h"
#include "zentavo/inbox/ModifyAction.h"

namespace zentavo {
namespace {

using Kind = DecodingFailure::Kind;

template <class Response>
Result<Response, DecodingFailure> read(const Map& answer) {
    return readInboxAnswer<Response>(textOf(answer), [](const std::string&) {});
}

TEST(InboxRecords, AnItemIsReadFromItsKeysAndWrittenUnderThem) {
    const auto response = read<InboxItemAPIResponse>(pageOf({plainItem(), fullItem()}));
    ASSERT_TRUE(response) << response.error().message;
    const auto& items = response->data.at("entries");
    ASSERT_EQ(items.size(), 2U);

    const InboxItem& plain = items[0];
    EXPECT_EQ(plain.itemId, "m1");
    EXPECT_EQ(plain.lastUpdated, "2026-11-05T09:03:07Z");
    EXPECT_EQ(plain.heading, "Winter sale");
    EXPECT_EQ(plain.dateCreated, "2026-11-04T08:00:00Z");
    EXPECT_EQ(plain.catalogId, (std::vector<std::string>{"c1", "c2"}));
    EXPECT_EQ(plain.lookupType, "customer");
    EXPECT_EQ(plain.templateId, "t1");
    EXPECT_EQ(plain.content, "Everything at half price.");
    EXPECT_EQ(plain.status, 1);
    EXPECT_FALSE(plain.lauchUrl || plain.appUrl || plain.imageUrl || plain.buttonAppUrl1 || plain.buttonAppUrl2 ||
                 plain.buttonLaunchUrl1 || plain.buttonLaunchUrl2 || plain.trackingUrl || plain.buttonLabel1 ||
                 plain.buttonLabel2);

    const InboxItem& full = items[1];
    EXPECT_EQ(full.lauchUrl->text(), "https://shop.example/launch_url?a=b");
    EXPECT_EQ(full.buttonLaunchUrl2->text(), "https://shop.example/button_launch_url_2?a=b");
    EXPECT_EQ(full.buttonLabel2, "Later");

    for (const auto& [item, source] : {std::pair(plain, plainItem()), std::pair(full, fullItem())}) {
        Map expected = source;
        expected.remove("item_type");
        expected.remove("destination_id");
        EXPECT_EQ(json::readMap(item.jsonString().value()).value(), expected);
    }
    // The keys are all that a message has, also the two that are not read.
    EXPECT_EQ(std::size(fullItem()), InboxItem::keys.size());
    EXPECT_TRUE(std::all_of(InboxItem::keys.begin(), InboxItem::keys.end(),
                            [](std::string_view key) { return fullItem().contains(key); }));
}

TEST(InboxRecords, TextThatAnEncodingDoesNotHaveIsNotWritten) {
    InboxItem item = read<GetMessageByIdAPIResponse>(answerWith(plainItem())).value().data;
    EXPECT_EQ(item.jsonString(TextEncoding::ascii), item.jsonString(TextEncoding::utf8));
    item.heading = "F\u00FCr dich";
    EXPECT_TRUE(item.jsonString());
    EXPECT_EQ(item.jsonString(TextEncoding::ascii), std::nullopt);
    item.heading = "\xFF";
    EXPECT_EQ(item.jsonString(), std::nullopt);
    EXPECT_TRUE((Catalog{"c1", "\u00DC"}.jsonString()));
    EXPECT_EQ((Catalog{"c1", "\u00DC"}.jsonString(TextEncoding::ascii)), std::nullopt);
}

TEST(InboxRecords, OfListsAndDataGivenTwiceTheLaterCount) {
    const auto entriesOf = [](const std::string& data) {
        const std::string bytes = "{" + data + R"(,"code":200,"message":""})";
        auto page = readInboxAnswer<InboxItemAPIResponse>(bytes, [](const std::string&) {});
        std::vector<std::string> ids;
        for (const InboxItem& item : page ? std::move(*page).entries() : std::vector<InboxItem>()) {
            ids.push_back(item.itemId);
        }
        return page ? ids : std::vector{page.error().codingPath};
    };
    const std::string one = R"("entries":[)" + textOf(plainItem("m1")) + "]";
    const std::string two = R"("entries":[)" + textOf(plainItem("m2")) + "]";
    using Ids = std::vector<std::string>;
    EXPECT_EQ(entriesOf(R"("data":{)" + one + "," + two + "}"), Ids{"m2"});
    EXPECT_EQ(entriesOf(R"("data":{)" + one + R"(,"entries":[]})"), Ids{});
    EXPECT_EQ(entriesOf(R"("data":{)" + one + R"(},"data":{})"), Ids{});
    EXPECT_EQ(entriesOf(R"("data":{)" + one + R"(},"data":1)"), Ids{"data"});
    EXPECT_EQ(entriesOf(R"("data":{)" + one + R"(,"entries":1})"), Ids{"data.entries"});
    EXPECT_EQ(entriesOf(R"("data":{)" + two + R"(},"other":{)" + one + "}"), Ids{"m2"});
    EXPECT_EQ(entriesOf(R"("data":{"entries":[1]})"), Ids{"data.entries[0]"});
    // What was replaced cannot fail the page, and the first failure is the first in the order of reading.
    EXPECT_EQ(entriesOf(R"("data":{"entries":[1],)" + one + "}"), Ids{"m1"});
    EXPECT_EQ(entriesOf(R"("data":{"entries":[1]},"data":{})"), Ids{});
    EXPECT_EQ(entriesOf(R"("data":{"entries":[1]},"data":1)"), Ids{"data"});
    EXPECT_EQ(entriesOf(R"("data":{"a":1,"entries":[1]})"), Ids{"data.a"});
    EXPECT_EQ(entriesOf(R"("data":{"entries":null,"x":[1]})"), Ids{"data.entries"});
}

TEST(InboxRecords, EveryRequiredFieldIsRequired) {
    for (const char* key : {"item_id", "last_updated", "heading", "date_created", "catalog_ids", "lookup_type",
                            "template_id", "content", "status"}) {
        Map item = plainItem();
        item.remove(key);
        const auto response = read<InboxItemAPIResponse>(pageOf({plainItem(), item}));
        ASSERT_FALSE(response) << key;
        EXPECT_EQ(response.error().kind, Kind::keyNotFound);
        EXPECT_EQ(response.error().subject, key);
        EXPECT_EQ(response.error().codingPath, std::string("data.entries[1].") + key);

        item.set(key, Map());
        EXPECT_EQ(read<InboxItemAPIResponse>(pageOf({item})).error().kind, Kind::typeMismatch) << key;
        item.set(key, nullptr);
        EXPECT_EQ(read<InboxItemAPIResponse>(pageOf({item})).error().kind, Kind::valueNotFound) << key;
    }
}

TEST(InboxRecords, WhatIsNoURLIsAbsentAndRemarkedAndWhatIsNoTextFails) {
    Map item = plainItem();
    item.set("launch_url", "http://");
    item.set("app_url", "");
    item.set("image_url", nullptr);
    std::vector<std::string> remarks;
    const auto response = readInboxAnswer<InboxItemAPIResponse>(
        textOf(pageOf({item})), [&](const std::string& line) { remarks.push_back(line); });
    ASSERT_TRUE(response);
    EXPECT_FALSE(response->data.at("entries")[0].lauchUrl || response->data.at("entries")[0].imageUrl);
    EXPECT_EQ(remarks, (std::vector<std::string>{"data.entries[0].launch_url: no URL, and therefore absent",
                                                 "data.entries[0].app_url: no URL, and therefore absent"}));
    remarks.clear();
    const std::string answer = R"({"data":{"entries":[)" + textOf(item) + R"(],"entries":[]},"code":200,"message":""})";
    EXPECT_TRUE(
        readInboxAnswer<InboxItemAPIResponse>(answer, [&](const std::string& line) { remarks.push_back(line); }));
    EXPECT_TRUE(remarks.empty()) << "of a list that was replaced";
    for (const char* key : {"launch_url", "tracking_url", "button_label_1"}) {
        Map wrong = plainItem();
        wrong.set(key, 7);
        EXPECT_EQ(read<InboxItemAPIResponse>(pageOf({wrong})).error().kind, Kind::typeMismatch) << key;
    }
}

TEST(InboxRecords, DataComesBeforeCodeAndCodeBeforeMessage) {
    Map answer{{"message", 1}, {"code", 205}, {"data", 1}};
    const auto pathOfFailure = [&] { return read<InboxItemAPIResponse>(answer).error().codingPath; };
    EXPECT_EQ(pathOfFailure(), "data");
    answer.set("data", Map());
    EXPECT_EQ(pathOfFailure(), "code");
    EXPECT_EQ(read<InboxItemAPIResponse>(answer).error().kind, Kind::dataCorrupted);
    answer.set("code", 404);
    EXPECT_EQ(pathOfFailure(), "message");
    answer.set("message", "not here");
    const auto response = read<InboxItemAPIResponse>(answer);
    ASSERT_TRUE(response);
    EXPECT_EQ(response->code, HTTPResponse::notFound);
    EXPECT_EQ(response->message, "not here");
}

TEST(InboxRecords, EntriesAndTotalComeOutOfDataAndMayBeAbsent) {
    EXPECT_TRUE(read<InboxItemAPIResponse>(answerWith(Map())).value().entries().empty());
    EXPECT_TRUE(read<CatalogAPIResponse>(answerWith(Map{{"others", List()}})).value().entries().empty());
    EXPECT_EQ(read<UnreadMessageAPIResponse>(answerWith(Map{{"all", 9}})).value().total(), 0);
    EXPECT_EQ(read<UnreadMessageAPIResponse>(answerWith(Map{{"total", 3.0}})).value().total(), 3);
    EXPECT_EQ(read<GetMessageByIdAPIResponse>(answerWith(plainItem("m7"))).value().data.itemId, "m7");

    const auto catalogs =
        read<CatalogAPIResponse>(pageOf({Map{{"catalogId", "c1"}, {"catalogName", "Sales"}}})).value().entries();
    ASSERT_EQ(catalogs.size(), 1U);
    EXPECT_EQ(catalogs[0].jsonString(), R"({"catalogId":"c1","catalogName":"Sales"})");
    EXPECT_EQ(catalogs[0].jsonData().value(), *catalogs[0].jsonString());

    // Members of data beside those asked for have the same shape, or the answer is none.
    EXPECT_EQ(read<InboxItemAPIResponse>(answerWith(Map{{"entries", List()}, {"total", 1}})).error().codingPath,
              "data.total");
    EXPECT_EQ(read<UnreadMessageAPIResponse>(answerWith(Map{{"total", 1.5}})).error().subject, "integer");
}

TEST(InboxRecords, ActionsHaveThreeNumbers) {
    EXPECT_EQ(modifyAction(1), ModifyAction::unread);
    EXPECT_EQ(modifyAction(2), ModifyAction::read);
    EXPECT_EQ(modifyAction(3), ModifyAction::remove);
    for (const std::int64_t other : {0LL, 4LL, -1LL, (1LL << 32) + 1}) {
        EXPECT_EQ(modifyAction(other), std::nullopt) << other;
    }
}

} // namespace
} // namespace zentavo
