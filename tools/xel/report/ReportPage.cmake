# The page of xel report: TypeScript and CSS, bundled into one file that the tool holds.

find_program(XEL_NODE node)
find_program(XEL_NPM npm)
if(NOT XEL_NODE OR NOT XEL_NPM)
  if(XEL_BUILD_REPORT STREQUAL "AUTO")
    message(STATUS "No xel report: Node.js and npm are needed for its page")
    return()
  endif()
  message(FATAL_ERROR "The page of xel report needs Node.js and npm; "
                      "install them or set XEL_BUILD_REPORT to OFF")
endif()

# npm stays within the build folder, and so finds its packages from the links to the sources.
set(xel_report_page_folder "${PROJECT_BINARY_DIR}/report-page")
set(xel_report_page "${xel_report_page_folder}/page.html")
set(xel_report_page_packages "${xel_report_page_folder}/node_modules/.package-lock.json")
set(xel_report_page_sources "${CMAKE_CURRENT_LIST_DIR}/page")
file(MAKE_DIRECTORY "${xel_report_page_folder}")
file(CREATE_LINK "${xel_report_page_sources}" "${xel_report_page_folder}/page" SYMBOLIC)

add_custom_command(
  OUTPUT "${xel_report_page_packages}"
  COMMAND "${CMAKE_COMMAND}" -E copy "${xel_report_page_sources}/package.json"
          "${xel_report_page_sources}/package-lock.json" .
  COMMAND "${XEL_NPM}" ci --ignore-scripts --prefer-offline --no-audit --no-fund --loglevel=error
  COMMAND "${CMAKE_COMMAND}" -E touch "${xel_report_page_packages}"
  DEPENDS "${xel_report_page_sources}/package.json" "${xel_report_page_sources}/package-lock.json"
  WORKING_DIRECTORY "${xel_report_page_folder}"
  COMMENT "Installing the packages of the report's page" VERBATIM)

file(GLOB_RECURSE xel_report_page_parts CONFIGURE_DEPENDS "${xel_report_page_sources}/src/*")
add_custom_command(
  OUTPUT "${xel_report_page}"
  COMMAND "${XEL_NODE}" --preserve-symlinks --preserve-symlinks-main page/build.mjs page.html
  DEPENDS "${xel_report_page_packages}" "${xel_report_page_sources}/build.mjs"
          ${xel_report_page_parts}
  WORKING_DIRECTORY "${xel_report_page_folder}"
  COMMENT "Bundling the report's page" VERBATIM)

add_custom_target(xel_report_page DEPENDS "${xel_report_page}")
add_dependencies(xel_tool_core xel_report_page)
target_sources(xel_tool_core PRIVATE report/ReportFile.cpp report/ReportPage.cpp)
set_source_files_properties(report/ReportCommand.cpp PROPERTIES COMPILE_DEFINITIONS XEL_HAS_REPORT)
set_source_files_properties(report/ReportPage.cpp PROPERTIES
                            OBJECT_DEPENDS "${xel_report_page}"
                            COMPILE_DEFINITIONS "XEL_REPORT_PAGE=\"${xel_report_page}\"")
