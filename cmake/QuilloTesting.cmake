# The host's first-party effects (tests/data/README.md), which tests and benchmarks build their
# catalogues from.
set(QUILLO_HOST_EFFECTS ${PROJECT_SOURCE_DIR}/tests/data/host-effects.tsv)

# quillo_add_gtest(<name> LABEL <label> [RESOURCE_LOCK <lock>] SOURCES <files...> LIBS <targets...>)
# One GoogleTest executable per area; each test case becomes a CTest test carrying the label (and the
# lock, which keeps the tests sharing it from running at the same time).
function(quillo_add_gtest name)
  cmake_parse_arguments(ARG "" "LABEL;RESOURCE_LOCK" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} GTest::gtest GTest::gtest_main Threads::Threads)
  target_compile_definitions(${name} PRIVATE
    QUILLO_SOURCE_DIR="${CMAKE_SOURCE_DIR}"
    QUILLO_HOST_EFFECTS="${QUILLO_HOST_EFFECTS}")
  if(WIN32)
    # Under Wine each process start costs a fraction of a second: one CTest test per executable, every
    # one labelled win32.
    add_test(NAME ${name} COMMAND ${name} --gtest_brief=1)
    set_tests_properties(${name} PROPERTIES LABELS win32 TIMEOUT 300)
    if(ARG_RESOURCE_LOCK)
      set_tests_properties(${name} PROPERTIES RESOURCE_LOCK ${ARG_RESOURCE_LOCK})
    endif()
    return()
  endif()
  set(_properties LABELS ${ARG_LABEL})
  if(ARG_RESOURCE_LOCK)
    list(APPEND _properties RESOURCE_LOCK ${ARG_RESOURCE_LOCK})
  endif()
  gtest_discover_tests(${name}
    PROPERTIES ${_properties}
    DISCOVERY_TIMEOUT 60)
endfunction()

# quillo_add_benchmark(<name> SOURCES <files...> LIBS <targets...>)
function(quillo_add_benchmark name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS} benchmark::benchmark Threads::Threads)
  target_compile_definitions(${name} PRIVATE
    QUILLO_SOURCE_DIR="${CMAKE_SOURCE_DIR}"
    QUILLO_HOST_EFFECTS="${QUILLO_HOST_EFFECTS}")
endfunction()

# quillo_add_fuzzer(<name> SOURCES <files...> LIBS <targets...>)
# Seeds live in fuzz/corpus/<name>; scripts/fuzz.sh runs every target for a fixed time.
function(quillo_add_fuzzer name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LIBS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE ${ARG_LIBS})
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/fuzzers)
  set_property(GLOBAL APPEND PROPERTY QUILLO_FUZZERS ${name})
endfunction()

find_package(Threads REQUIRED)
if(QUILLO_TESTS AND WIN32)
  # No Windows build of GoogleTest is packaged: Debian's sources (libgtest-dev) are built with the
  # project.
  set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
elseif(QUILLO_TESTS)
  find_package(GTest REQUIRED)
  include(GoogleTest)
endif()
if(QUILLO_BENCH)
  find_package(benchmark REQUIRED)
endif()

# nimbit_ui_link(<target> <backend>): links the toolkit core with one backend. The core calls the
# backend's factory functions and the backend calls back into the core, so the two static
# libraries are searched as a group.
function(nimbit_ui_link target backend)
  target_link_libraries(${target} PRIVATE "$<LINK_GROUP:RESCAN,nimbit_ui,${backend}>" nimbit_foundation)
endfunction()
