#include "tools/push-lint/PushLint.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ports/desktop/PushMessage.h"
#include "tests/push/SamplePush.h"

namespace zentavo::tools {
namespace {

using ::testing::AllOf;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

PushReport lint(const Map& aps) { return lintPush(json::write(Map{{"aps", aps}}).value()); }

TEST(PushLint, AGoodPushSaysWhatWillHappen) {
    const auto report = lint(fullPayload());
    EXPECT_THAT(report.failures, IsEmpty());
    EXPECT_THAT(report.warnings, IsEmpty());
    EXPECT_THAT(
        report.facts,
        ElementsAre(
            "Sound: \"bell.wav\", where the system knows it.", "Badge: goes up by 2.",
            "Image: https://media.shop.example/coat.jpg, attached when it is there within 25 seconds and has 10 "
            "MiB at most.",
            "Category: \"ZentavoNotificationContent\" stays.", "Template: rating.",
            "A click is tracked at https://track.shop.example/c/p1.",
            "A click sends the event submit_rating with the rating that was chosen, or 0.",
            "A click opens the element that was tapped in the template, else https://shop.example/sale.",
            "Button 1 \"Buy\" opens https://shop.example/buy.", "Button 2 \"Later\" opens https://shop.example/later.",
            "The app is told (onNotificationPressed) with the additional data."));
}

TEST(PushLint, WhatCannotBeReadFailsWithThePlace) {
    EXPECT_THAT(lintPush("{").failures, ElementsAre(StartsWith("no JSON object: ")));
    EXPECT_THAT(lintPush("[]").failures, ElementsAre(StartsWith("no JSON object: ")));
    EXPECT_THAT(lintPush("{}").failures, ElementsAre(StartsWith("no map \"aps\"")));
    EXPECT_THAT(lintPush(R"({"pushId":"p1"})").failures, Contains(HasSubstr("inside \"aps\"")));
    Map push = fullPayload();
    at(push, "actionButtons.button2").remove("clickAction");
    const auto report = lint(push);
    EXPECT_THAT(report.failures, Contains("actionButtons.button2.clickAction: expected text, found nothing"));
    EXPECT_THAT(report.facts, IsEmpty());
    // What is not even shown is told beside what cannot be read.
    EXPECT_THAT(lint(Map{}).failures,
                AllOf(Contains(StartsWith("\"alert\" holds no text")), Contains(HasSubstr("pushId"))));
    EXPECT_THAT(lint(Map{{"content-available", true}}).failures, Not(Contains(HasSubstr("alert"))));
}

TEST(PushLint, UnknownFieldsAreNamedWhereverTheyAreAlsoInAPushThatFails) {
    Map push = fullPayload();
    push.set("colour", "red");
    at(push, "badge").set("Value", 3);
    at(push, "actionButtons").set("button3", Map());
    at(push, "imageCarouselSettings.slides[1]").set("caption", "b");
    at(push, "additionalData").set("anything", "goes");
    push.set("line\nbreak", 1);
    const auto named = [](const char* path) {
        return HasSubstr("\"" + std::string(path) + "\" is not a field that the SDK reads");
    };
    EXPECT_THAT(lint(push).warnings,
                ElementsAre(named("badge.Value"), named("actionButtons.button3"),
                            named("imageCarouselSettings.slides[1].caption"), named("colour"), named("line break")));
    push.remove("pushId");
    const auto failing = lint(push);
    EXPECT_THAT(failing.warnings, Contains(named("badge.Value")));
    EXPECT_THAT(failing.failures, Contains(HasSubstr("pushId")));
}

TEST(PushLint, WhatHasLessEffectThanItSeemsIsWarnedOf) {
    const struct {
        const char* place;
        const char* key;
        Value value; ///< null takes the member away
        const char* warning;
    } cases[] = {
        {"", "mutable-content", nullptr, "\"mutable-content\" is not 1"},
        {"", "urlImageString", "coat.jpg", "without an image"},
        {"badge", "type", "add", "not one of increase, set_to, do_not_set"},
        {"", "category", "orders", "is not that of the content extension"},
        {"", "ratingSettings", nullptr, "nothing to rate with"},
        {"ratingSettings", "scale", 0, "no icon is shown"},
        {"ratingSettings", "scale", 11, "no more than 10 icons"},
        {"", "template", "simple_image", "is drawn as the basic one"},
        {"", "trackingClickUrl", "http://", "a click is not tracked"},
        {"", "leadSourceId", nullptr, "carries \"123\""},
        {"", "url", nullptr, "no \"url\""},
        {"", "url", "http://", "\"url\" is no URL"},
        {"", "url", "foo bar", "\"url\" does not begin with a scheme"},
        {"", "url", "FILE:///etc/passwd", "\"url\" is a file"},
        {"actionButtons.button2", "id", "buy", "both buttons have the id"},
        {"actionButtons.button2", "id", "", "\"actionButtons.button2.id\" is empty"},
        {"actionButtons.button1", "label", "", "\"actionButtons.button1.label\" is empty"},
        {"actionButtons.button2", "url", "http://", "\"actionButtons.button2.url\" is no URL"},
        {"actionButtons.button2", "url", "later", "\"actionButtons.button2.url\" does not begin with a scheme"},
    };
    for (const auto& test : cases) {
        Map push = fullPayload();
        if (test.value.isNull()) {
            at(push, test.place).remove(test.key);
        } else {
            at(push, test.place).set(test.key, test.value);
        }
        const auto report = lint(push);
        EXPECT_THAT(report.failures, IsEmpty()) << test.key;
        EXPECT_THAT(report.warnings, ElementsAre(HasSubstr(test.warning))) << test.key;
    }
}

TEST(PushLint, EachTemplateAndWhatItsClickOpens) {
    for (const auto& [name, layout, chosen] :
         {std::tuple("simple_image_carousel", "carousel with 2 slides", "the slide"),
          std::tuple("small_image", "small image", "the element"),
          std::tuple("stylized_basic", "stylised basic", "the element"),
          std::tuple("basic_notification", "stylised basic", "the element"),
          std::tuple("text_overlay", "text over an image", ""), std::tuple("", "stylised basic", "")}) {
        Map push = fullPayload();
        push.set("template", name);
        const auto facts = lint(push).facts;
        EXPECT_THAT(facts, Contains(std::string("Template: ") + layout + ".")) << name;
        EXPECT_THAT(facts, Contains("A click opens " +
                                    (*chosen != '\0' ? std::string(chosen) + " that was tapped in the template, else "
                                                     : std::string()) +
                                    "https://shop.example/sale."))
            << name;
    }
}

TEST(PushLint, SlidesThatDoNotShowOrOpenAreWarnedOf) {
    Map push = fullPayload();
    push.set("template", "simple_image_carousel");
    at(push, "imageCarouselSettings.slides[0]").set("imageUrl", "ftp://media.shop.example/1.jpg");
    at(push, "imageCarouselSettings.slides[1]").set("url", "sale");
    EXPECT_THAT(lint(push).warnings,
                ElementsAre(AllOf(HasSubstr("slides[0].imageUrl"), HasSubstr("stays empty")),
                            AllOf(HasSubstr("slides[1].url"), HasSubstr("does not begin with a scheme"))));

    const Value slide = Map{{"imageUrl", "https://a.example/1.jpg"}, {"action", ""}, {"url", "https://a.example/"}};
    for (const std::size_t count : {20U, 21U}) {
        push.set("imageCarouselSettings", Map{{"slides", List(count, slide)}});
        const auto warning = Contains(HasSubstr("only the first 20 are shown"));
        EXPECT_THAT(lint(push).warnings, ::testing::Conditional(count > 20, warning, Not(warning)));
    }
}

TEST(PushLint, APushThatPushServicesCannotCarryFails) {
    const auto ofSize = [](std::size_t bytes) {
        Map push = fullPayload();
        at(push, "additionalData").set("padding", "");
        const std::size_t rest = json::write(Map{{"aps", push}}).value().size();
        at(push, "additionalData").set("padding", std::string(bytes - rest, '4'));
        return lint(push);
    };
    EXPECT_THAT(ofSize(3993).warnings, IsEmpty());
    EXPECT_THAT(ofSize(3994).warnings, ElementsAre(HasSubstr("encrypted for its receiver")));
    // What the desktop's own reader takes.
    EXPECT_THAT(ofSize(desktop::PushMessage::maximumBytes).failures, IsEmpty());
    const auto report = ofSize(desktop::PushMessage::maximumBytes + 1);
    EXPECT_THAT(report.failures, ElementsAre(HasSubstr("push services refuse more than 4096")));
    EXPECT_THAT(report.warnings, IsEmpty());
    EXPECT_THAT(report.facts, IsEmpty());

    Map deep = fullPayload();
    Value inner;
    for (int i = 0; i < 40; ++i) {
        inner = List{inner};
    }
    deep.set("deep", inner);
    EXPECT_THAT(lint(deep).failures, ElementsAre(StartsWith("no JSON object: ")));
}

TEST(PushLint, APushWithoutTextFailsUnlessItIsMeantToBeSilent) {
    const auto noText = HasSubstr("\"alert\" holds no text");
    for (const Value& alert :
         {Value(), Value(""), Value(Map()), Value(Map{{"title", 7}, {"body", ""}}), Value(List())}) {
        Map push = fullPayload();
        push.set("content-available", false);
        push.set("alert", alert);
        const auto report = lint(push);
        EXPECT_THAT(report.failures, ElementsAre(noText));
        EXPECT_THAT(report.facts, IsEmpty());
        push.set("content-available", true);
        EXPECT_THAT(lint(push).failures, IsEmpty());
        EXPECT_THAT(lint(push).facts, ElementsAre(StartsWith("Silent: ")));
    }
    for (const Value& alert : {Value("Sale"), Value(Map{{"subtitle", "Sale"}})}) {
        Map push = fullPayload();
        push.set("alert", alert);
        EXPECT_THAT(lint(push).failures, IsEmpty());
    }
}

} // namespace
} // namespace zentavo::tools
