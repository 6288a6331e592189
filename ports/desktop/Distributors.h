#pragma once

#include <functional>
#include <string>
#include <vector>

#include "ports/desktop/SessionBus.h"
#include "zentavo/foundation/Result.h"

namespace zentavo::desktop {

/// The programs of this session that receive pushes for others (UnifiedPush calls them distributors). Members on any
/// thread; what they find is told on the bus's thread, once, unless the bus goes before.
class Distributors {
public:
    struct Request {
        std::string service; ///< our name on the bus, which the distributor will call
        std::string token;
        std::string description; ///< for the user
        std::string vapid;       ///< the public key by which the sender signs, or empty
    };

    /// `bus` outlives this object.
    explicit Distributors(SessionBus& bus) : bus_(bus) {}

    /// The names of those that run and those that can be started, sorted.
    void list(std::function<void(std::vector<std::string> names)> found);
    /// Registers with `distributor`, which is asked for the second version of the interface first. `done` is told which
    /// version it knows, or why it does not take the registration. Repeating a registration changes nothing.
    void add(const std::string& distributor, const Request& request, std::function<void(Result<int> version)> done);
    void remove(const std::string& distributor, int version, const std::string& token);

    /// `wanted` where it is among `names`, else `last`, else the first; empty where there are none.
    static std::string choose(const std::vector<std::string>& names, const std::string& wanted,
                              const std::string& last);
    /// What a distributor answers to a registration: "(ss)" in the first version, "(a{sv})" in the second. Which version
    /// that is, or why it refuses.
    static Result<int> firstOutcome(const Variant& answer);
    static Result<int> secondOutcome(const Variant& answer);

private:
    SessionBus& bus_;
};

} // namespace zentavo::desktop
