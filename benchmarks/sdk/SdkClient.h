#pragma once

#include <optional>
#include <string>

#include <zentavo/Zentavo.h>

#include "support/Job.h"

namespace bench {

/// The SDK as a host uses it: the shared instance on the linked port, its store where the environment says.
class SdkClient {
public:
    explicit SdkClient(const Job& job) : base_("http://127.0.0.1:" + std::to_string(job.port)) {}

    void start() {
        sdk_ = zentavo::Zentavo::shared();
        sdk_->setIsDelivery(false); // one request an event; in-app messages are another story
        sdk_->setEndpoints(zentavo::Endpoints::all(base_));
        sdk_->activate(zentavo::Configuration("4711", "555", "group.bench", "42"));
    }
    void prepare() { event_.emplace(makeEvent()); }
    void track() { sdk_->track(*event_); }
    void buildAndTrack() { sdk_->track(makeEvent()); }

    /// Ten properties, three of them an item's.
    static zentavo::CDPEvent makeEvent();

private:
    const std::string base_;
    std::shared_ptr<zentavo::Zentavo> sdk_;
    std::optional<zentavo::CDPEvent> event_;
};

} // namespace bench
