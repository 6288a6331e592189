# Looks for what the GTK port is made with. ZENTAVO_GTK_FOUND says whether there is a target zentavo_gtk.

set(ZENTAVO_GTK_FOUND FALSE)
# What stands on the toolkit stands on the desktop's bus as well.
if(NOT ZENTAVO_BUILD_GTK_PORT OR NOT ZENTAVO_DESKTOP_FOUND)
  return()
endif()
find_package(PkgConfig QUIET)
if(PkgConfig_FOUND)
  pkg_check_modules(ZENTAVO_GTK QUIET gtk4>=4.8 webkitgtk-6.0)
endif()
if(NOT ZENTAVO_GTK_FOUND)
  message(STATUS "ZentavoFramework: no GTK port, in-app messages cannot be shown: pkg-config finds no gtk4 or no "
                 "webkitgtk-6.0 (scripts/bootstrap gtk installs them)")
endif()
