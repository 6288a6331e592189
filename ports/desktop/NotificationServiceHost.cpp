#include "ports/desktop/NotificationServiceHost.h"

#include <set>
#include <utility>
#include <vector>

#include "ports/desktop/AppInterfaces.h"
#include "ports/desktop/Callers.h"
#include "ports/desktop/MessageBody.h"
#include "ports/desktop/NotificationCodec.h"
#include "ports/desktop/PushJournal.h"
#include "ports/desktop/RecentResponses.h"
#include "ports/desktop/UnifiedPushConnector.h"

namespace zentavo::desktop {

namespace {

/// What one call may ask for.
constexpr std::size_t maximumIdentifiers = 1'000;

} // namespace

/// What is not said to be otherwise belongs to the queue.
class NotificationServiceHost::State : public std::enable_shared_from_this<State> {
public:
    State(std::shared_ptr<platform::Platform> platform, SessionBus& bus, Settings settings,
          PushQueue::ExtensionFactory makeExtension, Handlers handlers)
        : platform_(std::move(platform)), bus_(bus), settings_(std::move(settings)), handlers_(std::move(handlers)),
          queue_(platform_->queues->make("zentavo.notification-service", platform::QueueKind::serial)),
          journal_(platform_->preferences->standard()), pushes_(platform_, queue_, std::move(makeExtension)) {}

    /// Any thread.
    void start() {
        connector_.emplace(
            bus_, *platform_,
            UnifiedPushConnector::Settings{settings_.names.notificationService, settings_.description, settings_.vapid},
            UnifiedPushConnector::Handlers{
                [this](const std::string& body) { receive(body); },
                [this](const std::string& text) { tellApp("TokenChanged", text); },
                [this](const std::string& reason) { tellApp("RegistrationFailed", reason); }});
        connector_->start();
        bus_.serve(service_interface::path, service_interface::xml,
                   Callers::only(bus_, {settings_.names.app, settings_.names.notificationContent},
                                 [self = shared_from_this()](const MethodCall& call) { self->answer(call); }));
        bus_.own(settings_.names.notificationService,
                 [self = shared_from_this()](bool ours) { self->nameChanged(ours); });
        post([](State& state) { state.touch(); });
    }

    /// Any thread.
    void end() {
        post([](State& state) { state.leave(); });
    }

private:
    void warn(const std::string& text) const {
        platform_->systemLog->write(platform::LogLevel::warning, "Pushes: " + text);
    }

    /// Any thread.
    void post(std::function<void(State&)> block) {
        queue_->async([self = shared_from_this(), block = std::move(block)] { block(*self); });
    }

    /// Any thread. The app asks at each start, so it is not started for this.
    void tellApp(const char* method, const std::string& text) {
        bus_.call({.destination = settings_.names.app,
                   .path = app_interface::path,
                   .interface = app_interface::name,
                   .method = method,
                   .parameters = Variant::share(g_variant_new("(s)", text.c_str())),
                   .mayStart = false});
    }

    /// On the bus's thread.
    void nameChanged(bool ours) {
        PushJournal::Left left;
        if (ours && !std::exchange(tookUp_, true)) {
            left = journal_.takeUp(std::exchange(early_, {}));
        }
        post([ours, left](State& state) { state.named(ours, left); });
    }

    void named(bool ours, const PushJournal::Left& left) {
        takeUp(left);
        if (ours) {
            if (!std::exchange(hadName_, true) && handlers_.alone) {
                queue_->after(settling, handlers_.alone);
            }
        } else if (!leaving_) {
            // Another process has it and does our work, or there is no bus.
            leaving_ = true;
            pushes_.finish([this] { handlers_.ended(hadName_); });
        }
    }

    /// On the bus's thread. The distributor is answered after this, and does not bring it again: it is safe by then.
    void receive(const std::string& body) {
        auto message = PushMessage::read(body);
        if (!message) {
            return warn("one says nothing that can be read: " + message.error().message);
        }
        const std::string identifier = platform_->random->uuidText();
        journal_.add(identifier, body);
        if (!tookUp_) {
            early_.insert(identifier);
        }
        post([message = *std::move(message), identifier](State& state) { state.show(message, identifier); });
    }

    void show(PushMessage message, const std::string& identifier) {
        touch();
        pushes_.add(std::move(message), identifier, [journal = journal_, identifier] { journal.remove(identifier); });
    }

    /// What a process before this one was killed over. Not before the name is ours: until then that one may be at work.
    void takeUp(const PushJournal::Left& left) {
        if (left.givenUp > 0) {
            warn(std::to_string(left.givenUp) + " could not be shown in several attempts, and are given up");
        }
        for (const PushJournal::Entry& each : left.entries) {
            if (auto message = PushMessage::read(each.body)) {
                show(*std::move(message), each.identifier);
            } else {
                journal_.remove(each.identifier);
            }
        }
    }

    /// On the bus's thread. Answers come from the notification centre, in its own time.
    void answer(const MethodCall& call) {
        post([](State& state) { state.touch(); });
        const std::string method = call.method();
        const auto centre = platform_->userInterface()->userNotifications;
        if (method == "Register") {
            connector_->request();
            call.answer();
            if (handlers_.appIsReady) {
                handlers_.appIsReady();
            }
        } else if (method == "Delivered") {
            centre->delivered([call](const std::vector<platform::Notification>& delivered) {
                std::vector<std::string> texts;
                for (const auto& each : delivered) {
                    if (auto text = codec::write(each)) {
                        texts.push_back(*std::move(text));
                    }
                }
                call.answer(body::of(texts));
            });
        } else if (method == "RemoveDelivered") {
            auto identifiers = body::texts(call.parameters());
            if (identifiers.size() > maximumIdentifiers) {
                return call.refuseArguments("more than there can be notifications");
            }
            centre->removeDelivered(std::move(identifiers));
            call.answer();
        } else {
            auto sent = codec::readResponse(body::text(call.parameters()));
            if (!sent) {
                return call.refuseArguments(sent.error().message);
            }
            if (recent_.add(sent->id)) {
                handlers_.respond(std::move(sent->response));
            }
            call.answer();
        }
    }

    void touch() {
        lastActivity_ = platform_->clock->steady();
        if (!watching_) {
            watch(quiet);
        }
    }

    void watch(std::chrono::nanoseconds delay) {
        watching_ = true;
        queue_->after(delay, [weak = weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->watching_ = false;
                self->look();
            }
        });
    }

    void look() {
        if (leaving_) {
            return;
        }
        const auto left = lastActivity_ + quiet - platform_->clock->steady();
        if (left.count() > 0) {
            return watch(left);
        }
        if (busy()) {
            return watch(quiet);
        }
        watching_ = true;
        platform_->userInterface()->userNotifications->delivered(
            [self = shared_from_this()](const std::vector<platform::Notification>& delivered) {
                // The delegate has heard by then of what the user did last.
                self->platform_->userInterface()->mainQueue->async(
                    [self, shows = !delivered.empty()] { self->post([shows](State& state) { state.looked(shows); }); });
            });
    }

    bool busy() const { return pushes_.busy() || (handlers_.busy && handlers_.busy()); }

    void looked(bool shows) {
        watching_ = false;
        // A call may have come meanwhile, or a click.
        if (shows || busy() || platform_->clock->steady() - lastActivity_ < quiet) {
            return watch(quiet);
        }
        leave();
    }

    void leave() {
        if (std::exchange(leaving_, true)) {
            return;
        }
        // What is sent to it from now on starts the next process; what came before is ours still.
        bus_.disown(settings_.names.notificationService, [self = shared_from_this()] {
            self->post([](State& state) {
                state.pushes_.finish([self = state.shared_from_this()] { self->handlers_.ended(self->hadName_); });
            });
        });
    }

    const std::shared_ptr<platform::Platform> platform_;
    SessionBus& bus_;
    const Settings settings_;
    const Handlers handlers_;
    const std::shared_ptr<platform::DispatchQueue> queue_;
    const PushJournal journal_;
    bool tookUp_ = false;                           ///< what was in the journal; the bus's thread
    RecentResponses recent_;                        ///< of the content extension; the bus's thread
    std::set<std::string> early_;                   ///< came before that, and is under way; the bus's thread
    std::optional<UnifiedPushConnector> connector_; ///< made once, before anybody calls
    PushQueue pushes_;
    std::chrono::nanoseconds lastActivity_{0};
    bool watching_ = false; ///< a timer is set, or the notification centre is asked
    bool hadName_ = false;
    bool leaving_ = false;
};

std::shared_ptr<NotificationServiceHost> NotificationServiceHost::make(std::shared_ptr<platform::Platform> platform,
                                                                       SessionBus& bus, Settings settings,
                                                                       PushQueue::ExtensionFactory makeExtension,
                                                                       Handlers handlers) {
    return std::shared_ptr<NotificationServiceHost>(new NotificationServiceHost(std::make_shared<State>(
        std::move(platform), bus, std::move(settings), std::move(makeExtension), std::move(handlers))));
}

NotificationServiceHost::NotificationServiceHost(std::shared_ptr<State> state) : state_(std::move(state)) {}

NotificationServiceHost::~NotificationServiceHost() = default;

void NotificationServiceHost::start() { state_->start(); }

void NotificationServiceHost::end() { state_->end(); }

} // namespace zentavo::desktop
