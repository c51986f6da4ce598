# quillmark_module(NAME USES LIBRARIES…): one folder, one static library, its dependencies in one line.
# A module under src/ takes every .cpp below its folder but main.cpp; headers are included as "folder/Header.h".

set(QUILLMARK_STRICT_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # g++ 12 warns of a variant's other alternatives, and of copies in string concatenations that overlap or go beyond an
  # end where none does (its bug 105651).
  set(QUILLMARK_FALSE_ALARMS -Wno-maybe-uninitialized -Wno-restrict -Wno-array-bounds -Wno-stringop-overflow)
  list(APPEND QUILLMARK_STRICT_WARNINGS ${QUILLMARK_FALSE_ALARMS})
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  list(APPEND QUILLMARK_STRICT_WARNINGS -Wno-deprecated-declarations) # g++ 12's own headers use what they deprecate
endif()
set(QUILLMARK_QT_WARNINGS -Wall -Wextra -Werror)

# What most files of a floor include, compiled once for each library and test program.
set(QUILLMARK_STANDARD_HEADERS
  <algorithm> <chrono> <filesystem> <functional> <map> <memory> <optional> <span> <string> <string_view> <variant>
  <vector>)
set(QUILLMARK_QT_HEADERS <QApplication> <QEvent> <QMenu> <QPainter> <QWidget>)

find_program(LLD ld.lld) # links a test program of the Qt floors in an eighth of the time

function(quillmark_precompile name)
  if(QUILLMARK_PCH)
    target_precompile_headers(${name} PRIVATE ${QUILLMARK_STANDARD_HEADERS} ${ARGN})
  endif()
endfunction()

# Alignment is asked for only where blocks of units and bytes are taken for each other.
function(quillmark_sanitize name)
  if(CMAKE_CXX_FLAGS MATCHES "fsanitize=[a-z,]*undefined" AND name MATCHES "^(base|text)(_tests)?$")
    target_compile_options(${name} PRIVATE -fsanitize=alignment)
  endif()
endfunction()

function(quillmark_module name)
  cmake_parse_arguments(arg "QT" "" "USES" ${ARGN})
  file(GLOB_RECURSE sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  list(FILTER sources EXCLUDE REGEX "/main\\.cpp$")
  add_library(${name} STATIC ${sources})
  set_target_properties(${name} PROPERTIES LINKER_LANGUAGE CXX)
  target_include_directories(${name} PUBLIC ${CMAKE_SOURCE_DIR}/src)
  target_link_libraries(${name} PUBLIC ${arg_USES})
  if(arg_QT)
    set_target_properties(${name} PROPERTIES AUTOMOC ON)
    target_compile_definitions(${name} PRIVATE QT_NO_CAST_FROM_ASCII QT_NO_KEYWORDS)
    target_compile_options(${name} PRIVATE ${QUILLMARK_QT_WARNINGS})
    if(QUILLMARK_QT_PCH)
      quillmark_precompile(${name} ${QUILLMARK_QT_HEADERS})
    endif()
  else()
    target_compile_options(${name} PRIVATE ${QUILLMARK_STRICT_WARNINGS})
    quillmark_precompile(${name})
  endif()
  quillmark_sanitize(${name})
endfunction()

# quillmark_tests(NAME [QT] [SHARDED] [TIMEOUT SECONDS] USES LIBRARIES…): one test program for the folder it stands
# in, which ctest runs once, or, sharded, in as many parts as there are cores.
function(quillmark_tests name)
  cmake_parse_arguments(arg "QT;SHARDED" "TIMEOUT" "USES" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  if(NOT sources)
    return()
  endif()
  add_executable(${name} ${sources})
  target_link_libraries(${name} PRIVATE ${arg_USES} GTest::gtest)
  target_compile_options(${name} PRIVATE ${QUILLMARK_QT_WARNINGS} ${QUILLMARK_FALSE_ALARMS}
    $<$<CONFIG:Release>:-O1>)
  quillmark_sanitize(${name})
  if(arg_QT)
    quillmark_precompile(${name} <gtest/gtest.h> ${QUILLMARK_QT_HEADERS} <QTest>)
  else()
    quillmark_precompile(${name} <gtest/gtest.h>)
  endif()
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  if(LLD)
    target_link_options(${name} PRIVATE -fuse-ld=lld)
  endif()
  set(shards 1)
  if(arg_SHARDED)
    cmake_host_system_information(RESULT shards QUERY NUMBER_OF_LOGICAL_CORES)
  endif()
  math(EXPR last "${shards} - 1")
  foreach(shard RANGE ${last})
    set(test ${name}_${shard})
    add_test(NAME ${test} COMMAND ${name})
    set_tests_properties(${test} PROPERTIES TIMEOUT ${arg_TIMEOUT}
      ENVIRONMENT "GTEST_TOTAL_SHARDS=${shards};GTEST_SHARD_INDEX=${shard}")
  endforeach()
endfunction()
