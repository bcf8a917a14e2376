# What this build installs, moved to where nobody expected it, is found through the CMake package
# and through pkg-config, and exports what it should and nothing else.
include("${CMAKE_CURRENT_LIST_DIR}/steps.cmake")

file(REMOVE_RECURSE "${WORK_DIR}")
run("${CMAKE_COMMAND}" --install "${XEL_BUILD_DIR}" --prefix "${WORK_DIR}/first")
file(RENAME "${WORK_DIR}/first" "${WORK_DIR}/prefix")
set(prefix "${WORK_DIR}/prefix")

build_consumer("${WORK_DIR}/build" "-DCMAKE_PREFIX_PATH=${prefix}")
build_consumer_with_pkg_config("${prefix}")
if(EXISTS "${prefix}/bin/xel")
  run("${prefix}/bin/xel" --help)
endif()

foreach(library xel xel-simulation xel-gstreamer)
  set(file "${prefix}/${LIB_DIR}/lib${library}.so")
  if(NOT EXISTS "${file}")
    continue()  # A static build; "contained" covers it.
  endif()
  execute_process(COMMAND readelf -d "${file}" OUTPUT_VARIABLE dynamic COMMAND_ERROR_IS_FATAL ANY)
  if(NOT dynamic MATCHES "SONAME.*lib${library}\\.so\\.[0-9]+\\]")
    message(FATAL_ERROR "lib${library}.so has no SONAME with a major version")
  endif()
  execute_process(COMMAND nm -DC --defined-only "${file}" OUTPUT_VARIABLE symbols
                  COMMAND_ERROR_IS_FATAL ANY)
  if(symbols MATCHES "XELVastParser|XELStreamInfo::|CurlHTTPClient|JSONNumber|GstItem")
    message(FATAL_ERROR "lib${library}.so exports private classes")
  endif()
  string(REGEX MATCHALL "[^\n]+" symbols "${symbols}")
  list(FILTER symbols EXCLUDE REGEX " (.* (for|to) )?(XEL|xel::)")
  if(symbols)
    list(JOIN symbols "\n  " symbols)
    message(FATAL_ERROR "lib${library}.so exports what is not ours:\n  ${symbols}")
  endif()
endforeach()
