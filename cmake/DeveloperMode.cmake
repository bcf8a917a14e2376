# What a developer of the library wants, and a project that contains it does not.

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Build type" FORCE)
endif()
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(XEL_CCACHE ccache)
if(XEL_CCACHE AND NOT DEFINED CMAKE_CXX_COMPILER_LAUNCHER)
  # Relative paths make hits of another clone's objects; the sloppiness is what precompiled
  # headers need.
  set(CMAKE_CXX_COMPILER_LAUNCHER
      "${CMAKE_COMMAND}" -E env "CCACHE_BASEDIR=${PROJECT_SOURCE_DIR}" CCACHE_NOHASHDIR=1
      "CCACHE_SLOPPINESS=pch_defines,time_macros" "${XEL_CCACHE}")
endif()
