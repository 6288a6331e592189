#include "zentavo/push/templates/PushTemplateLayout.h"

#include <algorithm>
#include <cmath>

namespace zentavo::layout {

namespace {

using platform::Rect;
using platform::Size;

constexpr double gap = 4;         // between texts
constexpr double sectionGap = 12; // between texts, icons and buttons
constexpr double buttonGap = 8;
constexpr double thumbnail = 88;
constexpr double leastPicture = 80;
constexpr double dotsHeight = 20;
constexpr double longest = 32767;

double length(double value) { return std::isfinite(value) ? std::clamp(std::round(value), 0.0, longest) : 0; }

/// The height at which a picture keeps its proportions across `width`, as far as they are not extreme.
double pictureHeight(Size picture, double width, double least, double most) {
    const double height = picture.width > 0 && picture.height > 0 ? width * picture.height / picture.width : 0;
    return std::round(std::clamp(std::isfinite(height) ? height : least, least, most));
}

bool hasPicture(const PushParts& parts) { return parts.picture.width > 0 && parts.picture.height > 0; }

double textsHeight(const PushParts& parts) {
    double height = 0;
    for (const double each : {parts.title, parts.subtitle, parts.body}) {
        if (each > 0) {
            height += length(each) + (height > 0 ? gap : 0);
        }
    }
    return height;
}

/// Puts the texts below each other from `y`; returns where they end.
double placeTexts(PushFrames& frames, const PushParts& parts, double x, double y, double width) {
    double bottom = y;
    const auto place = [&](Rect& frame, double height) {
        if (height > 0) {
            frame = {x, bottom > y ? bottom + gap : y, width, length(height)};
            bottom = frame.y + frame.height;
        }
    };
    place(frames.title, parts.title);
    place(frames.subtitle, parts.subtitle);
    place(frames.body, parts.body);
    return bottom;
}

bool sideBySide(const PushParts& parts, double width) {
    return parts.widestButton <= std::floor((width - buttonGap) / 2);
}

double buttonsHeight(const PushParts& parts, double width) {
    if (parts.buttons == 0) {
        return 0;
    }
    return parts.buttons == 1 || sideBySide(parts, width) ? pushButtonHeight : 2 * pushButtonHeight + buttonGap;
}

/// Puts the buttons below `y`, and ends the content.
void finish(PushFrames& frames, const PushParts& parts, double y, double width) {
    const double inner = pushTextWidth(width);
    if (const double height = buttonsHeight(parts, inner); height > 0) {
        frames.buttons = {pushMargin, y + sectionGap, inner, height};
        frames.button1 = {0, 0, inner, pushButtonHeight};
        if (parts.buttons > 1 && sideBySide(parts, inner)) {
            const double half = std::max(0.0, std::floor((inner - buttonGap) / 2));
            frames.button1.width = half;
            frames.button2 = {inner - half, 0, half, pushButtonHeight};
            if (parts.rightToLeft) {
                std::swap(frames.button1, frames.button2);
            }
        } else if (parts.buttons > 1) {
            frames.button2 = {0, pushButtonHeight + buttonGap, inner, pushButtonHeight};
        }
        y = frames.buttons.y + height;
    }
    frames.height = y + pushMargin;
}

/// What the buttons and the margins around them take.
double below(const PushParts& parts, double width) {
    const double height = buttonsHeight(parts, pushTextWidth(width));
    return pushMargin + (height > 0 ? sectionGap + height : 0);
}

/// The picture stands `inset` from the edges, with `dots` below it.
PushFrames column(const PushParts& parts, double inset, double dots) {
    PushFrames frames;
    const double width = length(parts.area.width);
    const double texts = textsHeight(parts);
    const double extra = length(parts.extra);
    double y = 0;
    if (hasPicture(parts)) {
        const double rest = inset + dots + (texts > 0 ? (dots > 0 ? gap : sectionGap) + texts : 0) +
                            (extra > 0 ? sectionGap + extra : 0) + below(parts, width);
        const double across = std::max(1.0, width - 2 * inset);
        const double natural = pictureHeight(parts.picture, across, std::round(across / 3), across);
        const double left = length(parts.area.height) - rest;
        frames.picture = {inset, inset, across, std::min(natural, std::max(leastPicture, left))};
        y = inset + frames.picture.height;
        frames.pages = {inset, y, across, dots};
        y += dots;
    }
    if (texts > 0) {
        const double above = frames.pages.height > 0 ? gap : y > 0 ? sectionGap : pushMargin;
        y = placeTexts(frames, parts, pushMargin, y + above, pushTextWidth(width));
    }
    if (extra > 0) {
        frames.extra = {pushMargin, y + sectionGap, pushTextWidth(width), extra};
        y = frames.extra.y + extra;
    }
    finish(frames, parts, y, width);
    return frames;
}

} // namespace

double pushTextWidth(double width, bool besidePicture) noexcept {
    return std::max(1.0, length(width) - 2 * pushMargin - (besidePicture ? thumbnail + sectionGap : 0));
}

PushFrames pushColumn(const PushParts& parts) { return column(parts, 0, 0); }

PushFrames pushCarousel(const PushParts& parts, std::size_t slides) {
    return column(parts, pushMargin, slides > 1 ? dotsHeight : 0);
}

PushFrames pushSmallImage(const PushParts& parts, bool pictureOnLeft) {
    if (!hasPicture(parts)) {
        return pushColumn(parts);
    }
    PushFrames frames;
    const double width = length(parts.area.width);
    const double height = pictureHeight(parts.picture, thumbnail, std::round(thumbnail * 3 / 4), thumbnail * 4 / 3);
    const double texts = textsHeight(parts);
    // The lower of the two stands in the middle of the higher one.
    const double row = std::max(height, texts);
    frames.picture = {pictureOnLeft ? pushMargin : std::max(0.0, width - pushMargin - thumbnail),
                      pushMargin + (texts > height ? 0 : std::floor((row - height) / 2)), thumbnail, height};
    placeTexts(frames, parts, pictureOnLeft ? pushMargin + thumbnail + sectionGap : pushMargin,
               pushMargin + std::floor((row - texts) / 2), pushTextWidth(width, true));
    finish(frames, parts, pushMargin + row, width);
    return frames;
}

PushFrames pushOverlay(const PushParts& parts) {
    if (!hasPicture(parts)) {
        return pushColumn(parts);
    }
    PushFrames frames;
    const double width = length(parts.area.width);
    const double texts = textsHeight(parts);
    const double least = texts + 2 * pushMargin;
    const double rest = parts.buttons > 0 ? below(parts, width) : 0;
    const double natural = pictureHeight(parts.picture, width, std::round(width / 3), width);
    const double height = std::max(least, std::min(natural, std::max(leastPicture, length(parts.area.height) - rest)));
    frames.picture = {0, 0, width, height};
    if (texts > 0) {
        const double top = height - pushMargin - texts;
        placeTexts(frames, parts, pushMargin, top, pushTextWidth(width));
        const double scrimTop = std::max(0.0, top - 3 * pushMargin);
        frames.scrim = {0, scrimTop, width, height - scrimTop};
    }
    if (parts.buttons > 0) {
        finish(frames, parts, height, width);
    } else {
        frames.height = height;
    }
    return frames;
}

std::vector<Rect> ratingRow(double width, double height, std::size_t count, bool rightToLeft) {
    std::vector<Rect> row;
    count = std::min(count, mostIcons);
    if (count == 0) {
        return row;
    }
    const auto icons = static_cast<double>(count);
    const double side =
        std::max(1.0, std::min(length(height), std::floor((length(width) - (icons - 1) * gap) / icons)));
    // Few icons stand apart as far as a finger is wide.
    const double space = count > 1 ? std::min(12.0, std::floor((length(width) - icons * side) / (icons - 1))) : 0;
    const double all = icons * side + (icons - 1) * space;
    const double left = std::floor((length(width) - all) / 2);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t place = rightToLeft ? count - 1 - i : i;
        row.push_back(
            {left + static_cast<double>(place) * (side + space), std::floor((length(height) - side) / 2), side, side});
    }
    return row;
}

std::vector<Rect> pageDots(double width, double height, std::size_t count, bool rightToLeft) {
    constexpr double dot = 7;
    std::vector<Rect> dots;
    count = std::min(count, mostSlides);
    const auto number = static_cast<double>(count);
    const double left = std::floor((length(width) - number * dot - (number - 1) * dot) / 2);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t place = rightToLeft ? count - 1 - i : i;
        dots.push_back({left + static_cast<double>(place) * 2 * dot, std::floor((length(height) - dot) / 2), dot, dot});
    }
    return dots;
}

} // namespace zentavo::layout
