#pragma once

#include "tests/inbox/SampleInbox.h"
#include "tests/support/SdkTest.h"

namespace zentavo {

/// An activated SDK with customer "c1" and visitor "u1", and its inbox of destination 77 for the customer.
class InboxTest : public SdkTest {
protected:
    InboxTest() {
        start();
        sdk->setCustomerProperties("c1", {});
        sdk->setUid("u1");
        sdk->appInboxInit("77", "customer");
        inbox = Zentavo::appInbox();
    }
    ~InboxTest() override {
        Zentavo::setAppInbox(nullptr);
        AppInbox::setPageLimit(5);
    }

    /// Nobody holds the inbox any more.
    void loseInbox() {
        inbox.reset();
        Zentavo::setAppInbox(nullptr);
    }
    void answerWithText(const std::string& body, int status = 200) { memory.session->setDefault({status, body}); }
    void answerWithFailure() {
        memory.session->setDefault(testing::ScriptedAnswer::failure(platform::URLErrorKind::cannotConnect));
    }

    /// Each makes the call and lets everything happen; what its completion was given is kept below.
    void fetchPage(std::vector<std::string> only = {}, std::int64_t page = 1) {
        inbox->forceFetchInboxItem(std::move(only), page,
                                   [this](std::vector<InboxItem> found) { pages.push_back(std::move(found)); });
        settle();
    }
    void fetchCatalogs() {
        inbox->fetchAllCatalog([this](std::vector<Catalog> found) { catalogs.push_back(std::move(found)); });
        settle();
    }
    void countUnread() {
        inbox->countUnreadMessage([this](std::int64_t count) { counts.push_back(count); });
        settle();
    }
    void fetchMessage(const std::string& id) {
        inbox->getMessageById(id, [this](InboxItem item) { items.push_back(std::move(item)); });
        settle();
    }
    std::size_t completions() const { return pages.size() + catalogs.size() + counts.size() + items.size(); }

    std::vector<std::string> systemLogLines() const {
        std::vector<std::string> lines;
        for (const auto& entry : memory.systemLog->entries()) {
            lines.push_back(entry.message);
        }
        return lines;
    }

    std::shared_ptr<AppInbox> inbox;
    std::vector<std::vector<InboxItem>> pages;
    std::vector<std::vector<Catalog>> catalogs;
    std::vector<std::int64_t> counts;
    std::vector<InboxItem> items;
};

} // namespace zentavo
