# Looks for what the desktop port is made with. ZENTAVO_DESKTOP_FOUND says whether there is a target zentavo_desktop.

set(ZENTAVO_DESKTOP_FOUND FALSE)
if(NOT ZENTAVO_BUILD_DESKTOP_PORT)
  return()
endif()
find_package(PkgConfig QUIET)
if(PkgConfig_FOUND)
  pkg_check_modules(ZENTAVO_DESKTOP QUIET gio-2.0>=2.70 gio-unix-2.0)
endif()
if(NOT ZENTAVO_DESKTOP_FOUND)
  message(STATUS "ZentavoFramework: no desktop port, notifications cannot be shown: pkg-config finds no gio-2.0 "
                 "(scripts/bootstrap libs installs it)")
endif()
