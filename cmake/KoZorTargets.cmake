# What every target of our own code has in common: the language level, hidden symbols, warnings as
# errors, and the sanitizers that a preset asks for.

function(kozor_own_code target)
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
  if(MSVC)
    target_compile_options(${target} PRIVATE /W4 /permissive- $<$<BOOL:${KOZOR_WERROR}>:/WX>)
  else()
    target_compile_options(${target} PRIVATE
      -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
      -Woverloaded-virtual -Wcast-qual -Wformat=2
      # gcc 12 warns of the inside of std::string's operator+ when it optimises.
      $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
      $<$<BOOL:${KOZOR_WERROR}>:-Werror>)
  endif()
  if(KOZOR_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${KOZOR_SANITIZE}
      -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(${target} PRIVATE -fsanitize=${KOZOR_SANITIZE})
  endif()
endfunction()

# A shared library whose calls to its own functions stay inside, whatever functions of the same name
# the program has.
function(kozor_calls_itself target)
  target_link_options(${target} PRIVATE $<$<PLATFORM_ID:Linux>:LINKER:-Bsymbolic-functions>)
endfunction()

# Compiles the standard headers that most of our sources include once for the whole target.  It hides
# a missing include, so not every preset asks for it.
function(kozor_precompile target)
  if(KOZOR_PRECOMPILED_HEADERS)
    target_precompile_headers(${target} PRIVATE
      <algorithm> <array> <cstdint> <functional> <memory> <optional> <span> <string> <string_view>
      <unordered_map> <utility> <vector>)
  endif()
endfunction()

# Tests are built once and run for seconds: they are compiled for a short build, whatever the build
# type; what they test isn't.  They are not position independent by request, so that programs and
# their support library can share one precompiled header.
function(kozor_quick_build target)
  set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE OFF)
  if(NOT MSVC)
    target_compile_options(${target} PRIVATE -O0 -g0)
  endif()
  if(KOZOR_SANITIZE)
    target_compile_options(${target} PRIVATE -fno-sanitize=undefined)
  endif()
endfunction()

# A GoogleTest program whose cases CTest knows one by one.  Arguments behind the name are sources;
# LIBS names what it links.  It is built into DIRECTORY, or beside the module that the tests load.
function(kozor_test name)
  cmake_parse_arguments(ARG "" "DIRECTORY" "LIBS" ${ARGN})
  add_executable(${name} ${ARG_UNPARSED_ARGUMENTS})
  kozor_own_code(${name})
  kozor_quick_build(${name})
  target_precompile_headers(${name} REUSE_FROM KoZorTestSupport)
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} KoZorTestSupport GTest::gmock GTest::gtest_main)
  if(ARG_DIRECTORY)
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${ARG_DIRECTORY})
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()

# Sources of the present folder that the self-extracting stub takes over, where they are compiled a
# second time, with the stub's own flags.
function(kozor_stub_sources)
  list(TRANSFORM ARGN PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
  set_property(GLOBAL APPEND PROPERTY KOZOR_STUB_SOURCES ${ARGN})
endfunction()
