# Flags of our own targets. They stay private: nothing of this reaches a consumer of the package.
add_library(qzlog_warnings INTERFACE)
target_compile_options(qzlog_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # g++ 12 sees overlaps that cannot be when optimised code concatenates std::string (its bug 105651).
  target_compile_options(qzlog_warnings INTERFACE -Wno-restrict)
endif()

option(QZLOG_WERROR "Treat warnings as errors" OFF)
if(QZLOG_WERROR)
  target_compile_options(qzlog_warnings INTERFACE -Werror)
endif()

set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
if(PROJECT_IS_TOP_LEVEL AND NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "" FORCE)
endif()

# Files beyond 2 GiB and times beyond 2038, on 32-bit hosts too.
if(CMAKE_SIZEOF_VOID_P EQUAL 4)
  add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)
endif()

set(QZLOG_SANITIZE "" CACHE STRING "Sanitizers to build with, e.g. address,undefined or thread")
if(QZLOG_SANITIZE)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # What the sanitizers insert keeps g++ from seeing that std::regex and others initialise what they use (its bug 105562).
    target_compile_options(qzlog_warnings INTERFACE -Wno-maybe-uninitialized)
  endif()
  add_compile_options(-fsanitize=${QZLOG_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${QZLOG_SANITIZE})
endif()
option(QZLOG_COVERAGE "Measure coverage" OFF)
if(QZLOG_COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()
