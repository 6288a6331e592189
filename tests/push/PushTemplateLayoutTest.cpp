#include "zentavo/push/templates/PushTemplateLayout.h"

#include <limits>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ports/memory/MemoryImage.h"
#include "zentavo/push/templates/ImageCache.h"
#include "zentavo/push/templates/RatingIcons.h"
#include "zentavo/push/templates/TemplatePalette.h"
#include "zentavo/push/templates/TextDirection.h"

// What a point is worth: frames said twice, as arithmetic and as numbers, so that a changed margin is seen here.

namespace zentavo::layout {

void PrintTo(const PushFrames& frames, std::ostream* out) { *out << "content of height " << frames.height; }

namespace {

using platform::Rect;
using platform::Size;

PushParts parts() {
    PushParts made;
    made.area = {360, 640};
    made.title = 42;
    made.subtitle = 18;
    made.body = 76;
    return made;
}

double bottom(const Rect& frame) { return frame.y + frame.height; }

TEST(PushTemplateLayoutTest, PicturesKeepTheirProportionsUpToExtremes) {
    struct Row {
        Size picture;
        Size area;
        double height;
    };
    for (const Row& row :
         {Row{{800, 400}, {360, 640}, 180}, Row{{400, 300}, {360, 640}, 270}, Row{{300, 300}, {360, 640}, 360},
          Row{{100, 9000}, {360, 640}, 360}, Row{{9000, 10}, {360, 640}, 120}, Row{{800, 400}, {720, 640}, 360},
          // A low window takes from the picture, and not all of it.
          Row{{300, 300}, {360, 400}, 228}, Row{{300, 300}, {360, 100}, 80}}) {
        PushParts given = parts();
        given.picture = row.picture;
        given.area = row.area;
        const PushFrames frames = pushColumn(given);
        EXPECT_EQ(frames.picture, (Rect{0, 0, row.area.width, row.height}))
            << row.picture.width << "x" << row.picture.height << " in " << row.area.width << "x" << row.area.height;
        EXPECT_EQ(frames.title.y, row.height + 12);
        EXPECT_EQ(frames.height, bottom(frames.body) + pushMargin);
    }
}

TEST(PushTemplateLayoutTest, WhatIsMissingTakesNoRoom) {
    PushParts given = parts();
    EXPECT_EQ(pushColumn(given).title, (Rect{16, 16, 328, 42}));
    EXPECT_EQ(pushColumn(given).picture, Rect());
    given.subtitle = 0;
    EXPECT_EQ(pushColumn(given).body.y, 16 + 42 + 4);
    given.title = 0;
    EXPECT_EQ(pushColumn(given).body.y, 16);
    given.body = 0;
    EXPECT_EQ(pushColumn(given).height, 16);
    given.picture = {2, 1};
    EXPECT_EQ(pushColumn(given).height, 180 + 16);
    // Without a picture all templates are one.
    given = parts();
    EXPECT_EQ(pushSmallImage(given, true).title, pushColumn(given).title);
    EXPECT_EQ(pushOverlay(given).body, pushColumn(given).body);
    EXPECT_EQ(pushCarousel(given, 0).height, pushColumn(given).height);
}

TEST(PushTemplateLayoutTest, ButtonsStandBesideEachOtherWhereTheirLabelsFit) {
    PushParts given = parts();
    given.buttons = 1;
    EXPECT_EQ(pushColumn(given).buttons, (Rect{16, 16 + 42 + 4 + 18 + 4 + 76 + 12, 328, 44}));
    EXPECT_EQ(pushColumn(given).button1, (Rect{0, 0, 328, 44}));
    given.buttons = 2;
    given.widestButton = 160;
    EXPECT_EQ(pushColumn(given).button1, (Rect{0, 0, 160, 44}));
    EXPECT_EQ(pushColumn(given).button2, (Rect{168, 0, 160, 44}));
    given.rightToLeft = true;
    EXPECT_EQ(pushColumn(given).button1, (Rect{168, 0, 160, 44}));
    given.widestButton = 161;
    EXPECT_EQ(pushColumn(given).button1, (Rect{0, 0, 328, 44}));
    EXPECT_EQ(pushColumn(given).button2, (Rect{0, 52, 328, 44}));
    EXPECT_EQ(pushColumn(given).height, bottom(pushColumn(given).buttons) + 16);
    EXPECT_EQ(pushColumn(given).buttons.height, 96);
}

TEST(PushTemplateLayoutTest, ASmallPictureStandsBesideTheTexts) {
    PushParts given = parts();
    given.picture = {400, 400};
    const PushFrames right = pushSmallImage(given, false);
    EXPECT_EQ(right.picture, (Rect{256, 16, 88, 88}));
    EXPECT_EQ(right.title, (Rect{16, 16, 228, 42}));
    const PushFrames left = pushSmallImage(given, true);
    EXPECT_EQ(left.picture.x, 16);
    EXPECT_EQ(left.title.x, 116);
    EXPECT_EQ(left.height, bottom(left.body) + 16);
    // Little text stands in the middle of the picture's height.
    given.subtitle = given.body = 0;
    EXPECT_EQ(pushSmallImage(given, true).title.y, 16 + 23);
    EXPECT_EQ(pushSmallImage(given, true).height, 120);
}

TEST(PushTemplateLayoutTest, TextsOverAPictureStayOnIt) {
    PushParts given = parts();
    given.picture = {800, 400};
    PushFrames frames = pushOverlay(given);
    EXPECT_EQ(frames.picture, (Rect{0, 0, 360, 180}));
    EXPECT_EQ(bottom(frames.body), 180 - 16);
    EXPECT_EQ(frames.height, 180);
    EXPECT_EQ(bottom(frames.scrim), 180);
    EXPECT_LE(frames.scrim.y, frames.title.y);
    // A picture too low for the texts becomes higher.
    given.body = 200;
    frames = pushOverlay(given);
    EXPECT_EQ(frames.title.y, 16);
    EXPECT_EQ(bottom(frames.body), frames.picture.height - 16);
    given.buttons = 1;
    EXPECT_EQ(pushOverlay(given).buttons.y, frames.picture.height + 12);
}

TEST(PushTemplateLayoutTest, ACarouselHasRoomForItsDots) {
    PushParts given = parts();
    given.picture = {16, 9};
    const PushFrames one = pushCarousel(given, 1);
    const PushFrames many = pushCarousel(given, 5);
    EXPECT_EQ(many.picture, one.picture);
    EXPECT_EQ(many.pages.y, bottom(many.picture));
    EXPECT_GE(many.title.y, bottom(many.pages));
    EXPECT_LT(one.title.y, many.title.y);
}

TEST(PushTemplateLayoutTest, IconsAndDotsStandInTheMiddleAndInReadingOrder) {
    EXPECT_THAT(ratingRow(328, 40, 0, false), ::testing::IsEmpty());
    for (const std::size_t count : {1U, 5U, 10U, 500U}) {
        const auto row = ratingRow(328, 40, count, false);
        const auto mirrored = ratingRow(328, 40, count, true);
        ASSERT_EQ(row.size(), std::min<std::size_t>(count, mostIcons));
        EXPECT_NEAR(row.front().x, 328 - row.back().x - row.back().width, 1);
        EXPECT_GE(row.front().x, 0);
        EXPECT_GE(row.front().width, 28) << "a finger must hit it";
        EXPECT_EQ(mirrored.front().x, row.back().x);
        const auto dots = pageDots(328, 20, count, false);
        ASSERT_EQ(dots.size(), std::min<std::size_t>(count, mostSlides));
        EXPECT_GE(dots.front().x, 0);
        EXPECT_NEAR(dots.front().x, 328 - dots.back().x - 7, 1);
        EXPECT_EQ(pageDots(328, 20, count, true).front().x, dots.back().x);
    }
}

TEST(PushTemplateLayoutTest, AWindowOfTheHeightAskedForTakesNothingFromThePicture) {
    PushParts given = parts();
    given.picture = {300, 200};
    for (std::size_t buttons = 0; buttons <= 2; ++buttons) {
        for (const double extra : {0.0, 66.0}) {
            given.buttons = buttons;
            given.extra = extra;
            const auto check = [&](auto arrange) {
                PushParts fitting = given;
                const PushFrames wanted = arrange(given);
                fitting.area.height = wanted.height;
                EXPECT_EQ(arrange(fitting).picture, wanted.picture) << buttons << " buttons, extra " << extra;
                fitting.area.height = wanted.height - 10;
                EXPECT_LE(arrange(fitting).height, fitting.area.height) << buttons << " buttons, extra " << extra;
            };
            check([](const PushParts& each) { return pushColumn(each); });
            check([](const PushParts& each) { return pushCarousel(each, 1); });
            check([](const PushParts& each) { return pushCarousel(each, 4); });
        }
    }
}

TEST(PushTemplateLayoutTest, StrangeNumbersGiveFiniteFrames) {
    constexpr double infinite = std::numeric_limits<double>::infinity();
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    for (const double strange : {-1.0, 0.0, 1e300, infinite, -infinite, none}) {
        PushParts given = parts();
        given.area = {strange, strange};
        given.picture = {strange, 1};
        given.title = given.extra = given.widestButton = strange;
        given.buttons = 2;
        for (const PushFrames& frames : {pushColumn(given), pushOverlay(given), pushSmallImage(given, false),
                                         pushSmallImage(given, true), pushCarousel(given, 3)}) {
            for (const Rect& each : {frames.picture, frames.title, frames.body, frames.extra, frames.buttons,
                                     frames.button1, frames.button2, frames.scrim, frames.pages}) {
                for (const double side : {each.x, each.y, each.width, each.height}) {
                    EXPECT_TRUE(std::isfinite(side) && side >= 0 && side < 200'000) << strange << " gave " << side;
                }
            }
            EXPECT_TRUE(std::isfinite(frames.height)) << strange;
        }
    }
}

TEST(TextDirectionTest, TheFirstLetterTells) {
    for (const char* text : {"سلام", "שלום world", "!؟ مرحبا", "123 שלום", "«کتاب»", "😀 سلام", "٣ مرحبا"}) {
        EXPECT_TRUE(isRightToLeft(text)) << text;
    }
    for (const char* text : {"", "Hello שלום", "123", "Über سلام", "中文", "…", "😀", "٣", "\xFF\xC3", "Ω"}) {
        EXPECT_FALSE(isRightToLeft(text)) << text;
    }
}

TEST(TemplatePaletteTest, TextCanBeReadOnWhateverTheSenderAsksFor) {
    EXPECT_EQ(parsedColour("#ff8000"), (platform::Colour{1, 128.0 / 255, 0, 1}));
    EXPECT_EQ(parsedColour("#F80"), (platform::Colour{1, 136.0 / 255, 0, 1}));
    for (const char* text : {"", "#", "ff8000", "#ff800", "#ff80000", "#gg0000", "red", "#12345\xC3"}) {
        EXPECT_FALSE(parsedColour(text)) << text;
    }
    for (const auto appearance : {platform::Appearance::light, platform::Appearance::dark}) {
        for (const char* background : {"", "nonsense", "#ffffff", "#000000", "#ff0000", "#00ff00", "#0000ff", "#777777",
                                       "#ffee00", "#808000", "#5a5a5a"}) {
            const auto palette = TemplatePalette::of(appearance, background);
            const double a = luminance(palette.card);
            const double b = luminance(palette.title);
            EXPECT_GE((std::max(a, b) + 0.05) / (std::min(a, b) + 0.05), 4.5) << background;
        }
        EXPECT_EQ(luminance(TemplatePalette::of(appearance).card) < 0.5, appearance == platform::Appearance::dark);
    }
}

TEST(RatingIconsTest, NamesAreFilesOnTheMediaHostAndAllElseIsAURL) {
    EXPECT_EQ(ratingIconURL("https://m.example", "StarBorder.Selected"),
              "https://m.example/icons/rating_icon/star_border_selected.png");
    EXPECT_EQ(ratingIconURL("https://m.example", "Favorite.Unselected"),
              "https://m.example/icons/rating_icon/favorite_unselected.png");
    for (const char* other : {"star.selected", "Heart.Selected", "https://i.example/a.png", ""}) {
        EXPECT_EQ(ratingIconURL("https://m.example", other), other);
    }
}

TEST(ImageCacheTest, IsBoundedInNumberAndBytes) {
    const auto picture = [](double width) {
        return std::make_shared<zentavo::testing::MemoryImage>(Size{width, 1}); // four bytes a point of width
    };
    ImageCache cache(3, 400);
    for (const char* name : {"a", "b", "c"}) {
        cache.put(name, picture(10));
    }
    EXPECT_NE(cache.find("a"), nullptr); // and so "b" is the oldest
    cache.put("d", picture(10));
    EXPECT_EQ(cache.find("b"), nullptr);
    EXPECT_NE(cache.find("a"), nullptr);
    EXPECT_EQ(cache.bytes(), 120U);
    cache.put("large", picture(90)); // 360 bytes: only one small one has room beside it
    EXPECT_EQ(cache.count(), 2U);
    EXPECT_EQ(cache.bytes(), 400U);
    cache.put("huge", picture(101));
    EXPECT_EQ(cache.find("huge"), nullptr);
    cache.put("large", picture(20));
    EXPECT_EQ(cache.bytes(), 120U);
}

} // namespace
} // namespace zentavo::layout
