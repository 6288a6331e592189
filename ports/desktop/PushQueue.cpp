#include "ports/desktop/PushQueue.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <utility>

#include "ports/desktop/PushRewriting.h"

namespace zentavo::desktop {

/// All of it belongs to the queue.
class PushQueue::State : public std::enable_shared_from_this<State> {
public:
    State(std::shared_ptr<platform::Platform> platform, std::shared_ptr<platform::DispatchQueue> queue,
          ExtensionFactory makeExtension)
        : platform_(std::move(platform)), queue_(std::move(queue)), makeExtension_(std::move(makeExtension)) {}

    void add(PushMessage message, std::string identifier, std::function<void()> settled) {
        if (identifier.empty()) {
            identifier = platform_->random->uuidText();
        }
        waiting_.push_back({{++lastNumber_, std::move(identifier), std::move(settled)}, std::move(message)});
        if (waiting_.size() > maximumWaiting) {
            warn("too many wait; the oldest is shown as it came");
            showFirst();
        }
        startNext();
    }

    bool busy() const { return !waiting_.empty() || !jobs_.empty() || adding_ > 0; }

    void finish(std::function<void()> done) {
        whenDone_ = std::move(done);
        while (!waiting_.empty()) {
            showFirst();
        }
        for (const auto& [number, job] : jobs_) {
            cancelTimers(*job);
            job->expiry = after(farewell, number, leave);
            job->rewriting.expire();
        }
        tellWhenDone();
    }

    platform::DispatchQueue& queue() const { return *queue_; }

    /// Timers and extensions find nobody any more.
    void end() {
        for (const auto& [number, job] : jobs_) {
            cancelTimers(*job);
            job->rewriting.leave();
        }
        jobs_.clear();
        waiting_.clear();
        whenDone_ = nullptr;
    }

private:
    struct Push {
        std::uint64_t number;
        std::string identifier;
        std::function<void()> settled;
    };
    struct Waiting {
        Push push;
        PushMessage message;
    };
    struct Job {
        Job(Push of, std::shared_ptr<platform::NotificationServiceExtension> extension,
            platform::NotificationContent content)
            : push(std::move(of)), rewriting(std::move(extension)), original(std::move(content)) {}

        const Push push;
        PushRewriting rewriting;
        platform::NotificationContent original;
        platform::TimerId patience = 0;
        platform::TimerId expiry = 0;
        bool shown = false;
        bool slow = false; ///< the next one need not wait for it
    };

    void warn(const std::string& text) const {
        platform_->systemLog->write(platform::LogLevel::warning, "Pushes: " + text);
    }

    platform::UserNotifications& centre() const { return *platform_->userInterface()->userNotifications; }

    void startNext() {
        const auto allSlow = [this] {
            return std::all_of(jobs_.begin(), jobs_.end(), [](const auto& each) { return each.second->slow; });
        };
        while (!waiting_.empty() && jobs_.size() < maximumAtOnce && allSlow()) {
            const PushMessage& message = waiting_.front().message;
            auto extension = message.alert && message.mutableContent ? makeExtension_() : nullptr;
            if (extension == nullptr) {
                showFirst();
            } else {
                start(std::move(extension));
            }
        }
    }

    void showFirst() {
        Waiting first = std::move(waiting_.front());
        waiting_.pop_front();
        if (first.message.alert) {
            return show(first.push, std::move(first.message.content));
        }
        if (first.message.content.badge) {
            lastBadge_ = std::max(lastBadge_, first.push.number);
            centre().setBadgeCount(*first.message.content.badge);
        }
        if (first.push.settled) {
            first.push.settled();
        }
    }

    void start(std::shared_ptr<platform::NotificationServiceExtension> extension) {
        Waiting& first = waiting_.front();
        const std::uint64_t number = first.push.number;
        const auto job =
            std::make_shared<Job>(std::move(first.push), std::move(extension), std::move(first.message.content));
        waiting_.pop_front();
        jobs_.emplace(number, job);
        job->patience = after(patience, number, [](State& state, Job& late, std::uint64_t) {
            late.slow = true;
            state.startNext();
        });
        job->expiry = after(expiry, number, [](State& state, Job& late, std::uint64_t id) {
            late.expiry = state.after(givingUp - expiry, id, leave);
            late.rewriting.expire();
        });
        const bool started = job->rewriting.start(
            {job->push.identifier, job->original}, queue_,
            [self = weak_from_this(), number](platform::NotificationContent content) {
                if (const auto alive = self.lock()) {
                    alive->rewritten(number, std::move(content));
                }
            },
            [self = weak_from_this(), number] {
                if (const auto alive = self.lock()) {
                    alive->done(number);
                }
            });
        if (!started) {
            warn("there is no thread for an extension");
            done(number);
        }
    }

    /// Runs `act` later, where the job is still there.
    platform::TimerId after(std::chrono::seconds delay, std::uint64_t number,
                            void (*act)(State& state, Job& job, std::uint64_t number)) {
        return queue_->after(delay, [self = weak_from_this(), number, act] {
            const auto alive = self.lock();
            const auto job = alive ? alive->find(number) : nullptr;
            if (job) {
                act(*alive, *job, number);
            }
        });
    }

    std::shared_ptr<Job> find(std::uint64_t number) const {
        const auto found = jobs_.find(number);
        return found != jobs_.end() ? found->second : nullptr;
    }

    void rewritten(std::uint64_t number, platform::NotificationContent content) {
        const auto job = find(number);
        if (job && !std::exchange(job->shown, true)) {
            show(job->push, std::move(content));
        }
    }

    static void leave(State& state, Job& job, std::uint64_t number) {
        state.warn("an extension does not come back, and is left to itself");
        job.rewriting.leave();
        state.done(number);
    }

    /// The extension has returned, or is waited for no longer.
    void done(std::uint64_t number) {
        const auto job = find(number);
        if (!job) {
            return;
        }
        cancelTimers(*job);
        if (!job->shown) {
            warn("an extension hands nothing back; the push is shown as it came");
            show(job->push, std::move(job->original));
        }
        jobs_.erase(number);
        startNext();
        tellWhenDone();
    }

    void cancelTimers(const Job& job) {
        queue_->cancel(job.patience);
        queue_->cancel(job.expiry);
    }

    void show(const Push& push, platform::NotificationContent content) {
        if (content.badge) {
            if (push.number < lastBadge_) {
                content.badge.reset();
            }
            lastBadge_ = std::max(lastBadge_, push.number);
        }
        ++adding_;
        centre().add(
            {push.identifier, std::move(content)},
            [self = weak_from_this(), queue = queue_, settled = push.settled](const std::optional<std::string>& error) {
                if (settled) {
                    settled();
                }
                queue->async([self, error] {
                    if (const auto alive = self.lock()) {
                        alive->added(error);
                    }
                });
            });
    }

    void added(const std::optional<std::string>& error) {
        if (error) {
            warn("one could not be shown: " + *error);
        }
        --adding_;
        tellWhenDone();
    }

    void tellWhenDone() {
        if (whenDone_ && !busy()) {
            std::exchange(whenDone_, nullptr)();
        }
    }

    const std::shared_ptr<platform::Platform> platform_;
    const std::shared_ptr<platform::DispatchQueue> queue_;
    const ExtensionFactory makeExtension_;
    std::deque<Waiting> waiting_;
    std::map<std::uint64_t, std::shared_ptr<Job>> jobs_;
    std::uint64_t lastNumber_ = 0;
    std::uint64_t lastBadge_ = 0; ///< the latest push that has set the number on the icon
    std::size_t adding_ = 0;      ///< handed to the notification centre, which has not answered
    std::function<void()> whenDone_;
};

PushQueue::PushQueue(std::shared_ptr<platform::Platform> platform, std::shared_ptr<platform::DispatchQueue> queue,
                     ExtensionFactory makeExtension)
    : state_(std::make_shared<State>(std::move(platform), std::move(queue), std::move(makeExtension))) {}

PushQueue::~PushQueue() {
    state_->queue().async([state = state_] { state->end(); });
}

void PushQueue::add(PushMessage message, std::string identifier, std::function<void()> settled) {
    state_->add(std::move(message), std::move(identifier), std::move(settled));
}

bool PushQueue::busy() const { return state_->busy(); }

void PushQueue::finish(std::function<void()> done) { state_->finish(std::move(done)); }

} // namespace zentavo::desktop
