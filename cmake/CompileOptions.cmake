# How every target of ours is compiled.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

add_library(xel_options INTERFACE)
# A member that a designated initializer leaves out is meant to have its default.
target_compile_options(xel_options INTERFACE -Wall -Wextra -Wpedantic -Wshadow
                       -Wno-missing-field-initializers
                       -Wnon-virtual-dtor -Woverloaded-virtual
                       $<$<BOOL:${XEL_WARNINGS_AS_ERRORS}>:-Werror>)
# GCC 12 sees overlaps and overflows in the copies that std::string makes (GCC bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(xel_options INTERFACE -Wno-restrict -Wno-array-bounds
                         -Wno-stringop-overflow -Wno-stringop-overread)
endif()
if(XEL_SANITIZE)
  # GCC cannot tell whether instrumented code initialises what it uses.
  target_compile_options(xel_options INTERFACE -fsanitize=${XEL_SANITIZE} -fno-omit-frame-pointer
                         -fno-sanitize-recover=all
                         $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
  target_compile_definitions(xel_options INTERFACE _GLIBCXX_ASSERTIONS)
  target_link_options(xel_options INTERFACE -fsanitize=${XEL_SANITIZE})
endif()
