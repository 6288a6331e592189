#include "ports/desktop/UnifiedPushConnector.h"

#include <map>
#include <optional>
#include <utility>

#include "ports/desktop/Callers.h"
#include "ports/desktop/ConnectorCall.h"
#include "ports/desktop/Distributors.h"
#include "ports/desktop/PushEndpoint.h"
#include "ports/desktop/PushRegistration.h"
#include "ports/desktop/RecentMessages.h"
#include "ports/desktop/WebPushDecryption.h"

namespace zentavo::desktop {

/// All of it belongs to the bus's thread, whose closures keep it alive.
class UnifiedPushConnector::State : public std::enable_shared_from_this<State> {
public:
    State(SessionBus& bus, const platform::Platform& platform, Settings settings, Handlers handlers)
        : bus_(bus), log_(platform.systemLog), random_(platform.random), settings_(std::move(settings)),
          handlers_(std::move(handlers)), distributors_(bus), store_(platform.preferences->standard()),
          recent_(platform.preferences->standard()) {}

    void start() {
        auto stored = store_.load();
        if (!stored) {
            warn(stored.error().message);
        } else if (*stored) {
            registration_ = *std::move(stored);
            follow(registration_->distributor);
            renew();
        }
    }

    void request() {
        asked_ = true;
        retried_ = false;
        renew();
    }

    void receive(const MethodCall& call) {
        const auto read = ConnectorCall::read(call);
        if (!read) {
            return call.refuseArguments(read.error().message);
        }
        if (!isOurs(*read)) {
            return notOurs(call, *read);
        }
        followed_.at(registration_->distributor)
            ->admit(call, [self = shared_from_this(), read = *read](const MethodCall& admitted) {
                self->receive(admitted, read);
            });
    }

private:
    void warn(const std::string& text) const { log_->write(platform::LogLevel::warning, "Pushes: " + text); }

    bool isOurs(const ConnectorCall& call) const { return registration_ && registration_->token == call.token; }

    /// From our distributor. It was ours when it came; what came before it may have ended that.
    void receive(const MethodCall& call, const ConnectorCall& read) {
        if (!isOurs(read)) {
            return notOurs(call, read);
        }
        Result<void> done;
        switch (read.method) {
        case ConnectorCall::Method::message:
            done = message(read);
            break;
        case ConnectorCall::Method::newEndpoint:
            done = newEndpoint(read);
            break;
        case ConnectorCall::Method::unregistered:
            unregistered();
            break;
        }
        if (!done) {
            return refuse(call, done.error().message);
        }
        ConnectorCall::answer(call);
    }

    void notOurs(const MethodCall& call, const ConnectorCall& read) const {
        if (read.method == ConnectorCall::Method::unregistered) {
            return ConnectorCall::answer(call); // so it is
        }
        refuse(call, "it is not for a registration of ours");
    }

    void refuse(const MethodCall& call, const std::string& why) const {
        warn(call.method() + " from " + call.sender() + " is refused: " + why);
        call.refuseArguments(why);
    }

    /// The app is told once, by whatever comes first.
    void tellEndpoint() {
        asked_ = registration_->endpoint.empty();
        if (!asked_) {
            failed_ = false;
            handlers_.tokenChanged(registration_->senderText());
        }
    }

    void fail(const std::string& why) {
        warn(why);
        if (std::exchange(asked_, false)) {
            failed_ = true;
            handlers_.registrationFailed(why);
        }
    }

    /// Also where there is a registration: distributors forget, and are exchanged.
    void renew() {
        if (std::exchange(registering_, true)) {
            return;
        }
        distributors_.list([self = shared_from_this()](const std::vector<std::string>& names) {
            self->registerWith(
                Distributors::choose(names, self->store_.chosenDistributor(), self->store_.lastDistributor()), names);
        });
    }

    void registerWith(const std::string& distributor, const std::vector<std::string>& names) {
        const bool moves = registration_ && registration_->distributor != distributor;
        if (distributor.empty() || (moves && !asked_ && distributor != store_.chosenDistributor())) {
            // It may come back. Unless the app waits, we leave it for none but the host's own choice.
            registering_ = false;
            if (registration_) {
                away_ = true;
            }
            return fail("there is no distributor of pushes");
        }
        if (moves) {
            leave(names);
        }
        if (!registration_) {
            registration_ = PushRegistration::make(distributor, *random_);
            // Before the distributor knows it: its answer may find the next process.
            store_.save(*registration_);
            follow(distributor);
        }
        forApp_ = asked_;
        if (asked_) {
            tellEndpoint(); // it need not wait for the distributor, which seldom says anything new
        }
        distributors_.add(distributor,
                          {settings_.service, registration_->token, settings_.description, settings_.vapid},
                          [self = shared_from_this(), token = registration_->token](const Result<int>& version) {
                              self->registered(token, version);
                          });
    }

    void registered(const std::string& token, const Result<int>& version) {
        registering_ = false;
        if (!registration_ || registration_->token != token) {
            return asked_ ? renew() : void(); // that one ended while we waited
        }
        if (!version) {
            // It has gone while it was asked: somebody else may be there.
            if (away_ && (asked_ || forApp_) && !std::exchange(retried_, true)) {
                asked_ = true;
                return renew();
            }
            fail(version.error().message);
            return retryOnce();
        }
        away_ = false;
        retried_ = false;
        if (registration_->version != *version) {
            // The endpoint that follows tells senders how to send to this one.
            registration_->version = *version;
            registration_->endpoint.clear();
            store_.save(*registration_);
        }
        if (asked_ || failed_) {
            tellEndpoint();
        }
    }

    /// A distributor without a network at the moment refuses what it takes a little later.
    void retryOnce() {
        if (std::exchange(retried_, true)) {
            return;
        }
        bus_.after(retryPause, [weak = weak_from_this()] {
            const auto self = weak.lock();
            if (self && self->registration_) {
                self->renew();
            }
        });
    }

    /// Gives the registration back, to make one elsewhere.
    void leave(const std::vector<std::string>& names) {
        for (const std::string& name : names) {
            if (name == registration_->distributor) {
                distributors_.remove(name, registration_->version, registration_->token);
            }
        }
        store_.drop();
        registration_.reset();
    }

    void follow(const std::string& distributor) {
        const auto [followed, isNew] = followed_.try_emplace(distributor);
        if (!isNew) {
            return; // the bus knows no end to it
        }
        followed->second = Callers::make(bus_, {distributor});
        bus_.watch(distributor, [self = shared_from_this(), distributor](bool present) {
            if (!self->registration_ || self->registration_->distributor != distributor) {
                return;
            }
            const bool wasAway = std::exchange(self->away_, !present);
            // While we register, it is our call that has started it.
            if (present && wasAway && !self->registering_) {
                self->renew();
            }
        });
    }

    Result<void> message(const ConnectorCall& call) {
        if (call.version != registration_->version) {
            return Error{"the registration is not of this version"};
        }
        if (call.message.empty() || call.message.size() > maximumMessageBytes) {
            return Error{"a message of " + std::to_string(call.message.size()) + " bytes"};
        }
        if (recent_.contains(call.id)) {
            return {};
        }
        Result<std::string> body = call.version == PushRegistration::plainVersion
                                       ? call.message
                                       : web_push::decrypt(registration_->keys, call.message);
        if (!body) {
            return body.error();
        }
        if (!body->empty()) {
            handlers_.message(*std::move(body));
        }
        recent_.add(call.id);
        return {};
    }

    Result<void> newEndpoint(const ConnectorCall& call) {
        // The answer to our registering, which says the version too, may come after this.
        if (call.version != registration_->version && !registering_) {
            return Error{"the registration is not of this version"};
        }
        auto endpoint = readPushEndpoint(call.endpoint);
        if (!endpoint) {
            fail(endpoint.error().message);
            return endpoint.error();
        }
        const bool changed = registration_->endpoint != *endpoint || registration_->version != call.version;
        if (changed) {
            registration_->endpoint = *std::move(endpoint);
            registration_->version = call.version;
            store_.save(*registration_);
        }
        if (changed || asked_) {
            tellEndpoint();
        }
        return {};
    }

    /// Asking for a new one at once might go round for ever: the next request does.
    void unregistered() {
        store_.drop();
        registration_.reset();
        asked_ = true; // whether or not the app waits for an answer, it must know
        fail("the distributor has ended the registration");
    }

    SessionBus& bus_;
    const std::shared_ptr<platform::SystemLog> log_;
    const std::shared_ptr<platform::Random> random_;
    const Settings settings_;
    const Handlers handlers_;
    Distributors distributors_;
    const PushRegistrationStore store_;
    RecentMessages recent_;
    std::optional<PushRegistration> registration_;
    std::map<std::string, std::shared_ptr<Callers>> followed_; ///< distributors, by their names
    bool asked_ = false;                                       ///< the app waits for an answer
    bool forApp_ = false;                                      ///< it has asked for the registration that is under way
    bool failed_ = false;      ///< the last that the app was told is that there are no pushes
    bool retried_ = false;     ///< a failure has been answered by another attempt
    bool registering_ = false; ///< a distributor has been asked and has not answered
    bool away_ = false;        ///< our distributor has left the bus since it last took the registration
};

UnifiedPushConnector::UnifiedPushConnector(SessionBus& bus, const platform::Platform& platform, Settings settings,
                                           Handlers handlers)
    : bus_(bus), state_(std::make_shared<State>(bus, platform, std::move(settings), std::move(handlers))) {}

UnifiedPushConnector::~UnifiedPushConnector() = default;

void UnifiedPushConnector::start() {
    bus_.run([state = state_] { state->start(); });
    bus_.serve(ConnectorCall::path, ConnectorCall::xml,
               [state = state_](const MethodCall& call) { state->receive(call); });
}

void UnifiedPushConnector::request() {
    bus_.run([state = state_] { state->request(); });
}

} // namespace zentavo::desktop
