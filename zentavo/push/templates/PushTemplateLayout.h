#pragma once

#include <cstddef>
#include <vector>

#include "zentavo/platform/Views.h"

namespace zentavo::layout {

// Where the parts of a rich push go: arithmetic in whole points, which touches no view. Sizes come from senders,
// pictures and windows; whatever they are, frames are finite and none is negative.

inline constexpr double pushMargin = 16;
inline constexpr double pushButtonHeight = 44;
/// Higher than this no push asks to be.
inline constexpr double pushTallest = 640;
/// More icons or slides than this are not shown.
inline constexpr std::size_t mostIcons = 10;
inline constexpr std::size_t mostSlides = 20;

/// What a push has to show. What is 0 is not there.
struct PushParts {
    platform::Size area;    ///< of the window; less height takes from the picture
    platform::Size picture; ///< in pixels
    double title = 0;       ///< heights of the texts, measured for `pushTextWidth`
    double subtitle = 0;
    double body = 0;
    double extra = 0;        ///< height of what stands below the texts: rating icons
    std::size_t buttons = 0; ///< 0 to 2
    double widestButton = 0; ///< the width that the longer of their labels asks for
    bool rightToLeft = false;
};

struct PushFrames {
    platform::Rect picture;
    platform::Rect title;
    platform::Rect subtitle;
    platform::Rect body;
    platform::Rect pages; ///< the dots below a carousel's pictures
    platform::Rect extra;
    platform::Rect scrim;   ///< what is darkened below text over a picture
    platform::Rect buttons; ///< around both; their own frames are inside it
    platform::Rect button1; ///< with one button only, this is it
    platform::Rect button2;
    double height = 0; ///< of everything
};

/// The width for texts; beside a small picture less.
double pushTextWidth(double width, bool besidePicture = false) noexcept;

/// A picture across the window, texts below it, what is extra, buttons.
PushFrames pushColumn(const PushParts& parts);
/// Pictures that follow each other, inside the margins; with more than one, dots below them.
PushFrames pushCarousel(const PushParts& parts, std::size_t slides);
/// A small picture at the left or right edge, texts beside it, buttons below.
PushFrames pushSmallImage(const PushParts& parts, bool pictureOnLeft);
/// Texts over the lower part of the picture, buttons below. Without a picture as `pushColumn`.
PushFrames pushOverlay(const PushParts& parts);

/// `count` icons in a row of `width` by `height`, from the lowest rating to the highest.
std::vector<platform::Rect> ratingRow(double width, double height, std::size_t count, bool rightToLeft);
/// One dot for each slide.
std::vector<platform::Rect> pageDots(double width, double height, std::size_t count, bool rightToLeft);

} // namespace zentavo::layout
