#pragma once

#include <memory>
#include <optional>
#include <string>

#include "zentavo/core/ZentavoState.h"
#include "zentavo/foundation/Result.h"
#include "zentavo/foundation/Value.h"

namespace zentavo {

struct CDPEvent;

/// The body that an event sends: the event itself, and what store, device and account say at the moment of sending.
/// One description of it (`describe`) feeds two sinks, JSON text for the wire and a map where one is read, so the two
/// cannot differ. Refers to the event: use it up before the event changes.
class EventBody {
public:
    /// `portalId` and `propsId` stand in where the event has none of its own, and must outlive the body.
    EventBody(const Zentavo::State& state, std::shared_ptr<const Account> account, const CDPEvent& event,
              const std::string& portalId, const std::string& propsId);

    /// An error names the entry that JSON cannot say. `expectedBytes` is a guess at the text's length.
    Result<std::string> text(std::size_t expectedBytes = 1024) const;
    Map map() const;

    const std::string& propId() const noexcept { return propId_; }

private:
    template <class Sink>
    void describe(Sink& sink) const;
    template <class Sink>
    void describeDims(Sink& sink) const;
    template <class Sink>
    void describeExtra(Sink& sink) const;
    const char* identifyType() const noexcept;

    const CDPEvent& event_;
    const std::shared_ptr<const Account> account_;
    const std::string& portalId_;
    const std::string& propId_;
    const std::shared_ptr<const StoredFacts> stored_;
    bool attributed_;
};

} // namespace zentavo
