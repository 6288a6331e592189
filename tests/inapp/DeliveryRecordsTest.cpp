#include "tests/inapp/InAppTest.h"
#include "zentavo/inapp/DeliveryResponse.h"
#include "zentavo/inapp/TemplateInfoResponse.h"
#include "zentavo/inapp/ViewInfoResponse.h"

namespace zentavo {
namespace {

using ::testing::HasSubstr;

class DeliveryRecordsTest : public InAppTest {};

TEST_F(DeliveryRecordsTest, ACampaignIsReadInFullAndCapsWriteBackWhatTheyRead) {
    const Map story{{"event", "impression"}, {"value", 2}, {"timeUnit", "daily"}, {"object", "person"}};
    const Map zone{{"value", 0}};
    const auto response = DeliveryResponse::decode(answer({campaign(
        9007199254740993,
        {{"frequencyCapping", story}, {"destinationFrequencyCapping", Map()}, {"zoneFrequencyCapping", zone}})}));
    ASSERT_TRUE(response) << response.error().message;
    const WebContent& content = response->webContents.at(0).second;
    EXPECT_EQ(content.javascript, "show(9007199254740993)");
    EXPECT_EQ(content.templateType, "full_screen");
    EXPECT_EQ(content.storyId, 9007199254740993);
    EXPECT_EQ(content.variantId, 9007199254741993);
    EXPECT_EQ(content.destinationId, 7);
    EXPECT_EQ(content.zoneId, 9);
    EXPECT_FALSE(content.isCodeMode());
    EXPECT_EQ(content.frequencyCapping->encode(), story);
    EXPECT_EQ(content.destinationFrequencyCapping->encode(), Map());
    EXPECT_EQ(content.zoneFrequencyCapping->encode(), zone);
    EXPECT_FALSE(DeliveryResponse::decode(answer({campaign(1)}))->webContents[0].second.frequencyCapping);
}

TEST_F(DeliveryRecordsTest, OneFaultyCampaignMakesTheAnswerUnreadable) {
    for (const char* field :
         {"javascript", "template", "designMode", "storyId", "variantId", "destinationId", "zoneId"}) {
        for (const Value& wrong : {Value(), Value(true), Value(Map()), Value(1.5), Value(List())}) {
            const auto response = DeliveryResponse::decode(answer({campaign(1), campaign(2, {{field, wrong}})}));
            ASSERT_FALSE(response) << field;
            EXPECT_THAT(response.error().message, HasSubstr(std::string("webContents.w1.") + field));
        }
    }
    EXPECT_FALSE(DeliveryResponse::decode(answer({campaign(1, {{"zoneFrequencyCapping", Map{{"value", "2"}}}})})));
    EXPECT_FALSE(DeliveryResponse::decode(answer({campaign(1, {{"frequencyCapping", List()}})})));
    for (const char* text :
         {"", "[]", "{}", R"({"webContents":null})", R"({"webContents":[]})", R"({"webContents":{"a":1}})"}) {
        EXPECT_FALSE(DeliveryResponse::decode(text)) << text;
    }
    EXPECT_TRUE(DeliveryResponse::decode(R"({"webContents":{},"more":1})")->webContents.empty());
}

TEST_F(DeliveryRecordsTest, TemplateInfoAcceptsAnythingAbsentAndANumericRightNever) {
    const auto info = TemplateInfoResponse::decode(
        R"({"data":{"options":{"positionSettings":{"top":12,"left":"12px","right":"10","positionSuffix":"%"},
            "floatingBarPosition":"top"},"codeModeSettings":{"width":320,"height":80,"widthSuffix":"px"}}})");
    ASSERT_TRUE(info) << info.error().message;
    const PositionSettings& position = *info->data->options->positionSettings;
    EXPECT_EQ(*position.top->asInt(), 12);
    EXPECT_EQ(*position.left->asString(), "12px");
    EXPECT_EQ(*position.right, "10");
    EXPECT_FALSE(position.bottom);
    EXPECT_EQ(info->data->codeModeSettings->width, 320);

    for (const char* text :
         {"{}", R"({"data":null})", R"({"data":{"options":{}}})", R"({"data":{"codeModeSettings":{}}})"}) {
        EXPECT_TRUE(TemplateInfoResponse::decode(text)) << text;
    }
    const std::map<std::string, std::string> faulty{{R"("right":10)", "data.options.positionSettings.right"},
                                                    {R"("top":true)", "expected an integer or text"},
                                                    {R"("bottom":1.5)", "expected an integer or text"},
                                                    {R"("left":[])", "expected an integer or text"},
                                                    {R"("positionSuffix":1)", "positionSuffix"}};
    for (const auto& [member, message] : faulty) {
        const auto refused =
            TemplateInfoResponse::decode(R"({"data":{"options":{"positionSettings":{)" + member + "}}}}");
        ASSERT_FALSE(refused) << member;
        EXPECT_THAT(refused.error().message, HasSubstr(message));
    }
    const Map flag{{"top", true}};
    KeyedDecoder decoder(flag);
    EXPECT_FALSE(IntOrString::decodeOptional(decoder, "top"));
    EXPECT_EQ(decoder.failure()->kind, DecodingFailure::Kind::typeMismatch);
}

TEST_F(DeliveryRecordsTest, ViewInfoNeedsItsContentAndItsTrackingURLs) {
    const auto info = ViewInfoResponse::decode(
        R"({"data":{"content":{"html":"<p>"},"trackingUrls":{"impression":"http://t.example/i"}}})");
    ASSERT_TRUE(info);
    EXPECT_EQ(info->data.content.html, "<p>");
    EXPECT_EQ(info->data.trackingUrls.impression, "http://t.example/i");
    EXPECT_FALSE(info->data.trackingUrls.viewable);
    for (const char* text :
         {"{}", R"({"data":{"content":{"html":"x"}}})", R"({"data":{"content":{},"trackingUrls":{}}})",
          R"({"data":{"content":{"html":1},"trackingUrls":{}}})"}) {
        EXPECT_FALSE(ViewInfoResponse::decode(text)) << text;
    }
}

} // namespace
} // namespace zentavo
