// Each rich template in a real window. What colour or place says is checked; ZENTAVO_PICTURES names a folder where the
// pictures of all of them are left for eyes.

#include <cstdlib>

#include "examples/storefront/support/Screenshot.h"
#include "tests/gtk/GuiTest.h"
#include "tests/gtk/SamplePicture.h"
#include "tests/push/PushTemplateTest.h"
#include "zentavo/core/ZentavoState.h"
#include "zentavo/push/templates/CarouselController.h"

namespace zentavo::tests {
namespace {

using Base = PushTemplateBaseController;

/// A window that becomes as high as its content asks.
class Window final : public platform::NotificationExtensionContext {
public:
    explicit Window(GtkWindow* window) : window_(window) {}
    bool performNotificationDefaultAction() override { return ++performed > 0; }
    void setPreferredHeight(double points) override {
        gtk_window_set_default_size(window_, 360, static_cast<int>(points));
        height = points;
    }
    int performed = 0;
    double height = 0;

private:
    GtkWindow* const window_;
};

class PushTemplatesTest : public GuiTest {
protected:
    PushTemplatesTest() : context(std::make_shared<Window>(window)) {
        memory.session->setDefault({404, "no"});
        picture("wide.png", SamplePicture::landscape(1200, 600, 0));
        picture("evening.png", SamplePicture::landscape(1200, 600, 1));
        picture("night.png", SamplePicture::landscape(1200, 600, 2));
        picture("square.png", SamplePicture::landscape(600, 600, 1));
        picture("bars.png", SamplePicture::bars(800, 400, {0xff0000, 0x00ff00}));
        picture("star_selected.png", SamplePicture::star(96, 0xff9500, true));
        picture("empty.png", SamplePicture::star(96, 0xb0b0b8, false));
        gtk_window_set_default_size(window, 360, 480);
        gtk_window_present(window);
        settle(window);
    }
    ~PushTemplatesTest() override {
        if (sdk->state()->currentPush) {
            sdk->state()->currentPush->close();
        }
        dark(false);
    }
    /// As the function of that name, while what the SDK does off the main queue goes on too: choices are stored there.
    bool until(const std::function<bool()>& done) {
        return tests::until([&] {
            memory.queues->runUntilIdle();
            return done();
        });
    }
    void picture(const std::string& name, const std::string& file) {
        memory.session->on({}, [name, file](const platform::URLRequest& request) {
            return request.url.path().ends_with("/" + name) ? std::optional(zentavo::testing::ScriptedAnswer{200, file})
                                                            : std::nullopt;
        });
    }
    static std::string big(const std::string& name) {
        return R"("urlImageString": "https://media.example/)" + name + "\"";
    }
    static std::string twoButtons(const std::string& first, const std::string& second) {
        return SampleTemplate::buttons(SampleTemplate::button(first, "https://shop.example/1"),
                                       SampleTemplate::button(second, "https://shop.example/2"));
    }
    /// By the colour of the window's text, whatever theme the tests run with.
    void dark(bool on) {
        static GtkCssProvider* const style = gtk_css_provider_new();
        GdkDisplay* display = gdk_display_get_default();
        gtk_css_provider_load_from_data(style, "window { color: white; background: #242424; }", -1);
        gtk_style_context_remove_provider_for_display(display, GTK_STYLE_PROVIDER(style));
        if (on) {
            gtk_style_context_add_provider_for_display(display, GTK_STYLE_PROVIDER(style),
                                                       GTK_STYLE_PROVIDER_PRIORITY_USER);
        }
        g_object_set(gtk_settings_get_default(), "gtk-application-prefer-dark-theme", on, nullptr);
    }
    void arrive() {
        for (int i = 0; i < 3; ++i) {
            memory.queues->runUntilIdle();
            settle(window);
        }
        until([&] {
            // Again and again: an earlier size that the screen confirms late would win.
            gtk_window_set_default_size(window, 360, static_cast<int>(context->height));
            return gtk_widget_get_height(GTK_WIDGET(window)) == static_cast<int>(context->height);
        });
        settle(window);
    }
    std::shared_ptr<Base> show(const platform::Notification& push, const std::string& name) {
        auto shown = Base::handleNotification(context, push);
        EXPECT_NE(shown, nullptr);
        arrive();
        save(name);
        return shown;
    }
    void save(const std::string& name) {
        if (const char* folder = std::getenv("ZENTAVO_PICTURES")) {
            EXPECT_TRUE(storefront::saveScreenshot(window, std::string(folder) + "/push-" + name + ".png"));
        }
    }
    /// Where the middle of a view is in the window.
    static platform::Point middle(const std::vector<std::shared_ptr<platform::View>>& from) {
        platform::Point at;
        for (const auto& each : from) {
            at.x += each->frame().x;
            at.y += each->frame().y;
        }
        at.x += from.back()->frame().width / 2;
        at.y += from.back()->frame().height / 2;
        return at;
    }
    Pixel at(platform::Point point) { return pixel(static_cast<int>(point.x), static_cast<int>(point.y)); }

    const std::shared_ptr<Window> context;
    const std::string longTitle =
        "Twenty per cent off everything that is warm, from coats and scarves to boots and blankets";
    const std::string longBody =
        "Only until Sunday: coats, scarves and boots. Your size is still there, and what does not "
        "fit comes back for free within a hundred days. See you in the shop, or at home.";
    const std::string plain = "Only until Sunday. Your size is still there.";
};

TEST_F(PushTemplatesTest, StyleBasic) {
    auto push =
        SampleTemplate::push(big("bars.png") + "," + twoButtons("Shop now", "Remind me later"), longTitle, longBody);
    push.request.content.subtitle = "Zentavo outdoor";
    const auto shown = show(push, "basic-bars");
    EXPECT_EQ(pixel(10, 10), redPixel);
    EXPECT_EQ(pixel(170, 179), redPixel);
    EXPECT_EQ(pixel(190, 0), greenPixel);
    EXPECT_EQ(pixel(10, 181), (Pixel{255, 255, 255}));
    const auto button = middle({shown->stackView, shown->button1Label->view});
    EXPECT_LT(button.x, 180);
    click(button.x, shown->stackView->frame().y + 4);
    EXPECT_TRUE(eventually([&] { return context->performed == 1; }));
    const auto suite = memory.preferences->suite("group.com.example.host.zentavo");
    EXPECT_EQ(suite->string("p1_url_clicked"), "https://shop.example/1");

    push.request.content.userInfo =
        SampleTemplate::push(big("wide.png") + "," + twoButtons("Shop now", "Remind me later"))
            .request.content.userInfo;
    show(push, "basic");
    dark(true);
    arrive();
    save("basic-dark");
    EXPECT_LT(pixel(4, static_cast<int>(context->height) - 4).red, 60);
    dark(false);
    show(SampleTemplate::push(R"("backgroundColor": "#b3261e", )" + big("missing.png") + "," +
                                  twoButtons("Take me to the winter sale", "Not interested in this"),
                              longTitle, longBody),
         "basic-coloured-missing-image");
    EXPECT_EQ(pixel(4, 4), (Pixel{0xb3, 0x26, 0x1e})) << "no hole where the picture would be";
}

TEST_F(PushTemplatesTest, SmallImage) {
    const std::string left = R"("template": "small_image", "smallImageSettings": {"imageAlignment": "left"}, )";
    auto shown =
        show(SampleTemplate::push(left + big("square.png") + "," + twoButtons("Open", "Later"), longTitle, longBody),
             "small-left");
    EXPECT_EQ(shown->templateBigImage->view()->frame().x, 16);
    EXPECT_NE(pixel(60, 40), (Pixel{255, 255, 255}));
    EXPECT_EQ(pixel(17, 17), (Pixel{255, 255, 255})) << "rounded";
    shown =
        show(SampleTemplate::push(R"("template": "small_image", "smallImageSettings": {"imageAlignment": "right"}, )" +
                                      big("square.png"),
                                  "Your parcel is on its way", "It arrives tomorrow."),
             "small-right");
    EXPECT_EQ(shown->templateBigImage->view()->frame().x, 256);
    dark(true);
    shown = show(
        SampleTemplate::push(R"("template": "small_image", )" + big("square.png") + "," + twoButtons("افتح", "لاحقا"),
                             "تخفيضات الشتاء على كل ما هو دافئ من المعاطف إلى الأحذية",
                             "حتى يوم الأحد فقط: معاطف وأوشحة وأحذية. مقاسك ما زال متوفرا."),
        "small-arabic-dark");
    const auto isDark = [](Pixel colour) { return colour.red < 60 && colour.green < 60 && colour.blue < 60; };
    EXPECT_EQ(shown->templateBigImage->view()->frame().x, 16) << "where the lines end";
    EXPECT_FALSE(isDark(pixel(60, 40))) << "the picture";
    EXPECT_GT(middle({shown->stackView, shown->button1Label->view}).x, 180) << "the first button begins the row";
    EXPECT_LT(middle({shown->stackView, shown->button2Label->view}).x, 180);
    for (const int x : {4, 355}) {
        EXPECT_TRUE(isDark(pixel(x, 4))) << x;
        EXPECT_TRUE(isDark(pixel(x, static_cast<int>(context->height) - 4))) << x;
    }
    dark(false);
}

TEST_F(PushTemplatesTest, TextOverlay) {
    const auto shown = show(
        SampleTemplate::push(R"("template": "text_overlay", )" + big("wide.png") + "," + twoButtons("Book", "Later"),
                             longTitle, plain),
        "overlay");
    // The scrim darkens towards the bottom, and the upper part is as it was.
    EXPECT_EQ(pixel(10, 3), (Pixel{0x9f, 0xd3, 0xff}));
    EXPECT_LT(pixel(4, 176).green, 0x6f / 2);
    show(SampleTemplate::push(R"("template": "text_overlay", )" + big("missing.png"), longTitle, plain),
         "overlay-missing-image");
    EXPECT_EQ(pixel(4, 4), (Pixel{255, 255, 255}));
    EXPECT_GT(shown->viewHeight, 0);
}

TEST_F(PushTemplatesTest, Rating) {
    const std::string members = SampleTemplate::rating(5) + "," + twoButtons("Send", "Not now");
    auto shown = show(SampleTemplate::push(members, "How do you like your new boots?", plain), "rating");
    const auto star = [&](int number) {
        for (const auto& each : shown->view->subviews()) {
            if (each->frame().width == 40 && each->frame().height == 40 && --number == 0) {
                return each;
            }
        }
        return std::shared_ptr<platform::View>();
    };
    EXPECT_NE(at(middle({star(4)})), (Pixel{0xff, 0x95, 0x00}));
    const auto fourth = middle({star(4)});
    click(fourth.x, fourth.y);
    eventually([&] { return at(fourth) == Pixel{0xff, 0x95, 0x00}; });
    EXPECT_EQ(at(middle({star(1)})), (Pixel{0xff, 0x95, 0x00}));
    EXPECT_EQ(at(fourth), (Pixel{0xff, 0x95, 0x00}));
    EXPECT_EQ(at(middle({star(5)})), (Pixel{255, 255, 255}));
    save("rating-four");
    EXPECT_EQ(memory.preferences->suite("group.com.example.host.zentavo")->object("p1_rating"), Value(4));

    // Right to left the first icon stands on the right; icons that are missing are drawn.
    memory.session->on({}, zentavo::testing::ScriptedAnswer{404, "no"});
    sdk->state()->pushImages = nullptr;
    shown = show(SampleTemplate::push(members, "איך המגפיים החדשים שלך?", "ספרו לנו."), "rating-hebrew-missing-icons");
    EXPECT_GT(middle({star(1)}).x, middle({star(5)}).x);
}

TEST_F(PushTemplatesTest, Carousel) {
    const auto shown = std::dynamic_pointer_cast<CarouselController>(
        show(SampleTemplate::push(SampleTemplate::slides({"wide.png", "bars.png", "missing.png", "night.png"}) + "," +
                                      twoButtons("See all", "Later"),
                                  "Four places to be this weekend", plain),
             "carousel"));
    ASSERT_NE(shown, nullptr);
    const platform::Rect area = shown->contentView->frame();
    EXPECT_EQ(area, (platform::Rect{16, 16, 328, 164}));
    EXPECT_EQ(pixel(16, 16), (Pixel{255, 255, 255})) << "rounded";
    EXPECT_EQ(pixel(30, 30), (Pixel{0x9f, 0xd3, 0xff}));
    pointer.drag(window, 250, 100, -120);
    until([&] { return shown->currentItemIndex == 1; });
    EXPECT_EQ(pixel(30, 30, redPixel), redPixel);
    EXPECT_EQ(pixel(330, 100, greenPixel), greenPixel);
    save("carousel-second");
    click(100, 100);
    EXPECT_TRUE(eventually([&] { return context->performed == 1; }));
    EXPECT_EQ(memory.preferences->suite("group.com.example.host.zentavo")->string("p1_image_clicked"),
              "https://shop.example/bars.png");
    pointer.drag(window, 250, 100, -120);
    until([&] { return shown->currentItemIndex == 2; });
    const auto plainSurface = [&] { return std::abs(pixel(100, 100).red - 238) < 3; };
    until(plainSurface);
    EXPECT_TRUE(plainSurface()) << "where the picture is missing: " << pixel(100, 100);
    save("carousel-missing");

    // The same by keys: the focus goes on to the page that comes.
    press(GDK_KEY_Tab);
    EXPECT_TRUE(until([&] { return focus() == "zentavo.push.slide3"; })) << focus();
    press(GDK_KEY_Right);
    ASSERT_TRUE(until([&] { return focus() == "zentavo.push.slide4"; })) << focus();
    gtk_test_accessible_assert_role(gtk_window_get_focus(window), GTK_ACCESSIBLE_ROLE_BUTTON);
    gtk_test_accessible_assert_property(gtk_window_get_focus(window), GTK_ACCESSIBLE_PROPERTY_LABEL, "4/4");
    press(GDK_KEY_Return);
    EXPECT_TRUE(eventually([&] { return context->performed == 2; }));
    EXPECT_EQ(memory.preferences->suite("group.com.example.host.zentavo")->string("p1_image_clicked"),
              "https://shop.example/night.png");

    closeWindow();
    until([&] { return !shown->isShown(); });
    EXPECT_EQ(shown->timer, 0U);
}

TEST_F(PushTemplatesTest, LongWordsStayInside) {
    show(SampleTemplate::push(big("square.png") + R"(, "template": "small_image", )" +
                                  twoButtons("Donaudampfschifffahrtsgesellschaftskapitänsmütze anprobieren", "Nein"),
                              "Donaudampfschifffahrtsgesellschaftskapitänsmützenabzeichenverordnung",
                              "https://shop.example/a/very/long/address/without/any/blank/in/it?and=a&query=as-well"),
         "long-words");
    const Picture picture(window);
    for (int y = 0; y < picture.height(); ++y) {
        EXPECT_EQ(picture.at(355, y), (Pixel{255, 255, 255})) << "the margin is free, " << y;
    }
}

} // namespace
} // namespace zentavo::tests
