#include "ports/desktop/ForwardingDelegate.h"

#include <algorithm>
#include <utility>

#include "ports/desktop/AppInterfaces.h"
#include "ports/desktop/DelegateDoor.h"
#include "ports/desktop/MessageBody.h"
#include "ports/desktop/NotificationCodec.h"

namespace zentavo::desktop {

ForwardingDelegate::ForwardingDelegate(std::shared_ptr<SessionBus> bus, std::string app,
                                       const platform::Platform& platform)
    : bus_(std::move(bus)), app_(std::move(app)), log_(platform.systemLog), clock_(platform.clock),
      random_(platform.random) {}

std::shared_ptr<ForwardingDelegate> ForwardingDelegate::make(std::shared_ptr<SessionBus> bus, std::string app,
                                                             const platform::Platform& platform) {
    const std::shared_ptr<ForwardingDelegate> made(new ForwardingDelegate(std::move(bus), std::move(app), platform));
    made->bus_->watch(made->app_, [weak = std::weak_ptr(made)](bool present) {
        const auto self = weak.lock();
        if (!self) {
            return;
        }
        MutexLock lock(self->mutex_);
        self->present_ = present;
        lock.unlock();
        if (present) {
            self->tellNow();
        }
    });
    return made;
}

SessionBus::Call ForwardingDelegate::call(const char* method, const std::string& text) const {
    return {app_, app_interface::path, app_interface::name, method, Variant::share(g_variant_new("(s)", text.c_str()))};
}

void ForwardingDelegate::userNotificationCenter(platform::UserNotifications&, const platform::Notification& willPresent,
                                                std::function<void(std::uint32_t)> withCompletionHandler) {
    const auto text = codec::write(willPresent);
    if (!text) {
        log_->write(platform::LogLevel::warning, "The app is not asked about a notification: " + text.error().message);
        bus_->run([completion = std::move(withCompletionHandler)] { completion(presentEverything); });
        return;
    }
    auto question = call("WillPresent", *text);
    question.answerType = "(u)";
    question.mayStart = false;
    question.timeout = presentationTimeout;
    bus_->call(std::move(question), [completion = std::move(withCompletionHandler)](const Result<Variant>& answer) {
        completion(answer ? body::number(*answer) & presentEverything : presentEverything);
    });
}

void ForwardingDelegate::userNotificationCenter(platform::UserNotifications&,
                                                const platform::NotificationResponse& didReceive,
                                                std::function<void()> withCompletionHandler) {
    // With an id, since an attempt that we no longer wait for may arrive all the same.
    auto text = codec::write(didReceive, random_->uuidText());
    if (text) {
        MutexLock lock(mutex_);
        const bool full = waiting_.size() == maximumWaiting;
        if (full) {
            // The first may be on its way, and is not to be told twice.
            waiting_.erase(waiting_.begin() + (telling_ ? 1 : 0));
        }
        waiting_.push_back(
            {std::move(*text), clock_->steady(), didReceive.actionIdentifier != platform::dismissActionIdentifier});
        lock.unlock();
        if (full) {
            log_->write(platform::LogLevel::warning, "Too many answers wait for the app: the oldest is dropped");
        }
        tellNext();
    } else {
        log_->write(platform::LogLevel::warning, "The app is not told of an answer: " + text.error().message);
    }
    bus_->run(std::move(withCompletionHandler));
}

void ForwardingDelegate::tellNow() {
    MutexLock lock(mutex_);
    failures_ = 0;
    lock.unlock();
    tellNext();
}

void ForwardingDelegate::tellNext() {
    dropOld();
    MutexLock lock(mutex_);
    if (telling_ || waiting_.empty()) {
        return;
    }
    telling_ = true;
    ++round_;
    const Waiting next = waiting_.front();
    lock.unlock();
    auto response = call("Respond", next.text);
    response.mayStart = next.mayStart;
    response.expected =
        SessionBus::Expected::refusedArguments; // by one of another version: it will not take it later either
    response.timeout = responseTimeout;
    bus_->call(std::move(response),
               [self = shared_from_this()](const Result<Variant>& outcome) { self->told(outcome); });
}

void ForwardingDelegate::told(const Result<Variant>& outcome) {
    MutexLock lock(mutex_);
    telling_ = false;
    const bool refused = outcome && outcome->get() == nullptr;
    if (outcome || !(present_ || waiting_.front().mayStart)) {
        waiting_.pop_front();
        failures_ = 0;
        lock.unlock();
        if (refused) {
            log_->write(platform::LogLevel::warning, "The app refuses an answer, which is dropped");
        }
        return tellNext();
    }
    const auto pause = std::min(firstPause * (1U << std::min(failures_, 16U)), lastPause);
    ++failures_;
    const bool first = failures_ == 1;
    const bool again = present_;
    const std::uint64_t round = ++round_;
    lock.unlock();
    if (first) {
        log_->write(platform::LogLevel::warning, "The app is not told of an answer yet: " + outcome.error().message);
    }
    // It has its name, but perhaps not yet what it answers with.
    if (again) {
        bus_->after(pause, [weak = weak_from_this(), round] {
            if (const auto self = weak.lock()) {
                self->tellAgain(round);
            }
        });
    }
}

void ForwardingDelegate::tellAgain(std::uint64_t round) {
    MutexLock lock(mutex_);
    const bool due = round == round_;
    lock.unlock();
    if (due) {
        tellNext();
    }
}

void ForwardingDelegate::dropOld() {
    const auto now = clock_->steady();
    MutexLock lock(mutex_);
    // The first may be on its way.
    const auto begin = waiting_.begin() + (telling_ ? 1 : 0);
    const auto young =
        std::find_if(begin, waiting_.end(), [&](const Waiting& each) { return now - each.since < maximumAge; });
    const auto count = young - begin;
    waiting_.erase(begin, young);
    lock.unlock();
    if (count > 0) {
        log_->write(platform::LogLevel::warning,
                    "The app could not be told of " + std::to_string(count) + " answers in time: they are dropped");
    }
}

std::size_t ForwardingDelegate::waiting() {
    dropOld();
    MutexLock lock(mutex_);
    return waiting_.size();
}

} // namespace zentavo::desktop
