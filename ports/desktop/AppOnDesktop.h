#pragma once

#include <string>

#include "zentavo/platform/Bundle.h"

namespace zentavo::desktop {

/// An app as the desktop knows it.
struct AppOnDesktop {
    std::string name;         ///< for readers
    std::string desktopEntry; ///< the app's file "….desktop" without the suffix; its icon has the same name

    /// The app that `program`, its main program or one of its extensions, belongs to: entry and icon are named after its
    /// bundle identifier. Without one, after the file of the program.
    static AppOnDesktop of(const platform::Bundle& program);
};

} // namespace zentavo::desktop
