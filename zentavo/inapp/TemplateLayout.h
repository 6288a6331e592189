#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "zentavo/inapp/BridgeMessage.h"
#include "zentavo/inapp/TemplateInfoResponse.h"
#include "zentavo/platform/Views.h"

namespace zentavo {

/// Where a message goes on the screen: arithmetic in points, which touches no view. Sizes and offsets come from pages and
/// services; whatever they say, a frame is made of finite numbers that a toolkit can hold.
namespace layout {

struct Screen {
    platform::Size size;
    platform::Insets safeArea;
};

/// No side is longer, and nothing lies further out.
inline constexpr std::int64_t furthest = 32767;

/// Whether messages of this type stand at an edge and leave the rest of the screen to the host.
bool isBar(std::string_view templateType) noexcept;
bool isFullHeight(std::string_view templateType) noexcept;

/// Before it is known where the page goes: as wide as the screen, as high where the type is, and far below. It lays
/// itself out there, and is neither seen nor in the way of a tap.
platform::Rect initialFrame(std::string_view templateType, const Screen& screen);

/// `offset` in points, or with the suffix "%" that part of `extent`, in whole points towards zero.
std::int64_t offsetInPoints(std::int64_t offset, std::string_view suffix, double extent) noexcept;

/// Where a page that asks for this size goes; `current` is where it is.
platform::Rect templateFrame(std::string_view templateType, const SizeMessage& message, platform::Rect current,
                             const Screen& screen);

/// Where a hand-written page goes. Sizes that are not said are the display area's; a page without a position is centred
/// in it. The display area is the screen, or with "safe_area" the part of it that the system does not use.
platform::Rect codeModeFrame(std::string_view templateType, const TemplateInfoResponse::TemplateData& info,
                             const Screen& screen);

platform::Rect centred(platform::Size size, const Screen& screen);

} // namespace layout
} // namespace zentavo
