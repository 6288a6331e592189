#pragma once

#include <optional>
#include <string_view>

#include "zentavo/platform/Views.h"

namespace zentavo {

/// The colours of a rich push: the user's appearance, or what goes with the background that the sender asks for.
struct TemplatePalette {
    platform::Colour card;
    platform::Colour title;
    platform::Colour text;
    /// Where a picture is to come.
    platform::Colour placeholder;
    platform::Colour button;
    platform::Colour buttonLabel;
    platform::Colour dot;
    platform::Colour currentDot;
    platform::Colour chosenStar;
    platform::Colour star;

    /// `background` as in the payload; one that is no colour counts as none.
    static TemplatePalette of(platform::Appearance appearance, std::string_view background = {});
};

/// "#rgb" or "#rrggbb", in any case.
std::optional<platform::Colour> parsedColour(std::string_view text) noexcept;
/// How bright an eye finds it, from 0 to 1.
double luminance(platform::Colour colour) noexcept;

} // namespace zentavo
