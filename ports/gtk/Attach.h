#pragma once

#include "zentavo/core/Zentavo.h"

// The toolkit's own window, named here so that this header needs none of the toolkit's.
typedef struct _GtkWindow GtkWindow;

namespace zentavo::gtk {

/// Lets the SDK show its messages over `window` and run its main queue on the toolkit's main loop. One call, on the
/// toolkit's main thread, once the toolkit is initialised; the window may be shown later. Notifications and pushes go
/// over the user's message bus, as `zentavo::desktop::attach` says. Again with another window: that
/// one is used from then on. False when there is no window or no display.
///
/// The window's child is put into a `GtkOverlay`, which is the window's child from then on; the host may give the window
/// another child at any time, which is wrapped the same way. Focus, cursor, text and layout stay as they were; a text
/// selection is given up. When the window is destroyed, what is shown over it ends; messages that come later are dropped
/// until another window is attached.
ZENTAVO_EXPORT bool attach(GtkWindow* window);
/// The same for an instance other than `Zentavo::shared()`.
ZENTAVO_EXPORT bool attach(GtkWindow* window, Zentavo& sdk);

} // namespace zentavo::gtk
