#include "zentavo/inapp/CampaignChoice.h"

#include <utility>
#include <vector>

namespace zentavo {

void logCapped(const DebugLog& log, const DeliveryTrace::Capped& capped) {
    if (log.enabled()) {
        log.write(std::string("Frequency via ") + name(capped.level) + " setup " + std::to_string(capped.limit) +
                  ", cached " + std::to_string(capped.counter));
    }
}

std::optional<WebContent> chooseCampaign(DeliveryResponse response, const Frequency::Counters& counters,
                                         platform::Random& random, const DebugLog& log, DeliveryTrace* trace) {
    std::vector<std::size_t> candidates;
    for (std::size_t i = 0; i < response.webContents.size(); ++i) {
        const WebContent& content = response.webContents[i].second;
        auto capped = Frequency::check(counters, content);
        const bool typeDropped = !capped && !content.isPresentable();
        if (capped) {
            logCapped(log, *capped);
        }
        if (!capped && !typeDropped) {
            candidates.push_back(i);
        }
        if (trace != nullptr) {
            trace->campaigns.push_back({content.storyId, content.templateType, std::move(capped), typeDropped});
        }
    }
    if (candidates.empty()) {
        return std::nullopt;
    }
    const std::size_t chosen = candidates[random.below(candidates.size())];
    if (trace != nullptr) {
        trace->chosen = chosen;
    }
    return std::move(response.webContents[chosen].second);
}

} // namespace zentavo
