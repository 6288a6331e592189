#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/desktop/DesktopTest.h"

namespace zentavo::tests {

/// A notification centre, and the desktop's notification service that it shows on.
class NotificationCentreTest : public DesktopTest {
protected:
    NotificationCentreTest() { makeCenter({}); }

    void makeCenter(desktop::FreedesktopUserNotifications::Parts parts) {
        parts.bus = session;
        parts.mainQueue = memory.queues->mainQueue();
        parts.diskQueue = memory.queues->make("disk", platform::QueueKind::serial);
        parts.attachmentFiles = memory.attachmentFiles;
        parts.app = {"Shop", "com.example.shop"};
        center = desktop::FreedesktopUserNotifications::make(std::move(parts));
        delegate = std::make_shared<RecordingDelegate>();
        center->setDelegate(delegate);
    }

    std::optional<std::string> add(platform::NotificationRequest what) {
        return DesktopTest::add(*center, std::move(what));
    }
    std::vector<std::string> delivered() {
        Seen<std::vector<platform::Notification>> answers;
        center->delivered([&](auto notifications) { answers.add(std::move(notifications)); });
        EXPECT_TRUE(until([&] { return answers.count() == 1; }));
        std::vector<std::string> identifiers;
        const auto all = answers.all().at(0);
        for (const auto& notification : all) {
            identifiers.push_back(notification.request.identifier);
        }
        return identifiers;
    }
    std::uint32_t idOf(std::size_t position) { return server->shown().at(position).id; }
    /// What the service has said so far has arrived.
    void settleSignals() {
        // Its own connection keeps the order, and so does ours.
        EXPECT_TRUE(ask({"org.freedesktop.Notifications",
                         "/org/freedesktop/Notifications",
                         "org.freedesktop.Notifications",
                         "GetCapabilities",
                         {},
                         "(as)"}));
        settle();
    }
    platform::NotificationRequest withFile(const std::string& identifier, const std::string& path) {
        auto made = request(identifier);
        made.content.attachments = {{"image", path}};
        return made;
    }
    std::string file(const std::string& folder) {
        return memory.attachmentFiles->write(folder, "image.jpg", "picture").value();
    }

    std::optional<FakeNotificationServer> server{bus.address()};
    std::shared_ptr<desktop::FreedesktopUserNotifications> center;
    std::shared_ptr<RecordingDelegate> delegate;
};

} // namespace zentavo::tests
