#include <limits>

#include <gtest/gtest.h>

#include "tests/push/SamplePush.h"
#include "tests/support/Golden.h"
#include "zentavo/push/NotificationProperties.h"

namespace zentavo {
namespace {

using Kind = DecodingFailure::Kind;

/// Every field: the map it is in, its key, a value of another kind that is close to the right one, and whether it must
/// be there.
struct FieldCase {
    const char* place;
    const char* key;
    Value wrong;
    bool required;
};

std::vector<FieldCase> fields() {
    std::vector<FieldCase> all = {
        {"", "mutable-content", "1", false},
        {"", "urlImageString", 1, false},
        {"", "badge", 3, false},
        {"badge", "type", 1, true},
        {"badge", "value", "3", true},
        {"", "pushId", 17, true},
        {"", "sound", Map(), false},
        {"", "category", 0, false},
        {"", "content-available", 1, false},
        {"", "relevance-score", 0.5, false},
        {"", "target-content-id", 1, false},
        {"", "trackingClickUrl", true, false},
        {"", "url", List(), false},
        {"", "leadSourceId", 123, false},
        {"", "storyId", 1, false},
        {"", "campaignId", 1, false},
        {"", "variantId", 1, false},
        {"", "actionButtons", List(), false},
        {"actionButtons", "button1", "buy", false},
        {"actionButtons", "button2", List(), false},
        {"", "additionalData", "screen=sale", false},
        {"additionalData", "size", 42, false},
        {"", "backgroundColor", 0xFFEEDD, false},
        {"", "template", 1, false},
        {"", "ratingSettings", List(), false},
        {"ratingSettings", "type", 1, true},
        {"ratingSettings", "scale", "5", true},
        {"ratingSettings", "selectedIcon", 1, true},
        {"ratingSettings", "unselectedIcon", 1, true},
        {"ratingSettings", "ratingText", "bad", false},
        {"", "smallImageSettings", "left", false},
        {"smallImageSettings", "imageAlignment", 1, true},
        {"", "imageCarouselSettings", List(), false},
        {"imageCarouselSettings", "slides", Map(), true},
    };
    for (const char* button : {"actionButtons.button1", "actionButtons.button2"}) {
        for (const char* key : {"id", "label", "iconPath", "clickAction", "url"}) {
            all.push_back({button, key, 1, true});
        }
        all.push_back({button, "systemIcon", 1, true});
    }
    for (const char* key : {"imageUrl", "action", "url"}) {
        all.push_back({"imageCarouselSettings.slides[1]", key, 1, true});
    }
    return all;
}

std::string pathOf(const FieldCase& field) {
    const std::string place = field.place;
    return place.empty() ? field.key : place + "." + field.key;
}

Result<NotificationProperties, DecodingFailure> with(const FieldCase& field, const Value& value) {
    Map payload = fullPayload();
    at(payload, field.place).set(field.key, value);
    return NotificationProperties::read(payload);
}

TEST(PushPayload, EveryFieldIsReadFromItsKey) {
    const auto read = NotificationProperties::read(fullPayload());
    ASSERT_TRUE(read) << read.error().message;
    const NotificationProperties& p = *read;
    EXPECT_EQ(p.mutableContent, 1);
    EXPECT_EQ(p.urlImageString, "https://media.shop.example/coat.jpg");
    EXPECT_EQ(p.badge, (Badge{"increase", 2}));
    EXPECT_EQ(p.sound, "bell.wav");
    EXPECT_EQ(p.category, "ZentavoNotificationContent");
    EXPECT_EQ(p.pushId, "p1");
    EXPECT_EQ(p.contentAvailable, true);
    EXPECT_EQ(p.relevanceScore, 7);
    EXPECT_EQ(p.targetContentId, "t7");
    EXPECT_EQ(p.trackingClickUrl, "https://track.shop.example/c/p1");
    EXPECT_EQ(p.url, "https://shop.example/sale");
    EXPECT_EQ(p.leadSourceId, "l1");
    EXPECT_EQ(p.storyId, "s1");
    EXPECT_EQ(p.campaignId, "c1");
    EXPECT_EQ(p.variantId, "v1");
    EXPECT_EQ(p.additionalData, (std::map<std::string, std::string>{{"screen", "sale"}, {"size", "42"}}));
    EXPECT_EQ(p.backgroundColor, "#FFEEDD");
    EXPECT_EQ(p.template_, "rating");
    EXPECT_EQ(p.actionButtons->button1,
              (ActionButtons::Button{"buy", "Buy", "cart", true, "OPEN_URL", "https://shop.example/buy"}));
    EXPECT_EQ(p.imageCarouselSettings->slides.size(), 2U);
}

TEST(PushPayload, NestedRecordsAreWrittenUnderTheKeysTheyWereReadFrom) {
    const auto p = NotificationProperties::read(fullPayload()).value();
    const Map nested{{"badge", p.badge->encode()},
                     {"actionButtons", p.actionButtons->encode()},
                     {"ratingSettings", p.ratingSettings->encode()},
                     {"smallImageSettings", p.smallImageSettings->encode()},
                     {"imageCarouselSettings", p.imageCarouselSettings->encode()}};
    expectGolden("push-payload-nested", nested);
    // The order is part of what is written; comparing maps does not see it.
    EXPECT_EQ(json::write(p.ratingSettings->encode()).value(),
              R"({"type":"star","scale":5,"selectedIcon":"Star.Selected","unselectedIcon":"Star.Unselected",)"
              R"("ratingText":["bad","fine"]})");

    RatingSettings withoutTexts = *p.ratingSettings;
    withoutTexts.ratingText = std::nullopt;
    EXPECT_FALSE(withoutTexts.encode().contains("ratingText"));
    EXPECT_EQ(ActionButtons().encode(), Map());
    EXPECT_EQ((ActionButtons{{}, p.actionButtons->button2}).encode().size(), 1U);
}

TEST(PushPayload, NothingButThePushIdIsNeededAndNothingIsDefaulted) {
    NotificationProperties expected;
    expected.pushId = "p1";
    EXPECT_EQ(NotificationProperties::read(Map{{"pushId", "p1"}}).value(), expected);
    EXPECT_EQ(NotificationProperties::read(Map{{"pushId", ""}, {"colour", "red"}}).value(), NotificationProperties());

    const auto sparse = NotificationProperties::read(
        Map{{"pushId", "p1"}, {"actionButtons", Map()}, {"imageCarouselSettings", Map{{"slides", List()}}}});
    ASSERT_TRUE(sparse);
    EXPECT_EQ(sparse->actionButtons, ActionButtons());
    EXPECT_EQ(sparse->imageCarouselSettings, ImageCarouselSettings());
}

TEST(PushPayload, AFieldOfAnotherKindFailsTheWholePayloadAndIsNamed) {
    for (const FieldCase& field : fields()) {
        const auto read = with(field, field.wrong);
        ASSERT_FALSE(read) << pathOf(field);
        EXPECT_EQ(read.error().kind, Kind::typeMismatch) << read.error().message;
        EXPECT_EQ(read.error().codingPath, pathOf(field));
    }
}

TEST(PushPayload, ARequiredFieldMustBeThereAndAnOptionalOneNeedNot) {
    for (const FieldCase& field : fields()) {
        const bool isText = std::string_view(field.place) == "additionalData"; // its members may be left out, not null
        const auto null = with(field, nullptr);
        EXPECT_EQ(null.ok(), !field.required && !isText) << pathOf(field);
        if (!null) {
            EXPECT_EQ(null.error().kind, Kind::valueNotFound) << null.error().message;
            EXPECT_EQ(null.error().codingPath, pathOf(field));
        }
        Map payload = fullPayload();
        at(payload, field.place).remove(field.key);
        const auto missing = NotificationProperties::read(payload);
        EXPECT_EQ(missing.ok(), !field.required) << pathOf(field);
        if (!missing) {
            EXPECT_EQ(missing.error().kind, Kind::keyNotFound) << missing.error().message;
            EXPECT_EQ(missing.error().codingPath, pathOf(field));
        }
    }
}

TEST(PushPayload, OfSeveralBadFieldsTheFirstInReadingOrderIsNamed) {
    Map payload = fullPayload();
    const auto failing = [&] { return NotificationProperties::read(payload).error().codingPath; };
    payload.set("imageCarouselSettings", 1);
    EXPECT_EQ(failing(), "imageCarouselSettings");
    at(payload, "additionalData").set("size", 1);
    EXPECT_EQ(failing(), "additionalData.size");
    payload.set("sound", 1);
    EXPECT_EQ(failing(), "sound");
    payload.remove("pushId"); // read before "sound", though it stands behind it in the record
    EXPECT_EQ(failing(), "pushId");
    at(payload, "badge").remove("value");
    EXPECT_EQ(failing(), "badge.value");
    payload.set("mutable-content", "1");
    EXPECT_EQ(failing(), "mutable-content");
}

TEST(PushPayload, WhatJSONCannotSayIsAFailureToo) {
    for (const Value& hostile : {Value("\xFF"), Value(std::numeric_limits<double>::infinity())}) {
        const auto read = NotificationProperties::read(Map{{"pushId", "p1"}, {"unknown", hostile}});
        ASSERT_FALSE(read);
        EXPECT_EQ(read.error().kind, Kind::dataCorrupted);
        EXPECT_FALSE(read.error().message.empty());
    }
}

} // namespace
} // namespace zentavo
