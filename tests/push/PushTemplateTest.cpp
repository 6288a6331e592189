// The rich templates over a screen of memory: which one is shown, what a tap stores, what the net and the clock do.

#include "tests/push/PushTemplateTest.h"

#include "ports/memory/MemoryExtensionContext.h"
#include "ports/memory/MemoryImage.h"
#include "ports/memory/MemoryImageView.h"
#include "ports/memory/MemoryLabel.h"
#include "tests/support/SdkTest.h"
#include "zentavo/push/templates/CarouselController.h"
#include "zentavo/push/templates/ImageLoader.h"
#include "zentavo/push/templates/RatingController.h"
#include "zentavo/push/templates/SmallImageController.h"
#include "zentavo/push/templates/StyleBasicController.h"
#include "zentavo/push/templates/TextOverlayController.h"
#include "zentavo/push/templates/ZentavoUtiltiy.h"

namespace zentavo {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using testing::MemoryImage;
using testing::ScriptedAnswer;
using namespace std::chrono_literals;

class PushTemplateTest : public SdkTest {
protected:
    using Base = PushTemplateBaseController;

    PushTemplateTest() {
        memory.attachViews();
        memory.views->setScreen({0, 0, 360, 640});
        memory.session->on({"GET", "media.example", ""}, ScriptedAnswer{200, MemoryImage::file(800, 400)});
        memory.session->on({"GET", "media.example", "/missing"}, ScriptedAnswer{404, "<html>no</html>"});
        sdk->setDebug(true);
    }
    ~PushTemplateTest() override {
        if (sdk->state()->currentPush) {
            sdk->state()->currentPush->close();
        }
    }

    std::shared_ptr<Base> show(const std::string& members, const std::string& title = "Winter sale") {
        auto shown = Base::handleNotification(context, SampleTemplate::push(members, title));
        settle();
        return shown;
    }
    std::shared_ptr<testing::MemoryView> named(const std::string& name) {
        return memory.views->named("zentavo.push." + name);
    }
    void tap(const std::string& name) {
        ASSERT_NE(named(name), nullptr) << name;
        named(name)->tap();
        settle();
    }
    std::shared_ptr<platform::Preferences> suite() {
        return memory.preferences->suite("group.com.example.host.zentavo");
    }
    std::optional<Value> stored(const std::string& suffix) { return suite()->object("p1_" + suffix); }
    std::shared_ptr<testing::MemoryLabel> label(const std::shared_ptr<platform::Label>& of) {
        return std::dynamic_pointer_cast<testing::MemoryLabel>(of);
    }

    const std::shared_ptr<testing::MemoryExtensionContext> context =
        std::make_shared<testing::MemoryExtensionContext>();
    const std::string twoButtons = SampleTemplate::buttons(SampleTemplate::button("Buy", "https://shop.example/buy"),
                                                           SampleTemplate::button("Later", ""));
};

TEST_F(PushTemplateTest, TheNameChoosesTheTemplate) {
    EXPECT_NE(std::dynamic_pointer_cast<RatingController>(show(R"("template": "rating")")), nullptr);
    EXPECT_NE(std::dynamic_pointer_cast<CarouselController>(show(R"("template": "simple_image_carousel")")), nullptr);
    EXPECT_NE(std::dynamic_pointer_cast<SmallImageController>(show(R"("template": "small_image")")), nullptr);
    EXPECT_NE(std::dynamic_pointer_cast<TextOverlayController>(show(R"("template": "text_overlay")")), nullptr);
    for (const char* other : {R"("template": "stylized_basic")", R"("template": "basic_notification")",
                              R"("template": "x")", R"("template": null)", ""}) {
        EXPECT_NE(std::dynamic_pointer_cast<StyleBasicController>(show(other)), nullptr) << other;
    }
    EXPECT_EQ(memory.views->shown().size(), 1U) << "the later takes the place of the earlier";

    // What does not decode shows all the same, without what could be tapped.
    const auto broken =
        show(R"("template": "small_image", "urlImageString": "https://media.example/a", "url": 7, )" + twoButtons);
    ASSERT_NE(std::dynamic_pointer_cast<SmallImageController>(broken), nullptr);
    EXPECT_FALSE(broken->isContainActionButton);
    EXPECT_EQ(broken->templateBigImage->state(), ZentavoImageView::State::shown);

    auto without = SampleTemplate::push("");
    without.request.content.userInfo = Map{{"aps", "text"}};
    EXPECT_EQ(Base::handleNotification(context, without), nullptr);
    memory.views->setWindow(false);
    EXPECT_EQ(show(""), nullptr);
    memory.attachViews(false);
    EXPECT_EQ(show(""), nullptr);
    memory.attachViews();
}

TEST_F(PushTemplateTest, AButtonStoresItsURLAndOpensTheNotification) {
    for (const auto& [name, key] : {std::pair{"small_image", "url_clicked"},
                                    {"text_overlay", "url_clicked"},
                                    {"stylized_basic", "url_clicked"},
                                    {"rating", "url_clicked"},
                                    {"simple_image_carousel", "image_clicked"}}) {
        suite()->remove("p1_" + std::string(key));
        const int before = context->performed();
        const auto shown = show(R"("template": ")" + std::string(name) + "\"," + twoButtons);
        tap("button2"); // its URL is empty
        tap("title");
        EXPECT_FALSE(stored(key)) << name;
        EXPECT_EQ(context->performed(), before);
        tap("button1");
        EXPECT_EQ(stored(key), Value("https://shop.example/buy")) << name;
        EXPECT_EQ(context->performed(), before + 1);
        EXPECT_TRUE(shown->isShown()) << "what closes is the window's affair";
    }
    EXPECT_THAT(memory.application->opened(), IsEmpty());

    // What was tapped counts also where the window is closed before the disk has it.
    suite()->remove("p1_url_clicked");
    const int before = context->performed();
    const auto closed = show(R"("template": "small_image",)" + twoButtons);
    named("button1")->tap();
    EXPECT_FALSE(stored("url_clicked")) << "the user's thread does not wait for it";
    closed->close();
    settle();
    EXPECT_EQ(stored("url_clicked"), Value("https://shop.example/buy"));
    EXPECT_EQ(context->performed(), before + 1);

    // No way to open the app: the URL itself is opened. Text that is no URL is stored, and no more.
    context->able = false;
    show(SampleTemplate::buttons(SampleTemplate::button("Buy", "https://shop.example/b"),
                                 SampleTemplate::button("No", "http://")));
    tap("button1");
    tap("button2");
    EXPECT_EQ(memory.application->opened().size(), 1U);
    EXPECT_EQ(stored("url_clicked"), Value("http://"));
}

TEST_F(PushTemplateTest, ARatingIsStoredAtOnceAndShown) {
    const auto shown = std::dynamic_pointer_cast<RatingController>(show(SampleTemplate::rating(5) + "," + twoButtons));
    ASSERT_NE(shown, nullptr);
    EXPECT_EQ(named("rating4")->spokenName(), "4/5 Great");
    EXPECT_EQ(named("button1")->spokenName(), "Buy");
    EXPECT_FALSE(named("caption")->isVisible());
    tap("rating4");
    EXPECT_EQ(stored("rating"), Value(4));
    EXPECT_FALSE(stored("url_clicked"));
    EXPECT_EQ(context->performed(), 0);
    EXPECT_TRUE(named("caption")->isVisible());
    tap("rating2");
    EXPECT_EQ(shown->rating(), 2);
    tap("button1");
    EXPECT_EQ(stored("rating"), Value(2));
    EXPECT_EQ(stored("url_clicked"), Value("https://shop.example/buy"));
    // Ten icons, two addresses: each is asked for once, the known name at the media host.
    EXPECT_EQ(sent("/icons/rating_icon/star_selected.png").size(), 1U);
    EXPECT_EQ(sent("/empty.png").size(), 1U);

    EXPECT_EQ(std::dynamic_pointer_cast<RatingController>(show(SampleTemplate::rating(5)))->rating(), 2);
    show(SampleTemplate::rating(1'000'000));
    EXPECT_NE(named("rating10"), nullptr);
    EXPECT_EQ(named("rating11"), nullptr);
    EXPECT_THAT(logged(), Contains(HasSubstr("a scale of 1000000")));
    show(SampleTemplate::rating(-3));
    EXPECT_EQ(named("rating1"), nullptr);
}

TEST_F(PushTemplateTest, TheCarouselTurnsItsPagesWhileItIsSeen) {
    const auto shown = std::dynamic_pointer_cast<CarouselController>(show(SampleTemplate::slides({"a", "b", "c"})));
    ASSERT_NE(shown, nullptr);
    memory.queues->advance(2999ms);
    EXPECT_EQ(shown->currentItemIndex, 0U);
    memory.queues->advance(1ms);
    EXPECT_EQ(shown->currentItemIndex, 1U);
    EXPECT_EQ(shown->currentItemView, shown->itemViews[1]);
    EXPECT_TRUE(named("slide2")->isVisible());
    EXPECT_EQ(named("slide2")->spokenName(), "2/3");
    EXPECT_FALSE(named("slide1")->isVisible()) << "nobody reaches what is out of sight";
    memory.queues->advance(6s);
    EXPECT_EQ(shown->currentItemIndex, 0U);

    memory.queues->advance(2s);
    named("slide1")->swipe(platform::Swipe::right);
    settle();
    EXPECT_EQ(shown->currentItemIndex, 2U);
    memory.queues->advance(2s); // the user's turn begins the time anew
    EXPECT_EQ(shown->currentItemIndex, 2U);
    named("slide3")->swipe(platform::Swipe::left);
    settle();
    EXPECT_EQ(shown->currentItemIndex, 0U);
    EXPECT_EQ(named("slide1")->frame().x, 0);

    tap("slide1");
    EXPECT_EQ(stored("image_clicked"), Value("https://shop.example/a"));
    EXPECT_EQ(context->performed(), 1);

    EXPECT_EQ(memory.queues->timers(), 1U);
    memory.views->closeWindow();
    settle();
    EXPECT_EQ(memory.queues->timers(), 0U);
    EXPECT_FALSE(shown->isShown());
    EXPECT_EQ(sdk->state()->currentPush, nullptr);
}

TEST_F(PushTemplateTest, ACarouselFetchesWhatMayBeSeenSoon) {
    std::vector<std::string> names;
    for (int i = 1; i <= 25; ++i) {
        names.push_back("slide" + std::to_string(i));
    }
    const auto asked = [&] {
        std::vector<std::string> paths;
        for (const auto& request : memory.session->requests()) {
            paths.emplace_back(request->url.path());
        }
        memory.session->clear();
        return paths;
    };
    show(SampleTemplate::slides(names) + R"(, "urlImageString": "https://media.example/coat")");
    EXPECT_THAT(asked(), ElementsAre("/slide1", "/slide2", "/slide3", "/slide20"))
        << "the last that is shown comes before the first, and the push's own picture is not shown";
    EXPECT_THAT(logged(), Contains(HasSubstr("of 25 slides the first 20")));
    named("slide1")->swipe(platform::Swipe::right);
    settle();
    EXPECT_THAT(asked(), ElementsAre("/slide19"));
    memory.queues->advance(6s);
    EXPECT_THAT(asked(), ElementsAre("/slide4"));
    memory.queues->advance(60s);
    EXPECT_THAT(asked(), ::testing::SizeIs(14)) << "each once";
}

TEST_F(PushTemplateTest, ATimerDoesNotOutliveItsCarousel) {
    const auto first = show(SampleTemplate::slides({"a", "b"}));
    show(SampleTemplate::slides({"a"}));
    EXPECT_EQ(memory.queues->timers(), 0U) << "one slide turns to no other";
    show(SampleTemplate::slides({"a", "b"}))->close();
    EXPECT_EQ(memory.queues->timers(), 0U);
    show(SampleTemplate::slides({}) + R"(, "urlImageString": "https://media.example/coat")");
    EXPECT_EQ(named("slide1"), nullptr);
    EXPECT_TRUE(named("image")->isVisible()) << "the push's own picture stands for slides that are missing";
    // Hebrew turns its pages the other way round.
    const auto shown =
        std::dynamic_pointer_cast<CarouselController>(show(SampleTemplate::slides({"a", "b", "c"}), "מבצע"));
    named("slide1")->swipe(platform::Swipe::right);
    settle();
    EXPECT_EQ(shown->currentItemIndex, 1U);
}

TEST_F(PushTemplateTest, EndsWithItsInstance) {
    show(SampleTemplate::slides({"a", "b"}));
    restart();
    settle();
    EXPECT_THAT(memory.views->shown(), IsEmpty());
    EXPECT_EQ(memory.queues->timers(), 0U);
}

TEST_F(PushTemplateTest, PicturesComeWhenTheyComeAndMissingOnesLeaveNoHole) {
    memory.session->hold();
    const auto shown = show(R"("urlImageString": "https://media.example/coat")");
    EXPECT_EQ(named("image")->frame().height, 180) << "a guess until it is known";
    memory.session->answer(0, {200, MemoryImage::file(4000, 4000)});
    settle();
    EXPECT_EQ(named("image")->frame().height, 360);
    EXPECT_EQ(shown->templateBigImage->imageSize(), (platform::Size{1200, 1200})) << "reduced before it is kept";
    EXPECT_EQ(context->heights().back(), shown->viewHeight);
    const auto count = memory.session->count();
    EXPECT_EQ(show(R"("urlImageString": "https://media.example/coat")")->templateBigImage->state(),
              ZentavoImageView::State::shown);
    EXPECT_EQ(memory.session->count(), count) << "and is at hand the next time";
    memory.session->hold(false);

    for (const char* url :
         {"https://media.example/missing", "file:///etc/passwd", "http://", "nothing", "ftp://media.example/a"}) {
        const auto without = show(R"("urlImageString": ")" + std::string(url) + "\"");
        EXPECT_FALSE(named("image")->isVisible()) << url;
        EXPECT_EQ(label(without->titleLabel)->frame().y, 16) << url;
    }
    EXPECT_EQ(memory.session->count(), count + 1) << "only http is asked for";
    EXPECT_EQ(memory.session->requests().back()->maximumAnswerBytes, 10U << 20U);
}

TEST_F(PushTemplateTest, FollowsTheWindowAndTheAppearance) {
    const auto shown = show(twoButtons + R"(, "urlImageString": "https://media.example/coat")");
    const auto title = label(shown->titleLabel);
    EXPECT_EQ(named("button1")->frame().width, 160);
    EXPECT_LT(title->textColour().red, 0.5);
    memory.views->setAppearance(platform::Appearance::dark);
    memory.views->setScreen({0, 0, 720, 500});
    settle();
    EXPECT_GT(title->textColour().red, 0.5);
    EXPECT_LT(memory.views->named("zentavo.push")->background().red, 0.5);
    EXPECT_EQ(title->frame().width, 688);
    EXPECT_EQ(memory.views->named("zentavo.push")->frame().width, 720);
    EXPECT_EQ(title->lines(), 2);
    // The sender's own background decides what can be read on it.
    EXPECT_LT(label(show(R"("backgroundColor": "#ffee00")")->titleLabel)->textColour().red, 0.5);
}

TEST_F(PushTemplateTest, DownloadsCompleteInTheOrderOfArrival) {
    std::vector<std::vector<double>> lists;
    const auto completion = [&](const std::vector<ZentavoUtiltiy::Picture>& pictures) {
        EXPECT_TRUE(memory.queues->mainQueue()->isCurrent());
        std::vector<double> widths;
        for (const auto& each : pictures) {
            widths.push_back(each->size().width);
        }
        lists.push_back(widths);
    };
    ZentavoUtiltiy::downloadImagesAndProcess({}, completion);
    EXPECT_THAT(lists, IsEmpty()) << "never inside the call";
    settle();
    EXPECT_THAT(lists, ElementsAre(IsEmpty()));

    memory.session->hold();
    const auto before = memory.session->count();
    ZentavoUtiltiy::downloadImagesAndProcess(
        {"https://media.example/1", "https://media.example/2", "https://media.example/3", "https://media.example/4"},
        completion);
    memory.session->answer(before + 2, {200, MemoryImage::file(3, 1)});
    memory.session->answer(before + 1, {200, "no picture"});
    memory.session->answer(before + 3, ScriptedAnswer::failure(platform::URLErrorKind::timedOut));
    settle();
    EXPECT_EQ(lists.size(), 1U);
    memory.session->answer(before, {200, MemoryImage::file(1, 1)});
    settle();
    ASSERT_EQ(lists.size(), 2U);
    EXPECT_THAT(lists.back(), ElementsAre(3, 1));
    EXPECT_THAT(logged(), Contains("Invalid data or unable to create image from data."));
    EXPECT_THAT(logged(), Contains(::testing::StartsWith("Error downloading image: ")));

    std::vector<Fault> faults;
    setFaultPolicy(FaultPolicy::contain, [&](const Fault& fault) { faults.push_back(fault); });
    const auto asked = memory.session->count();
    ZentavoUtiltiy::downloadImagesAndProcess({"https://media.example/5", "http://"}, completion);
    settle();
    EXPECT_EQ(faults.size(), 1U);
    EXPECT_EQ(memory.session->count(), asked) << "a fault leaves nothing half done";

    const auto wide = std::make_shared<MemoryImage>(platform::Size{900, 300});
    EXPECT_EQ(ZentavoUtiltiy::resizeImageIfNeeded(wide, 300)->size(), (platform::Size{300, 100}));
    EXPECT_EQ(ZentavoUtiltiy::resizeImageIfNeeded(wide, 900), wide);
    EXPECT_EQ(ZentavoUtiltiy::heightForLabelView("four letters", {16}, 32, 2), 40);
}

} // namespace
} // namespace zentavo
