// The pieces of code in the documents that are no whole program, each inside what it leaves out. They are compiled and
// never run; scripts/check-docs holds the documents against this folder.
#include <cassert>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

#include <ports/linux/LinuxPlatform.h>
#include <ports/memory/MemoryPlatform.h>
#include <zentavo/Zentavo.h>

using namespace zentavo;

namespace samples {

void show(const std::vector<InboxItem>& messages);
void show(const Map& push);
void show(const platform::NotificationContent& content);
void showBadge(std::int64_t unread);
void forget();

void devserver(const std::shared_ptr<Zentavo>& sdk) { sdk->setEndpoints(Endpoints::all("http://127.0.0.1:8787")); }

void events(const std::shared_ptr<Zentavo>& sdk) {
    CDPEvent event("purchase", {{{"sku", "A1"}, {"price", 9.5}}, {{"sku", "B2"}, {"price", 20}}}); // name and items
    event.setEventProperties({{"currency", "EUR"}});             // about what happened
    event.setUserPropperties({{"newsletter", true}});            // about the visitor
    event.setObjectProperties({{"order", Map{{"id", "4711"}}}}); // about what it happened to
    event.setScreenName("Checkout");
    sdk->track(event);

    sdk->trackScreen("Home", "Home page", "main"); // name, label and type, as the event "view_screenview"
}

void identity(const std::shared_ptr<Zentavo>& sdk) {
    sdk->setUid("visitor-7");                            // a visitor id of the app's own
    sdk->setCustomerProperties("c1", {{"name", "Ada"}}); // login: the id is stored, the rest kept in memory

    CDPEvent login("login");
    login.setCustomerProperties({{"customer_id", "c1"}, {"name", "Ada"}}); // these travel with this one event
    sdk->track(login);

    sdk->resetCustomer(); // logout: later events are the visitor's alone
    sdk->resetUid();      // the visitor is the device again
}

void attribution(const std::shared_ptr<Zentavo>& sdk) {
    if (const auto link = URL::parse("shop://product/4711?utm=autumn")) {
        sdk->handleDeeplinkURL(*link);
    }
}

void media(const std::shared_ptr<Zentavo>& sdk) {
    sdk->getMediaJson(CDPEvent("home_banner"), [](Map content) { show(content); }); // on the SDK's worker
}

void inAppTrace(const std::shared_ptr<Zentavo>& sdk) {
    sdk->setDeliveryTraceCallback([](const DeliveryTrace& trace) { std::puts(trace.text().c_str()); });
}

void inAppTest(testing::MemoryPlatform& system, const std::shared_ptr<Zentavo>& sdk,
               const std::string& answerWithOneCampaign) {
    system.attachViews();
    system.session->on({"POST", "", "/interaction/v2"}, {200, answerWithOneCampaign});
    sdk->track(CDPEvent("view_product"));
    system.queues->runUntilIdle();

    auto page = system.webViews->last();
    page->finishLoad();
    page->post("eventHandler", Map{{"type", "zentavo-cdp-webview-closed"}});
    system.queues->runUntilIdle();
    assert(!sdk->isShowingTemplate());
}

void inbox(const std::shared_ptr<Zentavo>& sdk) {
    sdk->setCustomerProperties("c1", {});
    sdk->appInboxInit("77", "customer"); // destination and audience; replaces an earlier inbox
    const auto inbox = Zentavo::appInbox();

    inbox->forceFetchInboxItem({}, 1, [](std::vector<InboxItem> page) { show(page); }); // all catalogs, first page
    inbox->countUnreadMessage([](std::int64_t unread) { showBadge(unread); });
    inbox->modifyMessageStatus({"m1", "m2"}, ModifyAction::read);
}

void pushArrives(const platform::NotificationContent& content) {
    ZentavoNotificationService service;
    // Returns when the image is there, or does not come.
    service.didReceive({"id", content}, [](platform::NotificationContent rewritten) { show(rewritten); });
    service.serviceExtensionTimeWillExpire(); // from another thread: hands back what there is
}

void pushPlatform() {
    const auto platform = linux_port::makeLinuxPlatform();
    Zentavo::setShared(std::make_shared<Zentavo>(platform)); // before anybody asks for the shared instance
}

void pushClick(const std::shared_ptr<platform::Platform>& platform) {
    auto delegate = std::make_shared<ZentavoUNUserNotificationCenter>();
    delegate->onNotificationPressed([](Map push) { show(push); }); // "title", "clickURL", "additionalData"
    delegate->setActionForDismiss([] { forget(); });
    platform->userInterface()->userNotifications->setDelegate(delegate); // held weakly: keep it
}

} // namespace samples
