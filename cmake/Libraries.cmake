# xel::xel and xel::simulation.
#
# The sources are compiled once; the libraries and the tests, which also see what is hidden, are
# made from the same objects.

# What every library of ours has, if it is a shared one: a version, and no names but our own.
function(xel_shared_library library)
  set(exports "${PROJECT_SOURCE_DIR}/cmake/exports.map")
  target_link_options(${library} PRIVATE "LINKER:--version-script=${exports}")
  set_target_properties(${library} PROPERTIES LINK_DEPENDS "${exports}"
                        VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR})
  if(NOT XEL_SANITIZE)
    # A dependency that was forgotten fails here, not in the programs that use the library.
    target_link_options(${library} PRIVATE LINKER:-z,defs)
  endif()
endfunction()

set(xel_core_dependencies CURL::libcurl LibXml2::LibXml2 Boost::json uriparser::uriparser
    Threads::Threads)

file(GLOB_RECURSE xel_core_sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/src/*.cpp")
list(FILTER xel_core_sources EXCLUDE REGEX "/src/(simulation|backends/gstreamer)/")
add_library(xel_core OBJECT ${xel_core_sources})
target_include_directories(xel_core PUBLIC include PRIVATE src)
target_compile_definitions(xel_core PRIVATE XEL_VERSION="${PROJECT_VERSION}")
target_link_libraries(xel_core PRIVATE xel_options ${xel_core_dependencies})

file(GLOB_RECURSE xel_simulation_sources CONFIGURE_DEPENDS
     "${PROJECT_SOURCE_DIR}/src/simulation/*.cpp")
add_library(xel_simulation_core OBJECT ${xel_simulation_sources})
target_include_directories(xel_simulation_core PUBLIC include PRIVATE src)
target_link_libraries(xel_simulation_core PRIVATE xel_options Boost::json)

file(GLOB_RECURSE xel_headers CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/include/xel/*.h")
set(xel_simulation_headers ${xel_headers})
list(FILTER xel_headers EXCLUDE REGEX "/include/xel/(simulation|gstreamer)/")
list(FILTER xel_simulation_headers INCLUDE REGEX "/include/xel/simulation/")

add_library(xel $<TARGET_OBJECTS:xel_core>)
add_library(xel::xel ALIAS xel)
target_sources(xel PUBLIC FILE_SET HEADERS BASE_DIRS include FILES ${xel_headers})
target_compile_features(xel PUBLIC cxx_std_20)
target_link_libraries(xel PRIVATE $<BUILD_INTERFACE:xel_options> ${xel_core_dependencies})
xel_shared_library(xel)

add_library(xel_simulation $<TARGET_OBJECTS:xel_simulation_core>)
add_library(xel::simulation ALIAS xel_simulation)
target_sources(xel_simulation PUBLIC FILE_SET HEADERS BASE_DIRS include
               FILES ${xel_simulation_headers})
target_link_libraries(xel_simulation PUBLIC xel PRIVATE $<BUILD_INTERFACE:xel_options> Boost::json)
set_target_properties(xel_simulation PROPERTIES OUTPUT_NAME xel-simulation EXPORT_NAME simulation)
xel_shared_library(xel_simulation)
