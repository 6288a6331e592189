#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>

#include "zentavo/core/Endpoints.h"
#include "zentavo/foundation/Mutex.h"
#include "zentavo/tracking/BaseOperation.h"
#include "zentavo/tracking/EventBody.h"

namespace zentavo {

/// Sends events to the collection service, one request an event.
class CDPEventOperation : public BaseOperation {
public:
    using BaseOperation::BaseOperation;

    /// The event's body as text.
    Result<std::shared_ptr<const std::string>> text(const EventBody& body) const;

    /// `portalId` chooses production or sandbox. `text` is the event's body, shared with whoever needs it again when the
    /// answer is there.
    void send(Result<std::shared_ptr<const std::string>> text, const Endpoints& endpoints, const std::string& portalId,
              const std::string& propId, HTTPClient::Completion completion) const;

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
