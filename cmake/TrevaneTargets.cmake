# One interface target carries what every target of ours is compiled with; the two functions below are the
# only ways a library or a test is made.

add_library(trevane_options INTERFACE)
target_compile_features(trevane_options INTERFACE cxx_std_20)
target_compile_options(trevane_options INTERFACE -Wall -Wextra $<$<BOOL:${TREVANE_WERROR}>:-Werror>)
target_compile_definitions(trevane_options INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_URL_CAST_FROM_STRING QT_NO_CAST_FROM_BYTEARRAY
  QT_NO_CONTEXTLESS_CONNECT QT_DISABLE_DEPRECATED_BEFORE=0x060400 QT_NO_KEYWORDS QT_NO_FOREACH)
target_include_directories(trevane_options INTERFACE "${PROJECT_SOURCE_DIR}")

if(TREVANE_SANITIZE)
  target_compile_options(trevane_options INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(trevane_options INTERFACE -fsanitize=address,undefined)
endif()

if(TREVANE_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "TREVANE_FUZZ needs Clang and its libFuzzer: cmake --preset fuzz.")
  endif()
  # All code of ours tells the fuzzer where it goes.
  target_compile_options(trevane_options INTERFACE
    -fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(trevane_options INTERFACE -fsanitize=address,undefined)
endif()

if(WIN32)
  # Two builds of one source are equal, byte for byte: neither the clock nor the builder's folders are in them.
  target_compile_options(trevane_options INTERFACE
    "-ffile-prefix-map=${PROJECT_SOURCE_DIR}=." "-ffile-prefix-map=${PROJECT_BINARY_DIR}=build")
  target_link_options(trevane_options INTERFACE -Wl,--no-insert-timestamp $<$<CONFIG:Release>:-s>
    # Calls of Windows 10 are linked against: an older one says so in words instead of naming a missing call.
    -Wl,--major-os-version=10,--minor-os-version=0,--major-subsystem-version=10,--minor-subsystem-version=0)
endif()

# trevane_library(NAME layer SOURCES files... LINK targets...): a library target is a layer. Qt Core alone is linked
# unless LINK names more, so that a widget in a lower layer does not link.
function(trevane_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_link_libraries(${name} PUBLIC trevane_options Qt6::Core ${ARG_LINK})
endfunction()

# trevane_test(NAME SOURCES files... LINK targets... [LABELS labels...]): one GoogleTest program, every test of it a
# CTest test of its own, on Qt's offscreen platform and in C.UTF-8. WITHOUT_MANIFEST: on Windows it runs in the system's
# code page, as the program does where its manifest is not honoured.
# TOGETHER parameters...: all tests of each of these parameters run in one process, as one CTest test.
# With TREVANE_TESTS_IN_PARTS a program is four CTest tests: where the start of a process takes longer than most tests.
function(trevane_test name)
  cmake_parse_arguments(ARG "WITHOUT_MANIFEST" "" "SOURCES;LINK;LABELS;TOGETHER" ${ARGN})
  if(NOT ARG_LABELS)
    # An empty label would swallow the property behind it.
    set(ARG_LABELS ${name})
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE trevane_options trevane_test_support ${ARG_LINK}
    # Last, so that a main of the test's own comes first.
    GTest::gtest_main)
  set(environment "QT_QPA_PLATFORM=offscreen;LC_ALL=C.UTF-8;QT_LOGGING_RULES=qt.qpa.*=false;ASAN_OPTIONS=detect_leaks=0")
  if(WIN32)
    # One CTest test a program: a start under Wine takes longer than most cases.
    if(NOT ARG_WITHOUT_MANIFEST)
      target_link_libraries(${name} PRIVATE trevane_manifest)
    endif()
    qt_import_plugins(${name} INCLUDE Qt6::QOffscreenIntegrationPlugin)
    add_test(NAME ${name} COMMAND ${name})
    set_tests_properties(${name} PROPERTIES TIMEOUT 900 LABELS "${ARG_LABELS}" ENVIRONMENT "${environment}")
    return()
  endif()
  set(alone "*")
  foreach(case IN LISTS ARG_TOGETHER)
    add_test(NAME "${name}.${case}" COMMAND ${name} "--gtest_filter=*/${case}")
    set_tests_properties("${name}.${case}" PROPERTIES TIMEOUT 300 LABELS "${ARG_LABELS}" ENVIRONMENT "${environment}")
    string(APPEND alone ":*/${case}")
  endforeach()
  # "*" alone stays, "*:a:b" is "-a:b".
  string(REGEX REPLACE "^\\*:" "-" alone "${alone}")
  if(TREVANE_TESTS_IN_PARTS)
    foreach(part RANGE 1 4)
      math(EXPR index "${part} - 1")
      add_test(NAME "${name}.${part}of4" COMMAND ${name})
      set_tests_properties("${name}.${part}of4" PROPERTIES TIMEOUT 900 LABELS "${ARG_LABELS}"
        ENVIRONMENT "${environment};GTEST_TOTAL_SHARDS=4;GTEST_SHARD_INDEX=${index}")
      if(ARG_TOGETHER)
        set_property(TEST "${name}.${part}of4" APPEND PROPERTY ENVIRONMENT "GTEST_FILTER=${alone}")
      endif()
    endforeach()
    return()
  endif()
  gtest_discover_tests(${name}
    DISCOVERY_MODE PRE_TEST
    DISCOVERY_TIMEOUT 60
    TEST_FILTER "${alone}"
    PROPERTIES
      TIMEOUT 300
      LABELS "${ARG_LABELS}"
      ENVIRONMENT "${environment}")
endfunction()
