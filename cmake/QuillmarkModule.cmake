# quillmark_module(NAME USES LIBRARIES…): one folder, one static library, its dependencies in one line.
# A module under src/ takes every .cpp below its folder but main.cpp; headers are included as "folder/Header.h".

set(QUILLMARK_STRICT_WARNINGS -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  list(APPEND QUILLMARK_STRICT_WARNINGS -Wno-deprecated-declarations) # g++ 12's own headers use what they deprecate
endif()
set(QUILLMARK_QT_WARNINGS -Wall -Wextra -Werror)

# What most files of a floor include, compiled once for each library and test program.
set(QUILLMARK_STANDARD_HEADERS
  <algorithm> <chrono> <filesystem> <functional> <map> <memory> <optional> <span> <string> <string_view> <variant>
  <vector>)
set(QUILLMARK_QT_HEADERS <QApplication> <QEvent> <QMenu> <QPainter> <QWidget>)

function(quillmark_precompile name)
  if(QUILLMARK_PCH)
    target_precompile_headers(${name} PRIVATE ${QUILLMARK_STANDARD_HEADERS} ${ARGN})
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
    quillmark_precompile(${name} ${QUILLMARK_QT_HEADERS})
  else()
    target_compile_options(${name} PRIVATE ${QUILLMARK_STRICT_WARNINGS})
    quillmark_precompile(${name})
  endif()
endfunction()

# quillmark_tests(NAME [QT] [TIMEOUT SECONDS] USES LIBRARIES…): one test program for the folder it stands in.
function(quillmark_tests name)
  cmake_parse_arguments(arg "QT" "TIMEOUT" "USES" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  if(NOT sources)
    return()
  endif()
  add_executable(${name} ${sources})
  target_link_libraries(${name} PRIVATE ${arg_USES} GTest::gtest)
  # g++ 12 warns of overlapping copies in string concatenations where there are none (its bug 105651).
  target_compile_options(${name} PRIVATE ${QUILLMARK_QT_WARNINGS} $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
    $<$<CONFIG:Release>:-O1>)
  if(arg_QT)
    quillmark_precompile(${name} <gtest/gtest.h> ${QUILLMARK_QT_HEADERS} <QTest>)
  else()
    quillmark_precompile(${name} <gtest/gtest.h>)
  endif()
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES TIMEOUT ${arg_TIMEOUT})
endfunction()
