#pragma once

#include <atomic>
#include <optional>

#include "zentavo/foundation/Mutex.h"
#include "zentavo/tracking/BaseOperation.h"
#include "zentavo/tracking/EventBody.h"

namespace zentavo {

/// Sends events to the collection service, one request an event.
class CDPEventOperation : public BaseOperation {
public:
    using BaseOperation::BaseOperation;

    /// `portalId` chooses production or sandbox.
    void send(const EventBody& body, const Endpoints& endpoints, const std::string& portalId,
              HTTPClient::Completion completion) const;

private:
    URL eventURL(const std::string& base, const std::string& portalId, const std::string& propId) const;

    struct Formed {
        std::string base, portalId, propId;
        URL url;
    };
    /// About how long the last body was.
    mutable std::atomic<std::size_t> expectedBytes_{1024};
    mutable Mutex mutex_;
    /// The URL of the last event and what it was formed of. The next event has the same one, unless account or
    /// endpoints changed in between.
    mutable std::optional<Formed> last_ ZENTAVO_GUARDED_BY(mutex_);
};

} // namespace zentavo
