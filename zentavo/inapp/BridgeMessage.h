#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "zentavo/foundation/URL.h"
#include "zentavo/foundation/Value.h"

namespace zentavo {

/// The page knows how large it is.
struct SizeMessage {
    std::int64_t width = 0;  ///< points
    std::int64_t height = 0; ///< points
    std::int64_t top = 0;
    std::int64_t bottom = 0;
    std::string positionSuffix = "px"; ///< unit of `top` and `bottom`; "%" of the screen's height
    std::string floatingBarPosition = "bottom";
};

/// The page wants to be closed.
struct CloseMessage {};

/// The user clicked.
struct ClickMessage {
    /// Asks for an answer in JSON, which has the attribution that a pixel has not. None where the page names no URL.
    std::optional<URL> trackingURL;
    std::optional<std::string> route;
};

/// The page wants round corners.
struct CornerMessage {
    static constexpr std::int64_t usualRadius = 20; ///< points

    std::int64_t radius = usualRadius;
};

/// The page has an event to track.
struct TrackMessage {
    std::string name;
    Map userProps;
    Map customerProps;
    Map eventProps;
    std::vector<Map> items;
};

/// What pages say to the SDK, read once and strictly. None of it is trusted: a message that is no such message reads as
/// none and is ignored.
using BridgeMessage = std::variant<SizeMessage, CloseMessage, ClickMessage, CornerMessage, TrackMessage>;

/// The words of the visual editor's page.
std::optional<BridgeMessage> readTemplateMessage(const Map& body);
/// The words of hand-written pages.
std::optional<BridgeMessage> readCodeModeMessage(const Map& body);

} // namespace zentavo
