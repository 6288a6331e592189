#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "ports/desktop/SessionBus.h"
#include "zentavo/foundation/Mutex.h"

namespace zentavo::tests {

/// A notification service whose screen and user are the test. It has its name once it is made. Any thread.
class FakeNotificationServer {
public:
    /// A notification as it was to be shown.
    struct Shown {
        std::uint32_t id = 0;
        std::uint32_t replaces = 0;
        std::string app;
        std::string icon;
        std::string summary;
        std::string body;
        std::vector<std::pair<std::string, std::string>> actions; ///< key and label
        std::map<std::string, std::string> hints;                 ///< values as the bus's library prints them
        std::int32_t timeout = 0;

        std::string keyOf(const std::string& label) const;
    };

    static inline const std::vector<std::string> everything{"actions", "body", "body-markup"};
    explicit FakeNotificationServer(const std::string& address, std::vector<std::string> capabilities = everything);

    /// Of what happened so far: what was to be shown, and what taken away.
    std::vector<Shown> shown() const;
    std::vector<std::uint32_t> closed() const;
    unsigned capabilityQueries() const;

    /// The user presses a button; the service then takes the notification away.
    void press(std::uint32_t id, const std::string& key);
    void close(std::uint32_t id, std::uint32_t reason);
    /// Any other signal of the service.
    void emit(const std::string& signal, desktop::Variant parameters);

    /// From now on nothing is shown, for this reason; none ends it.
    void refuse(std::optional<std::string> reason);
    /// Answers to Notify wait until `release`.
    void hold();
    void release();

private:
    void answer(const desktop::MethodCall& call);
    void notify(const desktop::MethodCall& call);

    const std::vector<std::string> capabilities_;
    mutable Mutex mutex_;
    std::vector<Shown> shown_ ZENTAVO_GUARDED_BY(mutex_);
    std::vector<std::uint32_t> closed_ ZENTAVO_GUARDED_BY(mutex_);
    unsigned queries_ ZENTAVO_GUARDED_BY(mutex_) = 0;
    std::optional<std::string> refusal_ ZENTAVO_GUARDED_BY(mutex_);
    bool holding_ ZENTAVO_GUARDED_BY(mutex_) = false;
    std::vector<std::pair<desktop::MethodCall, std::uint32_t>> held_ ZENTAVO_GUARDED_BY(mutex_);
    desktop::SessionBus bus_; ///< last: nothing is called any more once it is gone
};

} // namespace zentavo::tests
