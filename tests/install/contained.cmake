# The source tree as part of another project, as static libraries; and the static libraries once
# they are installed, whose users link the private dependencies themselves.
include("${CMAKE_CURRENT_LIST_DIR}/steps.cmake")

file(REMOVE_RECURSE "${WORK_DIR}")
build_consumer("${WORK_DIR}/build" "-DXEL_SOURCE_DIR=${XEL_SOURCE_DIR}" -DXEL_INSTALL=ON)
run("${CMAKE_COMMAND}" --install "${WORK_DIR}/build" --prefix "${WORK_DIR}/prefix")
build_consumer("${WORK_DIR}/build-installed" "-DCMAKE_PREFIX_PATH=${WORK_DIR}/prefix")
build_consumer_with_pkg_config("${WORK_DIR}/prefix")
