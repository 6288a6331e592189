#include "zentavo/inapp/TemplateLayout.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

namespace zentavo::layout {

namespace {

std::int64_t bounded(std::int64_t value) noexcept { return std::clamp(value, -furthest, furthest); }

double length(std::int64_t points) noexcept {
    return static_cast<double>(std::clamp<std::int64_t>(points, 0, furthest));
}

/// "12", "12px" or "10%": the number, and the unit that the text itself names.
std::optional<std::int64_t> parsedOffset(std::string_view text, std::string_view suffix, double extent) {
    std::int64_t number = 0;
    const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (problem != std::errc()) {
        return std::nullopt;
    }
    const std::string_view unit(end, static_cast<std::size_t>(text.data() + text.size() - end));
    return offsetInPoints(number, unit.empty() ? suffix : unit, extent);
}

std::optional<double> offset(const std::optional<IntOrString>& setting, std::string_view suffix, double extent) {
    if (!setting) {
        return std::nullopt;
    }
    if (const auto* number = setting->asInt()) {
        return static_cast<double>(offsetInPoints(*number, suffix, extent));
    }
    const auto parsed = parsedOffset(*setting->asString(), suffix, extent);
    return parsed ? std::optional(static_cast<double>(*parsed)) : std::nullopt;
}

double side(const std::optional<std::int64_t>& setting, const std::optional<std::string>& suffix, double extent) {
    return setting ? length(offsetInPoints(*setting, suffix.value_or("px"), extent)) : extent;
}

} // namespace

bool isBar(std::string_view templateType) noexcept {
    return templateType == "floating_bar" || templateType == "slide_in";
}

bool isFullHeight(std::string_view templateType) noexcept {
    return templateType == "full_screen" || templateType == "gamified";
}

platform::Rect initialFrame(std::string_view templateType, const Screen& screen) {
    // Engines lay nothing out in a view of no height at all.
    return {0, furthest, screen.size.width, isFullHeight(templateType) ? screen.size.height : 1};
}

std::int64_t offsetInPoints(std::int64_t offset, std::string_view suffix, double extent) noexcept {
    if (suffix != "%") {
        return bounded(offset);
    }
    const auto whole = bounded(static_cast<std::int64_t>(extent));
    return bounded(whole * bounded(offset) / 100);
}

platform::Rect templateFrame(std::string_view templateType, const SizeMessage& message, platform::Rect current,
                             const Screen& screen) {
    platform::Rect frame = current;
    frame.height = isFullHeight(templateType) ? screen.size.height : length(message.height);
    if (!isBar(templateType)) {
        return centred({length(message.width), frame.height}, screen);
    }
    if (message.floatingBarPosition == "bottom") {
        const auto bottom = offsetInPoints(message.bottom, message.positionSuffix, screen.size.height);
        frame.y = screen.size.height - frame.height - static_cast<double>(bottom) - screen.safeArea.bottom;
    } else {
        const auto top = offsetInPoints(message.top, message.positionSuffix, screen.size.height);
        frame.y = screen.safeArea.top + static_cast<double>(top);
    }
    if (templateType == "slide_in") {
        // Comes in from the side, no wider than it asks for.
        frame.width = length(message.width);
        frame.x = screen.size.width - frame.width - screen.safeArea.right;
    }
    return frame;
}

platform::Rect codeModeFrame(std::string_view templateType, const TemplateInfoResponse::TemplateData& info,
                             const Screen& screen) {
    const CodeModeSettings size = info.codeModeSettings.value_or(CodeModeSettings());
    const TemplateInfoResponse::Options options = info.options.value_or(TemplateInfoResponse::Options());
    const PositionSettings position = options.positionSettings.value_or(PositionSettings());

    platform::Rect area{0, 0, screen.size.width, screen.size.height};
    if (size.displayArea == "safe_area") {
        area = {screen.safeArea.left, screen.safeArea.top,
                std::max(0.0, screen.size.width - screen.safeArea.left - screen.safeArea.right),
                std::max(0.0, screen.size.height - screen.safeArea.top - screen.safeArea.bottom)};
    }
    platform::Rect frame;
    frame.width = side(size.width, size.widthSuffix, area.width);
    frame.height = isFullHeight(templateType) ? area.height : side(size.height, size.heightSuffix, area.height);
    frame.x = area.x + std::floor((area.width - frame.width) / 2);
    frame.y = area.y + std::floor((area.height - frame.height) / 2);
    if (isFullHeight(templateType)) {
        return frame;
    }

    const std::string suffix = position.positionSuffix.value_or("px");
    const auto top = offset(position.top, suffix, area.height);
    const auto bottom = offset(position.bottom, suffix, area.height);
    const auto left = offset(position.left, suffix, area.width);
    const auto right = position.right ? offset(IntOrString{*position.right}, suffix, area.width) : std::nullopt;

    const bool bar = isBar(templateType);
    const bool atTop = bar ? options.floatingBarPosition.value_or("bottom") != "bottom" : top.has_value();
    if (atTop) {
        frame.y = area.y + top.value_or(0);
    } else if (bar || bottom) {
        frame.y = area.y + area.height - frame.height - bottom.value_or(0);
    }
    if (left) {
        frame.x = area.x + *left;
    } else if (right) {
        frame.x = area.x + area.width - frame.width - *right;
    }
    return frame;
}

platform::Rect centred(platform::Size size, const Screen& screen) {
    // On whole points, so that text stays sharp.
    return {std::floor((screen.size.width - size.width) / 2), std::floor((screen.size.height - size.height) / 2),
            size.width, size.height};
}

} // namespace zentavo::layout
