#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "zentavo/inapp/FrequencyCapping.h"

namespace zentavo {

/// One campaign that the delivery service offers for an event.
struct WebContent {
    std::string javascript; ///< run in the page once it has loaded
    /// "full_screen", "gamified", "floating_bar"; "slide_in" and "inline" are never shown; others are centred.
    std::string templateType;
    std::string designMode; ///< "CODE_MODE" for hand-written pages, anything else for those of the editor
    std::int64_t storyId = 0;
    std::int64_t variantId = 0;
    std::int64_t destinationId = 0;
    std::int64_t zoneId = 0;
    std::optional<FrequencyCapping> frequencyCapping;
    std::optional<DestinationFrequencyCapping> destinationFrequencyCapping;
    std::optional<ZoneFrequencyCapping> zoneFrequencyCapping;

    bool isCodeMode() const noexcept { return designMode == "CODE_MODE"; }
    /// Whether this kind of template is ever shown for an answer.
    bool isPresentable() const noexcept { return templateType != "slide_in" && templateType != "inline"; }

    static WebContent decode(KeyedDecoder& decoder);
};

} // namespace zentavo
