#include "zentavo/push/templates/TemplatePalette.h"

#include <cmath>
#include <cstdint>

namespace zentavo {

namespace {

using platform::Appearance;
using platform::Colour;

constexpr Colour rgb(std::uint32_t code, double alpha = 1) {
    return {static_cast<double>(code >> 16U & 0xFFU) / 255, static_cast<double>(code >> 8U & 0xFFU) / 255,
            static_cast<double>(code & 0xFFU) / 255, alpha};
}

/// A component as light, not as it is stored.
double linear(double component) {
    return component <= 0.04045 ? component / 12.92 : std::pow((component + 0.055) / 1.055, 2.4);
}

std::optional<std::uint32_t> hexDigit(char c) {
    if (c >= '0' && c <= '9') {
        return static_cast<std::uint32_t>(c - '0');
    }
    const char lower = static_cast<char>(c | 0x20);
    return lower >= 'a' && lower <= 'f' ? std::optional(static_cast<std::uint32_t>(lower - 'a' + 10)) : std::nullopt;
}

} // namespace

TemplatePalette TemplatePalette::of(Appearance appearance, std::string_view background) {
    const auto asked = parsedColour(background);
    if (asked) {
        // White and black text have the same contrast on what lies here.
        constexpr double middle = 0.179;
        appearance = luminance(*asked) > middle ? Appearance::light : Appearance::dark;
    }
    if (appearance == Appearance::dark) {
        return {.card = asked.value_or(rgb(0x1c1c1e)),
                .title = rgb(0xffffff),
                .text = rgb(0xffffff, asked ? 0.9 : 0.78),
                .placeholder = rgb(0xffffff, 0.10),
                .button = rgb(0xffffff, 0.14),
                .buttonLabel = rgb(0xffffff),
                .dot = rgb(0xffffff, 0.30),
                .currentDot = rgb(0xffffff),
                .chosenStar = rgb(0xffc43d),
                .star = rgb(0xffffff, 0.35)};
    }
    // On a colour of the sender's there is no contrast to give away.
    const std::uint32_t ink = asked ? 0x000000 : 0x111114;
    return {.card = asked.value_or(rgb(0xffffff)),
            .title = rgb(ink),
            .text = rgb(ink, asked ? 0.85 : 0.72),
            .placeholder = rgb(0x111114, 0.07),
            .button = rgb(0x111114, 0.07),
            .buttonLabel = rgb(0x111114),
            .dot = rgb(0x111114, 0.22),
            .currentDot = rgb(0x111114),
            .chosenStar = rgb(0xe89a00),
            .star = rgb(0x111114, 0.28)};
}

std::optional<Colour> parsedColour(std::string_view text) noexcept {
    if ((text.size() != 4 && text.size() != 7) || text.front() != '#') {
        return std::nullopt;
    }
    const bool brief = text.size() == 4;
    std::uint32_t code = 0;
    for (const char c : text.substr(1)) {
        const auto digit = hexDigit(c);
        if (!digit) {
            return std::nullopt;
        }
        code = brief ? code << 8U | *digit * 17 : code << 4U | *digit;
    }
    return rgb(code);
}

double luminance(Colour colour) noexcept {
    return 0.2126 * linear(colour.red) + 0.7152 * linear(colour.green) + 0.0722 * linear(colour.blue);
}

} // namespace zentavo
