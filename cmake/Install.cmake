# The libraries, their headers, the CMake package and the pkg-config files, in four components:
# runtime (what programs need), development, simulation (for tests of host applications), and
# gstreamer (the media player).

include(CMakePackageConfigHelpers)
set(xel_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/xel")

install(TARGETS xel EXPORT xelTargets
        LIBRARY COMPONENT runtime NAMELINK_COMPONENT development
        ARCHIVE COMPONENT development
        FILE_SET HEADERS COMPONENT development)
install(TARGETS xel_simulation EXPORT xelSimulationTargets
        LIBRARY COMPONENT simulation
        ARCHIVE COMPONENT simulation
        FILE_SET HEADERS COMPONENT simulation)
install(EXPORT xelTargets NAMESPACE xel:: DESTINATION "${xel_package_dir}" COMPONENT development)
install(EXPORT xelSimulationTargets NAMESPACE xel:: DESTINATION "${xel_package_dir}"
        COMPONENT simulation)
if(TARGET xel_gstreamer)
  install(TARGETS xel_gstreamer EXPORT xelGStreamerTargets
          LIBRARY COMPONENT gstreamer
          ARCHIVE COMPONENT gstreamer
          FILE_SET HEADERS COMPONENT gstreamer)
  install(EXPORT xelGStreamerTargets NAMESPACE xel:: DESTINATION "${xel_package_dir}"
          COMPONENT gstreamer)
endif()
if(XEL_BUILD_TOOL)
  set_target_properties(xel_tool PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
  install(TARGETS xel_tool RUNTIME COMPONENT tool)
  if(TARGET xel_manual)
    get_target_property(xel_manual_folder xel_manual FOLDER_OF_PAGES)
    install(DIRECTORY "${xel_manual_folder}/man1" DESTINATION "${CMAKE_INSTALL_MANDIR}"
            COMPONENT tool)
    install(DIRECTORY "${xel_manual_folder}/bash-completion/"
            DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT tool)
  endif()
endif()

configure_package_config_file("${CMAKE_CURRENT_LIST_DIR}/xelConfig.cmake.in"
                              "${PROJECT_BINARY_DIR}/package/xelConfig.cmake"
                              INSTALL_DESTINATION "${xel_package_dir}"
                              NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/package/xelConfigVersion.cmake"
                                 COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/package/xelConfig.cmake"
              "${PROJECT_BINARY_DIR}/package/xelConfigVersion.cmake"
        DESTINATION "${xel_package_dir}" COMPONENT development)

file(RELATIVE_PATH xel_pkgconfig_to_prefix
     "${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "${CMAKE_INSTALL_PREFIX}")
cmake_path(IS_ABSOLUTE CMAKE_INSTALL_LIBDIR xel_absolute)
if(xel_absolute)
  set(xel_pkgconfig_libdir "${CMAKE_INSTALL_LIBDIR}")
  set(xel_pkgconfig_prefix "${CMAKE_INSTALL_PREFIX}")
else()
  set(xel_pkgconfig_libdir "\${prefix}/${CMAKE_INSTALL_LIBDIR}")
  set(xel_pkgconfig_prefix "\${pcfiledir}/${xel_pkgconfig_to_prefix}")
endif()
cmake_path(IS_ABSOLUTE CMAKE_INSTALL_INCLUDEDIR xel_absolute)
if(xel_absolute)
  set(xel_pkgconfig_includedir "${CMAKE_INSTALL_INCLUDEDIR}")
else()
  set(xel_pkgconfig_includedir "\${prefix}/${CMAKE_INSTALL_INCLUDEDIR}")
endif()
# A shared library carries what it is made of; a static one leaves it to the program that links it.
set(xel_pkgconfig_requires "libcurl >= 7.85 libxml-2.0 liburiparser >= 0.9.2")
set(xel_pkgconfig_libs "-lboost_json -lboost_container -pthread")
if(BUILD_SHARED_LIBS)
  set(xel_pkgconfig_lines "Requires.private: ${xel_pkgconfig_requires}
Libs: -L\${libdir} -lxel
Libs.private: ${xel_pkgconfig_libs}")
else()
  set(xel_pkgconfig_lines "Requires: ${xel_pkgconfig_requires}
Libs: -L\${libdir} -lxel ${xel_pkgconfig_libs}")
endif()
set(xel_gstreamer_requires "gstreamer-1.0 >= 1.22 gio-2.0 >= 2.60 taglib >= 1.13")
if(BUILD_SHARED_LIBS)
  set(xel_gstreamer_pkgconfig_line "Requires.private: ${xel_gstreamer_requires}")
else()
  set(xel_gstreamer_pkgconfig_line "Requires: ${xel_gstreamer_requires}")
endif()
foreach(file xel xel-simulation xel-gstreamer)
  configure_file("${CMAKE_CURRENT_LIST_DIR}/${file}.pc.in" "${PROJECT_BINARY_DIR}/package/${file}.pc"
                 @ONLY)
endforeach()
install(FILES "${PROJECT_BINARY_DIR}/package/xel.pc"
        DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT development)
install(FILES "${PROJECT_BINARY_DIR}/package/xel-simulation.pc"
        DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT simulation)
if(TARGET xel_gstreamer)
  install(FILES "${PROJECT_BINARY_DIR}/package/xel-gstreamer.pc"
          DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig" COMPONENT gstreamer)
endif()
