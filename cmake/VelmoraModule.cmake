# SPDX-License-Identifier: GPL-3.0-or-later

# Targets of this project: one static library per folder of src/, thin programs and test programs over them.
include(GNUInstallDirs)

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Own code only: linked privately, so that nobody else's headers are held to it.
add_library(velmora_warnings INTERFACE)
target_compile_options(velmora_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wnon-virtual-dtor
  -Woverloaded-virtual -Wold-style-cast -Wcast-qual -Wformat=2 -Wimplicit-fallthrough
  $<$<BOOL:${VELMORA_DEVELOPER}>:-Werror>)
# For programs whose sources are compiled together: a name at the top of one may be a local of another.
add_library(velmora_test_warnings INTERFACE)
target_compile_options(velmora_test_warnings INTERFACE -Wno-shadow $<$<CXX_COMPILER_ID:GNU>:-Wshadow=local>)

if(VELMORA_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
  # What the sanitizers add makes GCC 12 see values of optionals and regular expressions that are read before they are set.
  target_compile_options(velmora_warnings INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
endif()

# Compiles a target's sources all at once: where the headers of the test framework, JSON or the
# command line take longer to read than the source itself, it more than halves the work. Names in unnamed namespaces
# must then differ within a folder. VELMORA_TOGETHER=OFF compiles each alone, as clang-tidy does.
function(velmora_together target)
  set_target_properties(${target} PROPERTIES UNITY_BUILD ${VELMORA_TOGETHER} UNITY_BUILD_BATCH_SIZE 0)
endfunction()

if(VELMORA_FUZZ)
  # The search sees which ways through the sources a text takes, in every library that it reaches.
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()

# velmora_module(FOLDER [TOGETHER] LINKS targets... [HIDDEN targets...] [WITHOUT patterns...]): the library
# velmora_<folder> out of every source in src/FOLDER and the folders below it but main.cpp and those whose names fit a
# pattern. Headers of HIDDEN targets reach the folder's own sources alone. TOGETHER: see velmora_together.
# In developer mode each header of the folder is also compiled alone, but for those that a source of their name includes
# first (scripts/check-deps sees to that).
function(velmora_module folder)
  cmake_parse_arguments(ARG "TOGETHER" "" "LINKS;HIDDEN;WITHOUT" ${ARGN})
  string(REPLACE "/" "_" suffix "${folder}")
  set(target velmora_${suffix})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/src/${folder}/*.cpp")
  file(GLOB_RECURSE headers CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/src/${folder}/*.h")
  list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
  foreach(pattern IN LISTS ARG_WITHOUT)
    list(FILTER sources EXCLUDE REGEX "/${pattern}\\.cpp$")
  endforeach()
  if(NOT sources)
    add_library(${target} INTERFACE)
    target_include_directories(${target} INTERFACE "${PROJECT_SOURCE_DIR}/src")
    target_link_libraries(${target} INTERFACE ${ARG_LINKS})
    return()
  endif()
  add_library(${target} STATIC)
  target_sources(${target} PRIVATE ${sources} ${headers})
  set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX)
  target_include_directories(${target} PUBLIC "${PROJECT_SOURCE_DIR}/src")
  target_link_libraries(${target} PUBLIC ${ARG_LINKS} PRIVATE ${ARG_HIDDEN} velmora_warnings)
  if(ARG_TOGETHER)
    velmora_together(${target})
  endif()
  if(VELMORA_DEVELOPER AND headers)
    velmora_lone_headers(${target} "${headers}" "${sources}")
  endif()
endfunction()

# One source per header that includes nothing else, so that a header which leans on its neighbours does not build.
function(velmora_lone_headers target headers sources)
  set(lone)
  foreach(header IN LISTS headers)
    file(RELATIVE_PATH path "${PROJECT_SOURCE_DIR}/src" "${header}")
    string(REGEX REPLACE "\\.h$" "" name "${path}")
    string(REGEX REPLACE "\\.h$" ".cpp" own_source "${header}")
    if(own_source IN_LIST sources)
      continue()
    endif()
    set(source "${PROJECT_BINARY_DIR}/lone/${name}.cpp")
    file(CONFIGURE OUTPUT "${source}" CONTENT "#include \"${path}\" // IWYU pragma: keep\n")
    list(APPEND lone "${source}")
  endforeach()
  if(NOT lone)
    return()
  endif()
  add_library(${target}_lone OBJECT ${lone})
  target_link_libraries(${target}_lone PRIVATE ${target} velmora_warnings)
endfunction()

# velmora_program(NAME COMPONENT package MAIN source LINKS targets...): a thin program, installed.
function(velmora_program name)
  cmake_parse_arguments(ARG "" "MAIN;COMPONENT" "LINKS" ${ARGN})
  if(NOT EXISTS "${PROJECT_SOURCE_DIR}/${ARG_MAIN}")
    return()
  endif()
  add_executable(${name} "${ARG_MAIN}")
  set_target_properties(${name} PROPERTIES ENABLE_EXPORTS ON)  # so that crash reports name functions
  target_link_libraries(${name} PRIVATE ${ARG_LINKS} velmora_warnings)
  install(TARGETS ${name} RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT ${ARG_COMPONENT})
endfunction()

# Where scripts/fetch-server puts the program.
set(cache "$ENV{XDG_CACHE_HOME}")
if(NOT cache)
  set(cache "$ENV{HOME}/.cache")
endif()
set(VELMORA_FETCHED_MYSQL "${cache}/velmora/servers/mysql/server")

# velmora_tests(FOLDER [DEEP] [SINGLE [MYSQL]] [PLAIN] LINKS targets... [WITHOUT patterns...]): the test program of tests/FOLDER but for the
# sources whose names fit a pattern, one CTest entry per test. DEEP
# takes the folders below it too. SINGLE is for tests that share something slow to start:
# the program is one entry, and writes a report of its own on what ran into the folder single-reports. MYSQL gives it a
# second entry, on MySQL, where scripts/fetch-server has brought that. PLAIN does without
# the precompiled header, which wants the same compiler flags everywhere.
function(velmora_tests folder)
  cmake_parse_arguments(ARG "DEEP;SINGLE;PLAIN;MYSQL" "" "LINKS;WITHOUT" ${ARGN})
  string(REPLACE "/" "_" suffix "${folder}")
  set(glob GLOB)
  if(ARG_DEEP)
    set(glob GLOB_RECURSE)
  endif()
  file(${glob} sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/tests/${folder}/*.cpp")
  foreach(pattern IN LISTS ARG_WITHOUT)
    list(FILTER sources EXCLUDE REGEX "/${pattern}\\.cpp$")
  endforeach()
  if(NOT sources)
    return()
  endif()
  set(target test_${suffix})
  add_executable(${target} ${sources})
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}/tests")
  target_compile_definitions(${target} PRIVATE VELMORA_SOURCE_DIR="${PROJECT_SOURCE_DIR}")
  # The C++ library comes first: some linkers would otherwise take a text's operations out of the support library, and
  # with them objects that need rooms which this program does not link.
  target_link_libraries(${target} PRIVATE stdc++ velmora_test_support ${ARG_LINKS} GTest::gmock_main velmora_warnings velmora_test_warnings)
  velmora_together(${target})
  if(NOT ARG_PLAIN)
    target_precompile_headers(${target} REUSE_FROM velmora_test_support)
  endif()
  if(ARG_SINGLE)
    add_test(NAME ${target} COMMAND ${target} "--gtest_output=xml:${PROJECT_BINARY_DIR}/single-reports/${target}.xml")
    set_tests_properties(${target} PROPERTIES TIMEOUT 300)
    if(ARG_MYSQL AND EXISTS "${VELMORA_FETCHED_MYSQL}")
      add_test(NAME ${target}_on_mysql COMMAND ${target} "--gtest_output=xml:${PROJECT_BINARY_DIR}/single-reports/${target}_on_mysql.xml")
      set_tests_properties(${target}_on_mysql PROPERTIES TIMEOUT 300 ENVIRONMENT VELMORA_TEST_SERVER=mysql)
    endif()
  else()
    gtest_discover_tests(${target} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 120)
  endif()
endfunction()
