# xel::gstreamer, the media player over GStreamer: an optional component.

if(NOT XEL_BUILD_GSTREAMER)
  return()
endif()
find_package(PkgConfig)
if(PkgConfig_FOUND)
  pkg_check_modules(GSTREAMER IMPORTED_TARGET gstreamer-1.0>=1.22 gio-2.0>=2.60)
  pkg_check_modules(TAGLIB IMPORTED_TARGET taglib>=1.13)
endif()
if(NOT GSTREAMER_FOUND OR NOT TAGLIB_FOUND)
  if(XEL_BUILD_GSTREAMER STREQUAL "AUTO")
    message(STATUS "No GStreamer player: GStreamer 1.22 and TagLib 1.13 are needed for it")
    return()
  endif()
  message(FATAL_ERROR "The GStreamer player needs GStreamer 1.22 and TagLib 1.13; "
                      "install them or set XEL_BUILD_GSTREAMER to OFF")
endif()

set(xel_gstreamer_dependencies PkgConfig::GSTREAMER PkgConfig::TAGLIB Threads::Threads)

file(GLOB xel_gstreamer_sources CONFIGURE_DEPENDS
     "${PROJECT_SOURCE_DIR}/src/backends/gstreamer/*.cpp")
add_library(xel_gstreamer_core OBJECT ${xel_gstreamer_sources})
target_include_directories(xel_gstreamer_core PUBLIC include PRIVATE src)
target_link_libraries(xel_gstreamer_core PRIVATE xel_options ${xel_gstreamer_dependencies})

file(GLOB xel_gstreamer_headers CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/include/xel/gstreamer/*.h")
add_library(xel_gstreamer $<TARGET_OBJECTS:xel_gstreamer_core>)
add_library(xel::gstreamer ALIAS xel_gstreamer)
target_sources(xel_gstreamer PUBLIC FILE_SET HEADERS BASE_DIRS include
               FILES ${xel_gstreamer_headers})
target_link_libraries(xel_gstreamer PUBLIC xel
                      PRIVATE $<BUILD_INTERFACE:xel_options> ${xel_gstreamer_dependencies})
set_target_properties(xel_gstreamer PROPERTIES OUTPUT_NAME xel-gstreamer EXPORT_NAME gstreamer)
xel_shared_library(xel_gstreamer)
