// What Label.h, Image.h and ImageView.h promise, and swipes, with real fonts and real pixels.

#include "ports/gtk/PixbufImages.h"
#include "tests/gtk/GuiTest.h"
#include "tests/gtk/SamplePicture.h"

namespace zentavo::tests {
namespace {

using platform::Font;
using platform::Size;

class TextsAndPicturesTest : public GuiTest {
protected:
    std::shared_ptr<platform::Label> label(platform::Rect frame, const std::string& text, int lines = 1) {
        auto made = views().makeLabel();
        made->setFrame(frame);
        made->setFont(font);
        made->setLines(lines);
        made->setText(text);
        made->setTextColour({1, 1, 1, 1});
        made->setBackground(red);
        EXPECT_TRUE(views().showOverWindow(made));
        return made;
    }
    /// The columns from `first` to `last` in which there is something else than red.
    std::pair<int, int> inked(platform::Rect frame) {
        const Picture picture(window);
        int first = -1;
        int last = -1;
        for (int x = static_cast<int>(frame.x); x < frame.x + frame.width; ++x) {
            for (int y = static_cast<int>(frame.y); y < frame.y + frame.height; ++y) {
                if (picture.at(x, y).green > 60) {
                    first = first < 0 ? x : first;
                    last = x;
                }
            }
        }
        return {first, last};
    }
    const Font font{20};
};

TEST_F(TextsAndPicturesTest, LinesBeginWhereTheirLanguageBeginsThem) {
    present();
    const platform::Rect frame{50, 50, 300, 30};
    const auto shown = label(frame, "Sale");
    EXPECT_EQ(pixel(349, 51, redPixel), redPixel);
    EXPECT_LT(inked(frame).first, 60);
    EXPECT_LT(inked(frame).second, 150);
    shown->setText("מבצע");
    settle(window);
    EXPECT_GT(inked(frame).first, 250);
    EXPECT_GT(inked(frame).second, 340);
    shown->setAlignment(platform::TextAlignment::centre);
    settle(window);
    EXPECT_NEAR(inked(frame).first + inked(frame).second, 400, 6);
}

TEST_F(TextsAndPicturesTest, WhatIsMeasuredIsWhatIsShown) {
    present();
    const std::string text = "Twenty per cent off everything that is warm, and your size is still there";
    const double one = views().textSize("Ag", font, 300, 0).height;
    EXPECT_EQ(views().textSize("", font, 300, 2), Size());
    EXPECT_NEAR(views().textSize(text, font, 300, 2).height, 2 * one, 1);
    EXPECT_GT(views().textSize(text, font, 300, 0).height, 2 * one);
    EXPECT_NEAR(views().textSize("a\nb\r\nc", font, 300, 2).height, 2 * one, 1) << "lines of the text's own count";
    EXPECT_NEAR(views().textSize("a\nb", font, 300, 0).height, 2 * one, 1);
    EXPECT_GT(views().textSize("Sale", {20, platform::FontWeight::bold}, 300, 1).width,
              views().textSize("Sale", font, 300, 1).width);
    for (const char* strange : {"\xFF\xFE", "\x01\x02", "Donaudampfschifffahrtsgesellschaftskapitänsmütze", "😀"}) {
        const Size size = views().textSize(strange, font, 100, 3);
        EXPECT_LE(size.width, 100) << strange;
        EXPECT_GT(size.height, 0) << strange;
    }
    EXPECT_LE(views().textSize(text, font, -5, 2).width, 1);

    // A long word goes on in the next line; what has no place ends in an ellipsis inside the frame.
    const platform::Rect frame{50, 50, 120, 2 * one};
    label(frame, "Donaudampfschifffahrtsgesellschaftskapitänsmütze", 2);
    EXPECT_EQ(pixel(169, 51, redPixel), redPixel);
    const platform::Rect second{50, 50 + one, 120, one};
    EXPECT_LT(inked(second).first, 60);
    EXPECT_GT(inked(second).second, 140);
    EXPECT_EQ(pixel(60, static_cast<int>(50 + 2 * one + 4)), background) << "nothing below it";
}

TEST_F(TextsAndPicturesTest, PicturesKeepTheirProportions) {
    present();
    const auto picture =
        interface()->images->decode(SamplePicture::bars(400, 100, {0xff0000, 0x00ff00, 0x00ff00, 0xff0000}));
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(picture->size(), (Size{400, 100}));
    EXPECT_EQ(picture->resized({100, 25})->size(), (Size{100, 25}));
    EXPECT_LT(picture->resized({100, 25})->bytes() * 12, picture->bytes());
    const auto shown = views().makeImageView();
    shown->setFrame({100, 100, 200, 100});
    shown->setImage(picture);
    ASSERT_TRUE(views().showOverWindow(shown));
    // All of it: 200 x 50 in the middle.
    EXPECT_EQ(pixel(110, 150, redPixel), redPixel);
    EXPECT_EQ(pixel(200, 150), greenPixel);
    EXPECT_EQ(pixel(200, 120), background);
    EXPECT_EQ(pixel(200, 180), background);
    // What fills: 400 x 100, the outer bars cut off.
    shown->setContentMode(platform::ContentMode::aspectFill);
    EXPECT_EQ(pixel(110, 105, greenPixel), greenPixel);
    EXPECT_EQ(pixel(290, 195), greenPixel);
    EXPECT_EQ(pixel(99, 150), background);
    EXPECT_EQ(pixel(301, 150), background);
    shown->setImage(nullptr);
    EXPECT_EQ(pixel(200, 150, background), background);
}

TEST_F(TextsAndPicturesTest, HostileFilesAreNoPictures) {
    gtk::PixbufImages images;
    const std::string good = SamplePicture::landscape(64, 64, 0);
    ASSERT_NE(images.decode(good), nullptr);
    EXPECT_EQ(images.decode(""), nullptr);
    EXPECT_EQ(images.decode("<html>not found</html>"), nullptr);
    EXPECT_EQ(images.decode(std::string(100'000, '\0')), nullptr);
    EXPECT_EQ(images.decode(good.substr(0, 20)), nullptr);
    // A few bytes that ask for gigabytes.
    EXPECT_EQ(images.decode(SamplePicture::announced(30'000, 30'000)), nullptr);
    EXPECT_EQ(images.decode(SamplePicture::announced(0x7FFFFFFF, 0x7FFFFFFF)), nullptr);
    EXPECT_EQ(images.decode(SamplePicture::announced(0, 0)), nullptr);
}

TEST_F(TextsAndPicturesTest, SwipesAreNoTaps) {
    present();
    std::vector<std::string> seen;
    const auto page = view({50, 50, 300, 200}, green);
    page->setOnTap([&] { seen.emplace_back("tap"); });
    page->setOnSwipe(
        [&](platform::Swipe swipe) { seen.emplace_back(swipe == platform::Swipe::left ? "left" : "right"); });
    EXPECT_EQ(pixel(200, 150, greenPixel), greenPixel);
    const auto after = [&](double way) {
        const std::size_t before = seen.size();
        pointer.drag(window, 200, 150, way);
        until([&] { return seen.size() > before; });
    };
    after(-120);
    after(0);
    after(90);
    EXPECT_THAT(seen, ::testing::ElementsAre("left", "tap", "right"));
}

TEST_F(TextsAndPicturesTest, AViewIsToldThatItsWindowHasGone) {
    present();
    int told = 0;
    const auto first = view({0, 0, 10, 10}, red);
    const auto second = view({20, 0, 10, 10}, red);
    for (const auto& each : {first, second}) {
        each->setOnRemoved([&] { ++told; });
    }
    first->removeFromSuperview();
    EXPECT_EQ(told, 0) << "never inside the call";
    until([&] { return told == 1; });
    first->removeFromSuperview();
    closeWindow();
    until([&] { return told == 2; });
    EXPECT_EQ(told, 2);
}

TEST_F(TextsAndPicturesTest, TheWindowsChangesAreTold) {
    present();
    int told = 0;
    views().setOnChange([&] { ++told; });
    EXPECT_EQ(views().appearance(), platform::Appearance::light);
    gtk_window_set_default_size(window, 500, 300);
    until([&] { return views().mainScreenBounds().width == 500; });
    until([&] { return told > 0; });
    EXPECT_EQ(told, 1);
    g_object_set(gtk_settings_get_default(), "gtk-application-prefer-dark-theme", TRUE, nullptr);
    until([&] { return told > 1; });
    EXPECT_EQ(told, 2);
    g_object_set(gtk_settings_get_default(), "gtk-application-prefer-dark-theme", FALSE, nullptr);
    views().setOnChange(nullptr);
    settle(window);
    EXPECT_LE(told, 2);
}

} // namespace
} // namespace zentavo::tests
