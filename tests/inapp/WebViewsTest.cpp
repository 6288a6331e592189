#include "tests/inapp/InAppTest.h"
#include "zentavo/inapp/BottomSheetView.h"
#include "zentavo/inapp/FullScreenViewController.h"
#include "zentavo/inapp/WebViewController.h"

namespace zentavo {
namespace {

using namespace std::chrono_literals;
using platform::Rect;

/// The sheet and the two plain web views, on a memory screen of 390 x 844.
class WebViewsTest : public InAppTest {
protected:
    WebViewsTest() { memory.attachViews(); }

    /// Views are for the main queue only.
    void onMainQueue(std::function<void()> work) {
        memory.platform()->userInterface()->mainQueue->async(std::move(work));
        settle();
    }
    std::shared_ptr<const platform::UserInterface> userInterface() { return memory.platform()->userInterface(); }
};

TEST_F(WebViewsTest, ASheetStandsAtTheLowerEdgeFollowsTheFingerAndGoesAway) {
    onMainQueue([&] {
        BottomSheetView sheet(*memory.views);
        EXPECT_EQ(BottomSheetView::defaultHeight, 300);
        EXPECT_EQ(BottomSheetView::dismissibleHeight, 200);
        EXPECT_EQ(sheet.maximumContainerHeight, 844 - 64);
        EXPECT_EQ(sheet.currentContainerHeight(), 300);
        EXPECT_FALSE(sheet.containerViewHeightConstraint() || sheet.containerViewBottomConstraint());
        EXPECT_FALSE(sheet.topViewController);

        ASSERT_TRUE(sheet.present());
        ASSERT_EQ(memory.views->shown().size(), 1U);
        EXPECT_EQ(sheet.containerView()->frame(), (Rect{0, 544, 390, 300}));
        EXPECT_EQ(sheet.containerViewHeightConstraint(), 300);
        EXPECT_EQ(sheet.containerViewBottomConstraint(), 0);
        EXPECT_EQ(sheet.titleLabel(), sheet.titleLabel());
        EXPECT_EQ(sheet.contentStackView()->subviews().size(), 1U) << "the notes come when they are asked for";
        const auto notes = sheet.notesLabel();
        EXPECT_EQ(sheet.contentStackView()->subviews().back(), notes);

        sheet.drag(2000);
        EXPECT_EQ(sheet.containerViewHeightConstraint(), 780) << "not beyond the maximum";
        EXPECT_EQ(sheet.currentContainerHeight(), 300) << "it has not settled";
        sheet.letGo(500, false);
        EXPECT_EQ(sheet.currentContainerHeight(), 780);
        EXPECT_EQ(sheet.containerView()->frame(), (Rect{0, 64, 390, 780}));
        sheet.letGo(700, true);
        EXPECT_EQ(sheet.containerViewHeightConstraint(), 300);
        sheet.drag(150);
        sheet.letGo(150, true);
        EXPECT_TRUE(memory.views->shown().empty());
        EXPECT_EQ(sheet.containerViewBottomConstraint(), 150) << "just out of the screen";

        sheet.topViewController = memory.views->makeView();
        EXPECT_TRUE(sheet.present());
        EXPECT_TRUE(memory.views->shown().empty());
        EXPECT_EQ(sheet.topViewController->subviews().size(), 1U);
        EXPECT_EQ(sheet.containerViewHeightConstraint(), 300);
    });
}

TEST_F(WebViewsTest, WhatIsAsLargeAsTheWindowStaysSo) {
    const auto queue = memory.platform()->userInterface()->mainQueue;
    std::unique_ptr<BottomSheetView> sheet;
    WebViewController part(userInterface());
    FullScreenViewController whole(userInterface());
    onMainQueue([&] {
        sheet = std::make_unique<BottomSheetView>(*memory.views);
        sheet->present();
        sheet->letGo(600, false);
        part.url = URL::parse("http://pages.example/1");
        part.present({10, 20, 300, 400});
        whole.present("");
        memory.views->setScreen({0, 0, 500, 600});
    });
    onMainQueue([&] {
        EXPECT_EQ(sheet->containerView()->frame(), (Rect{0, 64, 500, 536})) << "at its full height";
        EXPECT_EQ(part.popUpWebView->frame(), (Rect{10, 20, 300, 400}));
        EXPECT_EQ(whole.webView->frame(), (Rect{0, 0, 500, 600}));
        sheet->letGo(250, true);
        part.present(memory.views->mainScreenBounds());
        whole.dismiss();
        memory.views->setScreen({0, 0, 400, 300});
    });
    onMainQueue([&] {
        EXPECT_EQ(sheet->containerView()->frame(), (Rect{0, 64, 400, 236})) << "no more room than that";
        EXPECT_EQ(part.popUpWebView->frame(), (Rect{0, 0, 400, 300}));
        EXPECT_EQ(whole.webView->frame(), (Rect{0, 0, 500, 600})) << "it is gone";
        part.dismiss();
        sheet.reset();
        memory.views->setScreen({0, 0, 390, 844});
    });
}

TEST_F(WebViewsTest, AWebPageLiesInItsFrameOrOverTheWholeWindow) {
    onMainQueue([&] {
        WebViewController part(userInterface());
        EXPECT_EQ(WebViewController::modalPresentationStyle, 6);
        EXPECT_FALSE(part.present({0, 0, 10, 10})) << "no URL";
        part.url = URL::parse("http://pages.example/1");
        ASSERT_TRUE(part.present({10, 20, 300, 400}));
        const auto page = memory.webViews->last();
        EXPECT_EQ(page->url()->text(), "http://pages.example/1");
        EXPECT_EQ(page->limit(), 60s);
        EXPECT_EQ(page->frame(), (Rect{10, 20, 300, 400}));
        part.dismiss();

        FullScreenViewController whole(userInterface());
        ASSERT_TRUE(whole.present("<p>hi</p>"));
        EXPECT_EQ(memory.webViews->last()->html(), "<p>hi</p>");
        EXPECT_EQ(whole.webView->frame(), (Rect{0, 0, 390, 844}));
        EXPECT_EQ(memory.views->shown().size(), 1U);
        whole.dismiss();
        EXPECT_TRUE(memory.views->shown().empty());

        memory.views->setWindow(false);
        EXPECT_FALSE(part.present({0, 0, 10, 10}));
        EXPECT_FALSE(whole.present("<p>hi</p>"));
        EXPECT_FALSE(BottomSheetView(*memory.views).present());
    });
}

} // namespace
} // namespace zentavo
