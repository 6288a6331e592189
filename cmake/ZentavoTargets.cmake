# What every target here is built with, in one place.

# zentavo_compile_options(TARGET): language level, warnings and sanitizers. Private: nothing reaches a host's build.
function(zentavo_compile_options target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
  # Faults name their place: relative to the source tree, wherever it was built.
  target_compile_options(${target} PRIVATE -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
  if(ZentavoFramework_IS_TOP_LEVEL OR ZENTAVO_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast)
    if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
      target_compile_options(${target} PRIVATE -Wthread-safety)
    endif()
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
      # GCC 12 sees overlapping copies in optimised text concatenation where there are none.
      target_compile_options(${target} PRIVATE -Wno-restrict)
    endif()
  else()
    # The warnings that a host turned on for its folders are about its own code.
    target_compile_options(${target} PRIVATE -w)
  endif()
  if(ZENTAVO_WARNINGS_AS_ERRORS)
    target_compile_options(${target} PRIVATE -Werror)
  endif()
  if(ZENTAVO_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${ZENTAVO_SANITIZE} -fno-omit-frame-pointer
                                             -fno-sanitize-recover=all)
    target_link_options(${target} PUBLIC -fsanitize=${ZENTAVO_SANITIZE})
    if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
      # The checks that sanitizers put between the lines make g++ see uninitialised values in every std::variant.
      target_compile_options(${target} PRIVATE -Wno-maybe-uninitialized)
    endif()
  endif()
endfunction()

# zentavo_library(NAME [STATIC] SOURCES … HEADERS … [LINK …] [LINK_PRIVATE …])
# Makes the library zentavo_NAME, known to hosts as ZentavoFramework::NAME, with HEADERS as its installed, self-contained
# interface. Its file is libzentavo-NAME, and libzentavo for the SDK itself.
function(zentavo_library name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "STATIC" "" "SOURCES;HEADERS;LINK;LINK_PRIVATE")
  set(target zentavo_${name})
  if(arg_STATIC)
    add_library(${target} STATIC)
  else()
    add_library(${target})
  endif()
  add_library(ZentavoFramework::${name} ALIAS ${target})
  target_sources(${target}
    PRIVATE ${arg_SOURCES}
    PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES ${arg_HEADERS})
  target_link_libraries(${target} PUBLIC ${arg_LINK} PRIVATE ${arg_LINK_PRIVATE})
  zentavo_compile_options(${target})
  if(name STREQUAL "zentavo")
    set(output zentavo)
  else()
    set(output zentavo-${name})
  endif()
  set_target_properties(${target} PROPERTIES
    EXPORT_NAME ${name}
    OUTPUT_NAME ${output}
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}
    DEFINE_SYMBOL ""
    VERIFY_INTERFACE_HEADER_SETS ON)
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "SHARED_LIBRARY")
    target_link_options(${target} PRIVATE -Wl,--version-script=${PROJECT_SOURCE_DIR}/cmake/exports.map)
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${PROJECT_SOURCE_DIR}/cmake/exports.map)
  endif()
  set_property(GLOBAL APPEND PROPERTY ZENTAVO_LIBRARIES ${target})
endfunction()

# zentavo_keep_port(NAME): makes sure that whoever links the library NAME really gets it. It answers a question that only
# a library below it asks (platform::makeDefault), so linkers see no reason to keep it: a shared one they drop, and in
# an archive they meet the answer before the question.
function(zentavo_keep_port name)
  get_target_property(type zentavo_${name} TYPE)
  if(type STREQUAL "SHARED_LIBRARY")
    target_link_options(zentavo_${name} INTERFACE
      LINKER:--push-state,--no-as-needed,$<TARGET_FILE:$<TARGET_NAME:zentavo_${name}>>,--pop-state)
  else()
    target_link_options(zentavo_${name} INTERFACE LINKER:-u,_ZN7zentavo8platform11makeDefaultEv)
  endif()
endfunction()

# zentavo_test(NAME LABELS … SOURCES … [LINK …]): one GoogleTest program; each of its cases is a CTest test.
function(zentavo_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "SOURCES;LINK;LABELS")
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LINK} GTest::gmock GTest::gtest_main)
  zentavo_compile_options(${name})
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST PROPERTIES LABELS "${arg_LABELS}" TIMEOUT 120)
endfunction()
