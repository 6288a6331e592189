#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ports/desktop/AppInterfaces.h"
#include "ports/desktop/FreedesktopUserNotifications.h"
#include "ports/desktop/NotificationCodec.h"
#include "ports/desktop/SessionBus.h"
#include "ports/memory/MemoryPlatform.h"
#include "tests/desktop/FakeNotificationServer.h"
#include "tests/desktop/PrivateBus.h"

namespace zentavo::tests {

/// What arrives on one thread and is read on another.
template <class T>
class Seen {
public:
    void add(T value) {
        MutexLock lock(mutex_);
        values_.push_back(std::move(value));
    }
    std::vector<T> all() const {
        MutexLock lock(mutex_);
        return values_;
    }
    std::size_t count() const { return all().size(); }

private:
    mutable Mutex mutex_;
    std::vector<T> values_ ZENTAVO_GUARDED_BY(mutex_);
};

/// Writes down what it is told, and answers what it is asked with `options`. Main queue, which is the test's thread.
class RecordingDelegate : public platform::UserNotificationDelegate {
public:
    void userNotificationCenter(platform::UserNotifications&, const platform::Notification& willPresent,
                                std::function<void(std::uint32_t)> withCompletionHandler) override {
        asked.push_back(willPresent.request.identifier);
        if (options) {
            withCompletionHandler(*options);
        } else {
            thinking.push_back(std::move(withCompletionHandler));
        }
    }
    void userNotificationCenter(platform::UserNotifications&, const platform::NotificationResponse& didReceive,
                                std::function<void()> withCompletionHandler) override {
        told.push_back(didReceive.notification.request.identifier + ": " + didReceive.actionIdentifier);
        withCompletionHandler();
    }

    /// None leaves the question open.
    std::optional<std::uint32_t> options = 7;
    std::vector<std::function<void(std::uint32_t)>> thinking;
    std::vector<std::string> asked;
    std::vector<std::string> told;
};

/// A message bus, a connection to it, and a main queue that this thread runs.
class DesktopTest : public ::testing::Test {
protected:
    /// Runs the main queue until `done` says so, for some seconds at most; true when it did.
    bool until(const std::function<bool()>& done) {
        for (int i = 0; i < 10'000; ++i) {
            memory.queues->runUntilIdle();
            if (done()) {
                return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return false;
    }
    /// Waits until everything that was asked for before has been asked on the bus, and what it answered at once told.
    void settle(desktop::SessionBus& on) {
        Seen<bool> answered;
        on.call({"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId", {}, "(s)"},
                [&](const auto&) { answered.add(true); });
        EXPECT_TRUE(until([&] { return answered.count() == 1; }));
        memory.queues->runUntilIdle();
    }
    void settle() { settle(*session); }

    /// Calls another program's object, and waits for what it says.
    Result<desktop::Variant> ask(desktop::SessionBus::Call call) {
        Seen<Result<desktop::Variant>> answers;
        desktop::SessionBus caller(bus.address());
        caller.call(std::move(call), [&](auto answer) { answers.add(std::move(answer)); });
        if (!until([&] { return answers.count() == 1; })) {
            return Error{"no answer in time"};
        }
        return answers.all().front();
    }

    /// Adds it, and waits for what comes of it: once, and never inside the call.
    std::optional<std::string> add(platform::UserNotifications& to, platform::NotificationRequest what) {
        Seen<std::optional<std::string>> outcomes;
        const auto caller = std::this_thread::get_id();
        bool inside = true; // the caller's thread alone looks at it
        to.add(std::move(what), [&](auto error) {
            EXPECT_FALSE(std::this_thread::get_id() == caller && inside);
            outcomes.add(std::move(error));
        });
        inside = false;
        EXPECT_TRUE(until([&] { return outcomes.count() > 0; }));
        settle();
        EXPECT_EQ(outcomes.count(), 1U);
        return outcomes.all().empty() ? "nothing came of it" : outcomes.all().front();
    }

    static platform::NotificationRequest request(const std::string& identifier, const std::string& title = "Title") {
        platform::NotificationRequest made{identifier, {}};
        made.content.title = title;
        made.content.sound = platform::NotificationContent::defaultSound;
        return made;
    }

    PrivateBus bus;
    testing::MemoryPlatform memory;
    std::shared_ptr<desktop::SessionBus> session = std::make_shared<desktop::SessionBus>(bus.address());
};

} // namespace zentavo::tests
