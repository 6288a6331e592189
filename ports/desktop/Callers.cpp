#include "ports/desktop/Callers.h"

#include <algorithm>
#include <utility>

#include "ports/desktop/MessageBody.h"

namespace zentavo::desktop {

std::shared_ptr<Callers> Callers::make(SessionBus& bus, std::vector<std::string> names) {
    const std::shared_ptr<Callers> made(new Callers(bus, std::move(names)));
    for (const std::string& name : made->names_) {
        bus.watchOwner(name, [weak = std::weak_ptr(made)](const std::string& owner) {
            const auto self = weak.lock();
            if (self && !owner.empty()) {
                self->remember(owner);
            }
        });
    }
    return made;
}

SessionBus::MethodHandler Callers::only(SessionBus& bus, std::vector<std::string> names,
                                        SessionBus::MethodHandler handler) {
    return [callers = make(bus, std::move(names)), handler = std::move(handler)](const MethodCall& call) {
        callers->admit(call, handler);
    };
}

void Callers::admit(const MethodCall& call, const SessionBus::MethodHandler& handler) {
    const std::string sender = call.sender();
    const auto asked = waiting_.find(sender);
    if (asked != waiting_.end()) {
        if (asked->second.size() == maximumWaiting) {
            return refuse(call);
        }
        asked->second.push_back({call, handler});
    } else if (knows(sender)) {
        handler(call);
    } else {
        waiting_[sender].push_back({call, handler});
        auto candidates = names_;
        candidates.push_back(call.receiver()); // the first to be compared: ourselves
        askProcess(sender, [weak = weak_from_this(), sender, candidates](std::optional<std::uint32_t> process) {
            const auto self = weak.lock();
            if (self && process) {
                self->compare(sender, *process, candidates);
            } else if (self) {
                self->settle(sender, false); // it has left
            }
        });
    }
}

bool Callers::knows(const std::string& sender) const {
    return std::find(known_.begin(), known_.end(), sender) != known_.end();
}

void Callers::remember(const std::string& sender) {
    if (knows(sender)) {
        return;
    }
    known_.push_back(sender);
    if (known_.size() > maximumKnown) {
        known_.pop_front();
    }
}

void Callers::askProcess(const std::string& name, ProcessHandler answer) {
    bus_.call({.destination = "org.freedesktop.DBus",
               .path = "/org/freedesktop/DBus",
               .interface = "org.freedesktop.DBus",
               .method = "GetConnectionUnixProcessID",
               .parameters = Variant::share(g_variant_new("(s)", name.c_str())),
               .answerType = "(u)"},
              [answer = std::move(answer)](const Result<Variant>& process) {
                  answer(process ? std::optional(body::number(*process)) : std::nullopt);
              });
}

void Callers::compare(const std::string& sender, std::uint32_t process, std::vector<std::string> candidates) {
    if (candidates.empty()) {
        return settle(sender, false);
    }
    const std::string name = std::move(candidates.back());
    candidates.pop_back();
    askProcess(name, [weak = weak_from_this(), sender, process, candidates](std::optional<std::uint32_t> other) {
        const auto self = weak.lock();
        if (self && other == process) {
            self->settle(sender, true);
        } else if (self) {
            self->compare(sender, process, candidates);
        }
    });
}

void Callers::settle(const std::string& sender, bool known) {
    const auto waiting = waiting_.extract(sender);
    if (known) {
        remember(sender);
    }
    for (const Waiting& each : waiting.mapped()) {
        known ? each.handler(each.call) : refuse(each.call);
    }
}

void Callers::refuse(const MethodCall& call) {
    // Not in the system's log, which a stranger could fill.
    g_log("zentavo", G_LOG_LEVEL_DEBUG, "%s of %s is refused: its sender %s is none of those who may call it",
          call.method().c_str(), call.interface().c_str(), call.sender().c_str());
    call.deny("This is for programs that belong together");
}

} // namespace zentavo::desktop
