# Uses the project from another one, in the way that WAY names.  CTest passes BUILD, SOURCE, WORK,
# GENERATOR, CXX, FLAGS and WAY.
#
# find_package, pkg-config: an installed tree, which was moved after it was installed.
# add_subdirectory: a folder of the other project's build, without tests and install rules.
function(must_run)
  execute_process(COMMAND ${ARGV} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT result EQUAL 0)
    list(JOIN ARGV " " command)
    message(FATAL_ERROR "${command}\n${output}")
  endif()
  set(output "${output}" PARENT_SCOPE)
endfunction()

# Each element of a run path must be absolute or begin with $ORIGIN: an empty or relative one means
# the current directory, from which anybody's library could be loaded.
function(check_run_paths)
  find_program(READELF readelf)
  foreach(file ${ARGN})
    execute_process(COMMAND ${READELF} -d ${file} OUTPUT_VARIABLE dynamic ERROR_QUIET)
    if(dynamic MATCHES "R(UN)?PATH[^[]*\\[([^]]*)\\]")
      set(path ":${CMAKE_MATCH_2}:")
      if(path MATCHES ":(:|[^/$:][^:]*:)")
        message(FATAL_ERROR "${file}: the run path ${path} leads to the current directory")
      endif()
    endif()
  endforeach()
endfunction()

set(consumer ${SOURCE}/examples/consumer)
file(REMOVE_RECURSE ${WORK})
if(NOT WAY STREQUAL "add_subdirectory")
  must_run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/before)
  file(RENAME ${WORK}/before ${WORK}/installed)
endif()

if(WAY STREQUAL "find_package")
  must_run(${CMAKE_COMMAND} -S ${consumer} -B ${WORK}/build -D CMAKE_PREFIX_PATH=${WORK}/installed
    -D CMAKE_CXX_COMPILER=${CXX} "-DCMAKE_CXX_FLAGS=${FLAGS}")
  must_run(${CMAKE_COMMAND} --build ${WORK}/build)
  must_run(${WORK}/build/consumer)
elseif(WAY STREQUAL "add_subdirectory")
  file(WRITE ${WORK}/CMakeLists.txt "
    cmake_minimum_required(VERSION 3.23)
    project(Guest LANGUAGES CXX)
    add_subdirectory(${SOURCE} kozor-build)
    add_executable(consumer ${consumer}/consumer.cpp)
    target_link_libraries(consumer PRIVATE KoZor::KoZor)
    add_dependencies(consumer KoZor::Archiver)\n")
  # What counts here is how long it compiles: not optimised, as no build type is given, and with the
  # standard headers precompiled.
  must_run(${CMAKE_COMMAND} -G ${GENERATOR} -S ${WORK} -B ${WORK}/build -D CMAKE_CXX_COMPILER=${CXX}
    "-DCMAKE_CXX_FLAGS=${FLAGS}" -D KOZOR_PRECOMPILED_HEADERS=ALL)
  must_run(${CMAKE_COMMAND} --build ${WORK}/build --parallel 2 --target consumer)
  must_run(${CMAKE_COMMAND} -E chdir / ${WORK}/build/consumer)
  if(EXISTS ${WORK}/build/kozor-build/KoZorConfig.cmake)
    message(FATAL_ERROR "install rules are forced on the other project")
  endif()
  execute_process(COMMAND ${CMAKE_COMMAND} -G ${GENERATOR} -S ${WORK} -B ${WORK}/static
    -D CMAKE_CXX_COMPILER=${CXX} -D BUILD_SHARED_LIBS=OFF
    RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE refusal)
  if(result EQUAL 0 OR NOT refusal MATCHES "always built as shared libraries")
    message(FATAL_ERROR "a static library isn't refused: ${refusal}")
  endif()
else()
  find_program(PKG_CONFIG pkg-config)
  if(NOT PKG_CONFIG)
    message("SKIPPED: pkg-config isn't installed")
    return()
  endif()
  file(GLOB_RECURSE package ${WORK}/installed/*/kozor.pc)
  cmake_path(GET package PARENT_PATH package_folder)
  set(ENV{PKG_CONFIG_PATH} ${package_folder})
  must_run(${PKG_CONFIG} --cflags --libs kozor)
  string(STRIP "${output}" package_flags)
  separate_arguments(package_flags UNIX_COMMAND "${package_flags}")
  separate_arguments(flags UNIX_COMMAND "${FLAGS}")
  must_run(${CXX} -std=c++20 ${flags} ${consumer}/consumer.cpp -o ${WORK}/consumer ${package_flags})
  must_run(${PKG_CONFIG} --variable=libdir kozor)
  string(STRIP "${output}" libdir)
  set(ENV{LD_LIBRARY_PATH} ${libdir})
  must_run(${WORK}/consumer)
endif()
if(NOT output MATCHES "KoZor is ready")
  message(FATAL_ERROR "the consumer says: ${output}")
endif()

if(WAY STREQUAL "find_package")
  unset(ENV{LD_LIBRARY_PATH})
  must_run(${WORK}/installed/bin/kozor --version)
  file(GLOB_RECURSE binaries ${WORK}/installed/bin/* ${WORK}/installed/lib*/* ${BUILD}/bin/* ${BUILD}/lib/*)
  check_run_paths(${binaries})
endif()
