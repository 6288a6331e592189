#pragma once

#include <optional>

#include "zentavo/core/DebugLog.h"
#include "zentavo/inapp/DeliveryResponse.h"
#include "zentavo/inapp/Frequency.h"
#include "zentavo/platform/Random.h"

namespace zentavo {

/// Says which limit holds a campaign back.
void logCapped(const DebugLog& log, const DeliveryTrace::Capped& capped);

/// Which campaign of an answer is shown: of those that no limit holds back and whose type is shown at all, one by chance,
/// each as likely. `counters` are loaded once for the whole answer. A `trace` is told what became of each.
std::optional<WebContent> chooseCampaign(DeliveryResponse response, const Frequency::Counters& counters,
                                         platform::Random& random, const DebugLog& log, DeliveryTrace* trace);

} // namespace zentavo
