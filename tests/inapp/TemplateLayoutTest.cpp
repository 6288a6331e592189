#include "zentavo/inapp/TemplateLayout.h"

#include <limits>

#include <gtest/gtest.h>

#include "zentavo/inapp/BottomSheetView.h"

namespace zentavo {

namespace platform {
void PrintTo(const Rect& r, std::ostream* out) { *out << r.x << "," << r.y << " " << r.width << "x" << r.height; }
} // namespace platform

namespace {

using platform::Rect;

const layout::Screen phone{{390, 844.5}, {47, 0, 34, 5}};
constexpr std::int64_t huge = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t tiny = std::numeric_limits<std::int64_t>::min();

TEST(TemplateLayoutTest, PlacesTemplatesByTypeSizeAndOffset) {
    struct Case {
        const char* what;
        const char* type;
        SizeMessage message;
        Rect frame;
    };
    const std::vector<Case> cases{
        {"full height, as wide as asked, centred", "full_screen", {300, 100, 9, 9}, {45, 0, 300, 844.5}},
        {"gamified is as high", "gamified", {390, 1, 0, 0}, {0, 0, 390, 844.5}},
        {"any other type is centred", "popup", {301, 201, 50, 50}, {44, 321, 301, 201}},
        {"type names are exact", "Full_screen", {390, 844, 0, 0}, {0, 0, 390, 844}},
        {"a bar keeps its width", "floating_bar", {10, 80, 0, 16}, {0, 714.5, 390, 80}},
        {"at the top", "floating_bar", {10, 80, 16, 99, "px", "top"}, {0, 63, 390, 80}},
        {"any word but bottom is the top", "floating_bar", {10, 80, 1, 99, "px", "Bottom"}, {0, 48, 390, 80}},
        {"a part of the screen, in whole points", "floating_bar", {10, 80, 0, 10, "%"}, {0, 646.5, 390, 80}},
        {"towards zero", "floating_bar", {10, 80, -1, 0, "%", "top"}, {0, 39, 390, 80}},
        {"an unknown unit is points", "floating_bar", {10, 80, 10, 0, "em", "top"}, {0, 57, 390, 80}},
        {"slides in from the side", "slide_in", {200, 80, 0, 0}, {185, 730.5, 200, 80}},
        {"no size is below zero", "popup", {-5, tiny, 0, 0}, {195, 422, 0, 0}},
        {"nor beyond what toolkits hold", "floating_bar", {1, huge, 0, huge, "%", "top"}, {0, 47, 390, 32767}},
        {"nor is an offset", "floating_bar", {1, 80, huge, 0, "%", "top"}, {0, 47 + 32767, 390, 80}},
        {"nor is an offset", "floating_bar", {1, 80, tiny, 0, "px", "top"}, {0, 47 - 32767, 390, 80}},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(layout::templateFrame(each.type, each.message, layout::initialFrame(each.type, phone), phone),
                  each.frame)
            << each.what;
    }
}

TEST(TemplateLayoutTest, PlacesHandWrittenPages) {
    struct Case {
        const char* type;
        const char* info;
        Rect frame;
    };
    const std::vector<Case> cases{
        {"popup", R"({"codeModeSettings":{"width":200,"height":100}})", {95, 372, 200, 100}},
        {"popup",
         R"({"codeModeSettings":{"width":50,"widthSuffix":"%","height":25,"heightSuffix":"%"}})",
         {97, 316, 195, 211}},
        {"popup", "{}", {0, 0, 390, 844.5}},
        {"gamified", R"({"codeModeSettings":{"width":200,"height":100}})", {95, 0, 200, 844.5}},
        {"popup", R"({"codeModeSettings":{"displayArea":"safe_area"}})", {0, 47, 385, 763.5}},
        {"popup",
         R"({"codeModeSettings":{"width":200,"height":100},
            "options":{"positionSettings":{"top":10,"left":"5%"}}})",
         {19, 10, 200, 100}},
        {"popup",
         R"({"codeModeSettings":{"width":200,"height":100},
            "options":{"positionSettings":{"bottom":"10px","right":"20","positionSuffix":"%"}}})",
         {112, 734.5, 200, 100}},
        {"popup",
         R"({"codeModeSettings":{"width":200,"height":100},
            "options":{"positionSettings":{"top":"","left":"auto","right":""}}})",
         {95, 372, 200, 100}},
        {"floating_bar", R"({"codeModeSettings":{"height":100}})", {0, 744.5, 390, 100}},
        {"floating_bar",
         R"({"codeModeSettings":{"height":100},"options":{"floatingBarPosition":"top",
            "positionSettings":{"top":8,"bottom":99}}})",
         {0, 8, 390, 100}},
    };
    for (const Case& each : cases) {
        const auto info = TemplateInfoResponse::decode("{\"data\":" + std::string(each.info) + "}");
        ASSERT_TRUE(info) << each.info;
        EXPECT_EQ(layout::codeModeFrame(each.type, *info->data, phone), each.frame) << each.info;
    }
}

TEST(TemplateLayoutTest, ASheetSettlesAtOneOfTwoHeightsOrGoesAway) {
    EXPECT_EQ(BottomSheetView::settledHeight(199, false, 780), 0);
    EXPECT_EQ(BottomSheetView::settledHeight(250, false, 780), 300);
    EXPECT_EQ(BottomSheetView::settledHeight(500, true, 780), 300);
    EXPECT_EQ(BottomSheetView::settledHeight(500, false, 780), 780);
    EXPECT_EQ(BottomSheetView::settledHeight(780, true, 780), 780);
}

} // namespace
} // namespace zentavo
