# Install rules: per library of the global property ZENTAVO_LIBRARIES its file, headers, CMake targets and a pkg-config
# file, and one CMake package with the libraries as components. The tree may be moved after it was installed.
#
# Included last: what a library links is read from the finished targets, so that a new library needs no line here.

include(CMakePackageConfigHelpers)

set(include_dir ${CMAKE_INSTALL_INCLUDEDIR}/ZentavoFramework)
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/ZentavoFramework)
set(pkgconfig_dir ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

# An install folder as a path from another install folder; one that was given as an absolute path stays what it is.
function(zentavo_path_from folder target result)
  if(IS_ABSOLUTE ${target} OR IS_ABSOLUTE ${folder})
    set(path ${CMAKE_INSTALL_PREFIX})
    cmake_path(ABSOLUTE_PATH target BASE_DIRECTORY ${path} OUTPUT_VARIABLE path)
  else()
    file(RELATIVE_PATH path /prefix/${folder} /prefix/${target})
    string(REGEX REPLACE "/$" "" path ${path})
  endif()
  set(${result} ${path} PARENT_SCOPE)
endfunction()

# zentavo_sort_links(TARGET OURS THIRD_PARTY ITEM…): splits link items into our libraries' names and third parties' flags.
function(zentavo_sort_links target ours third_party)
  set(our_names)
  set(flags)
  foreach(item IN LISTS ARGN)
    string(REGEX REPLACE "^\\$<LINK_ONLY:(.*)>$" "\\1" item "${item}")
    if(item MATCHES "^(zentavo_|ZentavoFramework::)(.+)$")
      list(APPEND our_names ${CMAKE_MATCH_2})
    elseif(item STREQUAL "Threads::Threads")
      list(APPEND flags -pthread)
    elseif(item MATCHES "^-" OR item MATCHES "^/")
      list(APPEND flags ${item})
    elseif(item MATCHES "^[A-Za-z0-9_.+-]+$" AND NOT TARGET ${item})
      list(APPEND flags -l${item})
    elseif(item MATCHES "^PkgConfig::" OR (TARGET ${item} AND item MATCHES "::"))
      # A stranger's machine may lack the package that made this target; a shared library hides it, a static one cannot.
      get_target_property(type ${target} TYPE)
      if(type STREQUAL "STATIC_LIBRARY")
        message(FATAL_ERROR "${target} links ${item}, which an installed static library cannot carry along: "
                            "link the library by its plain name")
      endif()
    elseif(NOT item STREQUAL "")
      message(FATAL_ERROR "${target} links ${item}: say here how a pkg-config file names that")
    endif()
  endforeach()
  set(${ours} ${our_names} PARENT_SCOPE)
  set(${third_party} ${flags} PARENT_SCOPE)
endfunction()

# zentavo_pkgconfig(TARGET NAME): writes NAME's .pc file. Static libraries tell what they need besides in the private
# fields, which "pkg-config --static" reads.
function(zentavo_pkgconfig target name)
  get_target_property(PC_FILE ${target} OUTPUT_NAME)
  get_target_property(type ${target} TYPE)
  get_target_property(all ${target} LINK_LIBRARIES)
  get_target_property(public ${target} INTERFACE_LINK_LIBRARIES)
  foreach(list all public)
    if(NOT ${list})
      set(${list})
    endif()
  endforeach()
  list(FILTER public EXCLUDE REGEX "LINK_ONLY")
  set(private ${all})
  list(REMOVE_ITEM private ${public} "")

  zentavo_sort_links(${target} ours flags ${public})
  zentavo_sort_links(${target} private_ours private_flags ${private})
  if(type STREQUAL "STATIC_LIBRARY" AND BUILD_SHARED_LIBS)
    # Static among shared ones: nobody asks for it with --static, so it tells everything at once.
    list(APPEND ours ${private_ours})
    list(APPEND flags ${private_flags})
    set(private_ours)
    set(private_flags)
  endif()

  foreach(list ours private_ours)
    list(TRANSFORM ${list} REPLACE "(.+)" "zentavo-\\1")
    list(TRANSFORM ${list} REPLACE "^zentavo-zentavo$" "zentavo")
    list(TRANSFORM ${list} APPEND " = ${PROJECT_VERSION}")
  endforeach()
  # Options that its users must link with travel in front, where a linker reads them before the libraries.
  get_target_property(PC_LINK_OPTIONS ${target} INTERFACE_LINK_OPTIONS)
  if(PC_LINK_OPTIONS)
    list(TRANSFORM PC_LINK_OPTIONS REPLACE "^LINKER:" "-Wl,")
    string(REPLACE "$<TARGET_FILE:$<TARGET_NAME:${target}>>" "-l${PC_FILE}" PC_LINK_OPTIONS "${PC_LINK_OPTIONS}")
    list(JOIN PC_LINK_OPTIONS " " PC_LINK_OPTIONS)
  else()
    set(PC_LINK_OPTIONS "")
  endif()
  list(JOIN ours ", " PC_REQUIRES)
  list(JOIN private_ours ", " PC_REQUIRES_PRIVATE)
  list(JOIN flags " " PC_LIBS)
  list(JOIN private_flags " " PC_LIBS_PRIVATE)
  set(PC_NAME ${name})
  zentavo_path_from(${pkgconfig_dir} ${CMAKE_INSTALL_LIBDIR} PC_LIBDIR)
  zentavo_path_from(${pkgconfig_dir} ${include_dir} PC_INCLUDEDIR)
  foreach(folder PC_LIBDIR PC_INCLUDEDIR)
    if(NOT IS_ABSOLUTE "${${folder}}")
      string(PREPEND ${folder} "\${pcfiledir}/")
    endif()
  endforeach()
  configure_file(${PROJECT_SOURCE_DIR}/cmake/zentavo.pc.in ${PROJECT_BINARY_DIR}/pkgconfig/${PC_FILE}.pc @ONLY)
  install(FILES ${PROJECT_BINARY_DIR}/pkgconfig/${PC_FILE}.pc DESTINATION ${pkgconfig_dir})
endfunction()

get_property(libraries GLOBAL PROPERTY ZENTAVO_LIBRARIES)
set(ZENTAVO_COMPONENTS)
foreach(library IN LISTS libraries)
  get_target_property(component ${library} EXPORT_NAME)
  list(APPEND ZENTAVO_COMPONENTS ${component})

  # Each library finds its neighbours beside itself, wherever the tree was put.
  set_target_properties(${library} PROPERTIES INSTALL_RPATH "$ORIGIN")
  # An export of its own for each: a distribution may put a library with heavy needs into a package of its own.
  install(TARGETS ${library} EXPORT ZentavoFramework-${component}
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    FILE_SET HEADERS DESTINATION ${include_dir})
  install(EXPORT ZentavoFramework-${component} NAMESPACE ZentavoFramework:: DESTINATION ${package_dir})
  zentavo_pkgconfig(${library} ${component})
endforeach()

configure_package_config_file(cmake/ZentavoFrameworkConfig.cmake.in ${PROJECT_BINARY_DIR}/ZentavoFrameworkConfig.cmake
  INSTALL_DESTINATION ${package_dir}
  NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/ZentavoFrameworkConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
# The licence travels with what it is for.
install(FILES LICENSE DESTINATION ${CMAKE_INSTALL_DOCDIR})
install(FILES
    ${PROJECT_BINARY_DIR}/ZentavoFrameworkConfig.cmake
    ${PROJECT_BINARY_DIR}/ZentavoFrameworkConfigVersion.cmake
  DESTINATION ${package_dir})
