# Functions for the project's own targets.

# Makes the include root of one source folder: a directory in the build tree that holds only a link
# to the folder, under its path from the root of the project.
function(kozor_include_root result folder)
  string(REPLACE / - name ${folder})
  set(root ${PROJECT_BINARY_DIR}/include-roots/${name})
  cmake_path(GET folder PARENT_PATH parent)
  file(MAKE_DIRECTORY ${root}/${parent})
  file(CREATE_LINK ${PROJECT_SOURCE_DIR}/${folder} ${root}/${folder} RESULT error SYMBOLIC)
  if(NOT error EQUAL 0)  # Windows doesn't let ordinary users make links: use the whole tree.
    set(root ${PROJECT_SOURCE_DIR})
  endif()
  set(${result} ${root} PARENT_SCOPE)
endfunction()

# Lets a target, and what links it, include headers of the given folders by their paths from the
# root of the project, such as "engine/codec/Decode.h".  Headers of folders neither named nor linked
# can't be included.
function(kozor_include_folders target)
  foreach(folder ${ARGN})
    kozor_include_root(root ${folder})
    target_include_directories(${target} PUBLIC $<BUILD_INTERFACE:${root}>)
  endforeach()
endfunction()

# For every target: the language level, hidden symbols, warnings, the preset's sanitizers and
# counters, and the headers of the target's own folder.
function(kozor_own_code target)
  cmake_path(RELATIVE_PATH CMAKE_CURRENT_SOURCE_DIR BASE_DIRECTORY ${PROJECT_SOURCE_DIR}
    OUTPUT_VARIABLE folder)
  if(NOT folder STREQUAL ".")
    kozor_include_folders(${target} ${folder})
  endif()
  kozor_include_folders(${target} platform/base)  # depends on nothing; open to every target
  target_compile_features(${target} PUBLIC cxx_std_20)
  set_target_properties(${target} PROPERTIES
    CXX_EXTENSIONS OFF
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    POSITION_INDEPENDENT_CODE ON)
  if(MSVC)
    target_compile_options(${target} PRIVATE /W4 /permissive- $<$<BOOL:${KOZOR_WERROR}>:/WX>)
  else()
    target_compile_options(${target} PRIVATE
      -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
      -Woverloaded-virtual -Wcast-qual -Wformat=2
      $<$<BOOL:${KOZOR_WERROR}>:-Werror>)
  endif()
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE
      -Wno-restrict  # gcc 12 warns about the inside of std::string's operator+ when optimising.
      -fno-gnu-unique)  # A unique symbol would keep the archiver loaded until the program ends.
  endif()
  if(MINGW)
    target_compile_definitions(${target} PRIVATE __MINGW_USE_VC2005_COMPAT)  # time_t has 64 bits on x86, too
  endif()
  if(KOZOR_SANITIZE)
    target_compile_options(${target} PRIVATE -fsanitize=${KOZOR_SANITIZE}
      -fno-sanitize-recover=all -fno-omit-frame-pointer
      # The library and the archiver each declare the types of the binding for themselves.
      $<$<CXX_COMPILER_ID:Clang>:-fno-sanitize=function>)
    target_link_options(${target} PRIVATE -fsanitize=${KOZOR_SANITIZE})
  endif()
  if(KOZOR_COVERAGE)
    target_compile_options(${target} PRIVATE -fprofile-instr-generate -fcoverage-mapping)
    target_link_options(${target} PRIVATE -fprofile-instr-generate)
  endif()
endfunction()

# For a shared library: sets its version, and binds calls inside it to its own functions, even if a
# program has functions of the same name.
function(kozor_shared_library target)
  # While the major version is 0, every minor version may change the binary interface.
  set_target_properties(${target} PROPERTIES
    VERSION ${PROJECT_VERSION}
    SOVERSION ${PROJECT_VERSION_MAJOR}.${PROJECT_VERSION_MINOR}
    VERIFY_INTERFACE_HEADER_SETS ${PROJECT_IS_TOP_LEVEL})
  if(NOT WIN32 AND NOT APPLE)
    target_link_options(${target} PRIVATE LINKER:-Bsymbolic-functions)
  endif()
endfunction()

# Sets the run path of a target that is built into ${PROJECT_BINARY_DIR}/BUILT and installed into
# the absolute directory INSTALLED, so that it finds the project's libraries in both places, also
# after the tree has been moved.  The entries don't change at installation: run paths that CMake can
# rewrite end with an empty element, which means the current directory.
function(kozor_runpath target built installed)
  cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR BASE_DIRECTORY ${installed} OUTPUT_VARIABLE to_installed)
  set(libraries ${PROJECT_BINARY_DIR}/lib)
  cmake_path(RELATIVE_PATH libraries BASE_DIRECTORY ${PROJECT_BINARY_DIR}/${built} OUTPUT_VARIABLE to_built)
  set(entries $ORIGIN/${to_installed} $ORIGIN/${to_built})
  list(TRANSFORM entries REPLACE "/\\.$" "")
  list(REMOVE_DUPLICATES entries)
  set_target_properties(${target} PROPERTIES BUILD_WITH_INSTALL_RPATH ON INSTALL_RPATH "${entries}")
endfunction()

# Precompiles common standard headers for the target.  That hides missing includes, and at -O3 gcc
# 12 warns about the inside of strings, so only some presets use it.
function(kozor_precompile target)
  if(KOZOR_PRECOMPILED_HEADERS STREQUAL "ALL")
    target_precompile_headers(${target} PRIVATE
      <algorithm> <array> <cstdint> <functional> <memory> <optional> <span> <string> <string_view>
      <unordered_map> <utility> <vector>)
  endif()
endfunction()

# Tests run for seconds, so compile time matters more: they aren't optimised, whatever the build
# type; the code under test is.  Position-independent code is off so that the programs can share the
# precompiled header of their support library.
function(kozor_quick_build target)
  set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE OFF)
  if(NOT MSVC)
    target_compile_options(${target} PRIVATE $<$<NOT:$<CONFIG:Debug>>:-O0;-g0>)
  endif()
  if(KOZOR_SANITIZE)
    target_compile_options(${target} PRIVATE -fno-sanitize=undefined)
  endif()
endfunction()

# Adds a GoogleTest program; CTest runs its cases one by one.  Arguments after the name are sources;
# LIBS are libraries to link.  It is built into DIRECTORY, by default beside the module that the
# tests load.  A LABEL excludes its cases from the default run: "clock" marks those whose outcome
# depends on timing.
function(kozor_test name)
  cmake_parse_arguments(ARG "" "DIRECTORY;LABEL" "LIBS" ${ARGN})
  add_executable(${name} ${ARG_UNPARSED_ARGUMENTS})
  kozor_own_code(${name})
  kozor_quick_build(${name})
  if(KOZOR_PRECOMPILED_HEADERS)
    target_precompile_headers(${name} REUSE_FROM KoZorTestSupport)
  endif()
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} KoZorTestSupport GTest::gmock GTest::gtest_main)
  if(ARG_DIRECTORY)
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${ARG_DIRECTORY})
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 
    PROPERTIES TIMEOUT 300 LABELS "${ARG_LABEL}")
endfunction()

# Registers sources of the current folder that are also compiled into the self-extracting stub, with
# its own flags.
function(kozor_stub_sources)
  list(TRANSFORM ARGN PREPEND ${CMAKE_CURRENT_SOURCE_DIR}/)
  set_property(GLOBAL APPEND PROPERTY KOZOR_STUB_SOURCES ${ARGN})
endfunction()
