# The build's own vocabulary: one interface target with every flag, and one function per kind of target.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_AUTOMOC ON)
set(CMAKE_AUTORCC ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
  if(LARKSPIRE_PRECOMPILE)
    # Without this the cache passes by whatever is compiled with a precompiled header.
    set(CMAKE_CXX_COMPILER_LAUNCHER
      "${CMAKE_COMMAND};-E;env;CCACHE_SLOPPINESS=pch_defines,time_macros;${CCACHE_PROGRAM}")
  endif()
endif()

# Language and warning flags for all of the project's own code.
add_library(larkspire_flags INTERFACE)
target_compile_options(larkspire_flags INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
if(LARKSPIRE_SANITIZE)
  # Lines are all that a report needs of the debug information; more of it, or optimising, doubles the building time.
  target_compile_options(larkspire_flags INTERFACE
    -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer -O0 -g1)
  target_link_options(larkspire_flags INTERFACE -fsanitize=address,undefined)
endif()

# The same, and Qt's strict switches, for code that uses Qt.
add_library(larkspire_qt_flags INTERFACE)
target_link_libraries(larkspire_qt_flags INTERFACE larkspire_flags)
target_compile_definitions(larkspire_qt_flags INTERFACE
  QT_NO_CAST_FROM_ASCII
  QT_NO_CAST_TO_ASCII
  QT_NO_CAST_FROM_BYTEARRAY
  QT_NO_URL_CAST_FROM_STRING
  QT_NO_NARROWING_CONVERSIONS_IN_CONNECT
  QT_NO_FOREACH
  QT_STRICT_ITERATORS
  QT_DEPRECATED_WARNINGS)

# With LARKSPIRE_PRECOMPILE the headers of Qt are read once for all tests, for all of the desktop where it is built
# without optimising, and for all of it for Windows. The optimised desktop of this system is always built from its own
# include lines, which shows a missing one.
#
# A header compiled ahead fits only sources that agree on every macro it was made with: so none of Qt's markers of a
# linked module stands in it but the core's, and QtTest, which asks for them, is left out. With the headers of widgets at
# hand `qApp` casts to QApplication: code below the widgets asks for QCoreApplication::instance().
function(larkspire_precompiled_qt owner)
  file(WRITE "${CMAKE_BINARY_DIR}/${owner}.cpp" "")
  add_library(${owner} STATIC "${CMAKE_BINARY_DIR}/${owner}.cpp")
  set_target_properties(${owner} PROPERTIES AUTOMOC OFF AUTORCC OFF)
  target_link_libraries(${owner} PRIVATE larkspire_qt_flags Qt5::Core)
  foreach(module IN ITEMS Qt5::Gui Qt5::Widgets Qt5::Network)
    target_include_directories(${owner} SYSTEM PRIVATE $<TARGET_PROPERTY:${module},INTERFACE_INCLUDE_DIRECTORIES>)
  endforeach()
  target_compile_options(${owner} PRIVATE ${ARGN})
  target_precompile_headers(${owner} PRIVATE <QtCore> <QtNetwork> <QtWidgets>)
endfunction()

function(larkspire_reuse_precompiled target owner)
  if(LARKSPIRE_PRECOMPILE)
    target_precompile_headers(${target} REUSE_FROM ${owner})
    # So that a compiler cache sees which header it was.
    target_compile_options(${target} PRIVATE -fpch-preprocess)
    if(owner STREQUAL larkspire_unoptimised_qt)
      target_compile_options(${target} PRIVATE -O0)
      # Unoptimised code holds every inline function of its headers, and those want linking.
      target_link_libraries(${target} PRIVATE $<LINK_ONLY:Qt5::Widgets> $<LINK_ONLY:Qt5::Network>)
    endif()
  endif()
endfunction()

# larkspire_library(NAME SOURCES file... [LINK target...] [LINK_PRIVATE target...])
# A static library of the desktop. Headers are included as "folder/Class.h" from src/.
function(larkspire_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK;LINK_PRIVATE" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC "${PROJECT_SOURCE_DIR}/src")
  target_link_libraries(${name} PUBLIC ${ARG_LINK} PRIVATE larkspire_qt_flags ${ARG_LINK_PRIVATE})
  if(LARKSPIRE_SANITIZE)
    larkspire_reuse_precompiled(${name} larkspire_unoptimised_qt)
  elseif(WIN32)
    larkspire_reuse_precompiled(${name} larkspire_optimised_qt)
  endif()
endfunction()

# Tests are linked some two hundred times in each configuration: with a quick linker where there is one.
include(CheckLinkerFlag)
if(LARKSPIRE_TESTS AND NOT WIN32)
  check_linker_flag(CXX -fuse-ld=mold LARKSPIRE_LINKS_WITH_MOLD)
endif()

# The lock of tests that look for programs by name: where each can have a list of processes of its own it is empty.
set(LARKSPIRE_ONE_PROCESS_LIST)
if(LARKSPIRE_TESTS AND NOT WIN32)
  execute_process(COMMAND "${PROJECT_SOURCE_DIR}/tests/support/with-own-processes" true ERROR_VARIABLE not_allowed)
  if(not_allowed)
    set(LARKSPIRE_ONE_PROCESS_LIST processes)
  endif()
endif()

# larkspire_meta_objects(TARGET source...): calls moc on the sources of a test that hold a class with Q_OBJECT. CMake's own
# automation costs more than a second of every test, as it starts a program and compiles a file for each.
function(larkspire_meta_objects target)
  set_target_properties(${target} PROPERTIES AUTOMOC OFF AUTORCC OFF)
  set(folder "${CMAKE_CURRENT_BINARY_DIR}/${target}_moc")
  target_include_directories(${target} PRIVATE "${folder}")
  # What moc looks for in conditions; the headers that say it are not read, as that takes twenty times as long.
  if(WIN32)
    set(system -DQ_OS_WIN)
  else()
    set(system -DQ_OS_UNIX -DQ_OS_LINUX)
  endif()
  set(definitions "$<TARGET_PROPERTY:${target},COMPILE_DEFINITIONS>")
  foreach(source IN LISTS ARGN)
    get_filename_component(path "${source}" ABSOLUTE)
    get_filename_component(stem "${source}" NAME_WE)
    file(STRINGS "${path}" own_include REGEX "^#include \"${stem}\\.moc\"")
    file(STRINGS "${path}" marker REGEX "^ *Q_OBJECT")
    if(own_include)
      set(output "${folder}/${stem}.moc")
    elseif(marker)
      set(output "${folder}/moc_${stem}.cpp")
    else()
      continue()
    endif()
    add_custom_command(OUTPUT "${output}"
      COMMAND Qt5::moc ${system} "$<$<BOOL:${definitions}>:-D$<JOIN:${definitions},;-D>>"
        "-I${PROJECT_SOURCE_DIR}/src" "-I${PROJECT_SOURCE_DIR}/tests" -o "${output}" "${path}"
      DEPENDS "${path}" VERBATIM COMMAND_EXPAND_LISTS)
    target_sources(${target} PRIVATE "${output}")
  endforeach()
endfunction()

# larkspire_test(NAME [DISPLAY] [WAYLAND] [SOUND] [PROCESSES] [WINE] [LONG] SOURCES file... [LINK target...] [LABELS label...] [TIMEOUT seconds])
# A Qt Test program under CTest. Without DISPLAY it runs on the offscreen platform; with DISPLAY it runs
# on a virtual X server of its own with a window manager and a tray, with WAYLAND on a compositor of its own. With
# SOUND it runs beside a sound server of its own and carries the label "sound". With PROCESSES it sees no process
# but its own; on a machine that does not allow that no two such tests run at a time. With WINE it has a Wine session and
# the programs of the Windows side, where one session serves one test at a time; where there is no Windows side it is
# reported as skipped. With LONG it is started ahead of the others.
function(larkspire_test name)
  cmake_parse_arguments(ARG "DISPLAY;WAYLAND;SOUND;PROCESSES;WINE;LONG" "TIMEOUT" "SOURCES;LINK;LABELS" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE larkspire_qt_flags larkspire_test_support Qt5::Test ${ARG_LINK})
  larkspire_meta_objects(${name} ${ARG_SOURCES})
  if(LARKSPIRE_LINKS_WITH_MOLD)
    target_link_options(${name} PRIVATE -fuse-ld=mold)
  endif()
  # What is tested is optimised; optimising the test itself only lengthens the build.
  target_compile_options(${name} PRIVATE -O0)
  if(LARKSPIRE_SANITIZE)
    # So do checks of each pointer in the test itself, by half; what is tested has them.
    target_compile_options(${name} PRIVATE -fno-sanitize=null,alignment,object-size,vptr)
  endif()
  larkspire_reuse_precompiled(${name} larkspire_unoptimised_qt)
  set(around)
  set(platform offscreen)
  if(ARG_DISPLAY)
    list(APPEND around "${PROJECT_SOURCE_DIR}/tests/support/with-display")
    set(platform xcb)
  endif()
  if(ARG_WAYLAND)
    list(APPEND around "${PROJECT_SOURCE_DIR}/tests/support/with-wayland")
    set(platform wayland)
  endif()
  if(ARG_SOUND)
    list(APPEND around "${PROJECT_SOURCE_DIR}/tests/support/with-sound")
    list(APPEND ARG_LABELS sound)
  endif()
  if(ARG_PROCESSES)
    list(APPEND around "${PROJECT_SOURCE_DIR}/tests/support/with-own-processes")
  endif()
  if(ARG_WINE)
    list(APPEND ARG_LABELS wine)
    larkspire_with_wine(around ${around})
  endif()
  add_test(NAME ${name} COMMAND ${around} $<TARGET_FILE:${name}>)
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  # A speech engine walks its list of thousands of voices with strstr; measured to the end at each step by the address
  # sanitizer that takes minutes.
  set_tests_properties(${name} PROPERTIES
    TIMEOUT ${ARG_TIMEOUT}
    LABELS "${ARG_LABELS}"
    ENVIRONMENT "QT_QPA_PLATFORM=${platform};LC_ALL=C.UTF-8;LSAN_OPTIONS=suppressions=${PROJECT_SOURCE_DIR}/tests/support/lsan.supp;UBSAN_OPTIONS=print_stacktrace=1;ASAN_OPTIONS=intercept_strstr=0")
  if(ARG_PROCESSES)
    set_property(TEST ${name} APPEND PROPERTY RESOURCE_LOCK ${LARKSPIRE_ONE_PROCESS_LIST})
  endif()
  if(ARG_WINE)
    set_property(TEST ${name} APPEND PROPERTY RESOURCE_LOCK wine)
    set_tests_properties(${name} PROPERTIES SKIP_RETURN_CODE 77 COST 100)
  elseif(ARG_LONG)
    set_tests_properties(${name} PROPERTIES COST 50)
  endif()
endfunction()

# larkspire_with_wine(RESULT [WRAPPER...]): what stands before the command of a test that is wrapped so and wants a
# Wine session as well.
function(larkspire_with_wine result)
  if(LARKSPIRE_WINDOWS_QT)
    set(${result} ${ARGN} "${PROJECT_SOURCE_DIR}/tests/support/with-wine" "${CMAKE_BINARY_DIR}/wine-prefix"
      "${LARKSPIRE_WINDOWS_QT}" PARENT_SCOPE)
  else()
    set(${result} "${PROJECT_SOURCE_DIR}/tests/support/skipped"
      "LARKSPIRE_WINDOWS_QT names no Qt for Windows" PARENT_SCOPE)
  endif()
endfunction()

# larkspire_windows_test(NAME [SERVICE] SOURCES file... [LINK target...] [TIMEOUT seconds])
# A Qt Test program for Windows. In the Windows configuration it is built; in the other it is run, under Wine on a
# virtual X server, or reported as skipped where there is no Windows side. So the call stands in both. With SERVICE a
# reference service of its own runs beside it.
function(larkspire_windows_test name)
  cmake_parse_arguments(ARG "SERVICE" "TIMEOUT" "SOURCES;LINK" ${ARGN})
  if(WIN32)
    add_executable(${name} ${ARG_SOURCES})
    target_link_libraries(${name} PRIVATE larkspire_qt_flags larkspire_test_support Qt5::Test ${ARG_LINK})
    larkspire_meta_objects(${name} ${ARG_SOURCES})
    target_compile_options(${name} PRIVATE -O0)
    larkspire_reuse_precompiled(${name} larkspire_unoptimised_qt)
    set_target_properties(${name} PROPERTIES RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/tests")
    add_dependencies(windows_side ${name})
    return()
  endif()
  set(around "${PROJECT_SOURCE_DIR}/tests/support/with-display" "${PROJECT_SOURCE_DIR}/tests/support/with-own-processes")
  if(ARG_SERVICE)
    list(APPEND around "${PROJECT_SOURCE_DIR}/tests/support/with-service" $<TARGET_FILE:larkspire-service>)
  endif()
  larkspire_with_wine(around ${around})
  add_test(NAME ${name} COMMAND ${around} wine "${LARKSPIRE_WINDOWS_BINARY_DIR}/tests/${name}.exe")
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  set_tests_properties(${name} PROPERTIES
    TIMEOUT ${ARG_TIMEOUT}
    LABELS wine
    RESOURCE_LOCK "wine;${LARKSPIRE_ONE_PROCESS_LIST}"
    SKIP_RETURN_CODE 77
    COST 100
    ENVIRONMENT "LC_ALL=C.UTF-8")
endfunction()

# larkspire_benchmark(NAME SOURCES file... [LINK target...])
# A Google Benchmark program; not part of the test run.
function(larkspire_benchmark name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${ARG_SOURCES})
  target_link_libraries(${name} PRIVATE larkspire_qt_flags benchmark::benchmark ${ARG_LINK})
endfunction()
