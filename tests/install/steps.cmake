# Steps that the scenarios share. A step that fails ends the test.
include("${SETTINGS}")

function(run)
  execute_process(COMMAND ${ARGV} COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
endfunction()

# Builds the consumer in `folder` with the given CMake options, and runs it.
function(build_consumer folder)
  run("${CMAKE_COMMAND}" -S "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/consumer" -B "${folder}"
      ${ARGN})
  run("${CMAKE_COMMAND}" --build "${folder}")
  run("${folder}/consumer")
endfunction()

# Builds the consumer with what pkg-config answers for `prefix`, and runs it. Further arguments go
# to pkg-config.
function(build_consumer_with_pkg_config prefix)
  find_program(PKG_CONFIG pkg-config REQUIRED)
  set(ENV{PKG_CONFIG_PATH} "${prefix}/${LIB_DIR}/pkgconfig")
  execute_process(COMMAND "${PKG_CONFIG}" --cflags --libs ${ARGN} xel-simulation
                  OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE
                  COMMAND_ECHO STDOUT COMMAND_ERROR_IS_FATAL ANY)
  message("${flags}")
  separate_arguments(flags UNIX_COMMAND "${flags}")
  run("$ENV{CXX}" -std=c++20 "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/consumer/main.cpp"
      ${flags} "-Wl,-rpath,${prefix}/${LIB_DIR}" -o "${prefix}/consumer")
  run("${prefix}/consumer")
endfunction()
