#pragma once

#include <string>

#include <gtk/gtk.h>

namespace storefront {

/// What `window` shows, drawn inside the process: exact colours, whatever lies over the window on the screen. The caller
/// gets the reference. Null before the window's first frame.
GdkTexture* screenshot(GtkWindow* window);
/// The same as a PNG file; false when there is no picture, or no such place.
bool saveScreenshot(GtkWindow* window, const std::string& path);

} // namespace storefront
