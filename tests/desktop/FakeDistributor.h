#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "ports/desktop/SessionBus.h"
#include "tests/desktop/Awaited.h"

namespace zentavo::tests {

/// A distributor of pushes that does what the test says. It leaves the bus when it goes.
class FakeDistributor {
public:
    struct Asked {
        std::string method; ///< "Register" or "Unregister"
        int version = 0;
        std::string service;
        std::string token;
        std::string description;
        std::string vapid;
    };

    /// Owns "org.unifiedpush.Distributor.NAME" when this returns. `versions`: 1, 2, or 12 for both.
    FakeDistributor(const std::string& address, const std::string& name, int versions);

    /// What it has been asked and has answered, oldest first.
    Awaited<Asked> asked;
    /// From now on registrations fail for this reason.
    std::atomic<const char*> failure = nullptr;
    /// From now on it answers nothing.
    std::atomic<bool> silent = false;

    /// Each waits for the connector's answer: empty, or why it refuses.
    std::string message(int version, const std::string& service, const std::string& token, const std::string& body,
                        const std::string& id = "");
    std::string newEndpoint(int version, const std::string& service, const std::string& token,
                            const std::string& endpoint);
    std::string unregistered(int version, const std::string& service, const std::string& token);

private:
    void answer(const desktop::MethodCall& call);
    /// `dictionary` is the second version's argument, `tuple` the first's; both floating.
    std::string call(int version, const std::string& service, const char* method, GVariant* tuple,
                     GVariant* dictionary);

    std::vector<desktop::MethodCall> unanswered_; ///< of the bus's thread
    desktop::SessionBus bus_;
};

} // namespace zentavo::tests
