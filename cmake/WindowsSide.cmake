# The Windows side: the same project configured a second time, for Windows with mingw-w64, inside this build. It is
# there only where LARKSPIRE_WINDOWS_QT, an option or a variable of the environment, names an unpacked Qt 5 for
# Windows with its toolchain file mingw64-toolchain.cmake; elsewhere what would be run under Wine is reported as
# skipped.
#
# In the Windows configuration the target windows_side is everything that is wanted from it; this build's target of
# the same name builds it.
set(LARKSPIRE_WINDOWS_QT "$ENV{LARKSPIRE_WINDOWS_QT}" CACHE PATH
  "Unpacked Qt 5 for Windows (mingw-w64); without it nothing is built for Windows")
set(LARKSPIRE_WINDOWS_BINARY_DIR "${CMAKE_BINARY_DIR}/windows")

if(WIN32)
  add_custom_target(windows_side)
elseif(LARKSPIRE_WINDOWS_QT)
  if(NOT EXISTS "${LARKSPIRE_WINDOWS_QT}/mingw64-toolchain.cmake")
    message(FATAL_ERROR "LARKSPIRE_WINDOWS_QT (${LARKSPIRE_WINDOWS_QT}) holds no mingw64-toolchain.cmake")
  endif()
  include(ExternalProject)
  ExternalProject_Add(windows_side
    SOURCE_DIR "${PROJECT_SOURCE_DIR}"
    BINARY_DIR "${LARKSPIRE_WINDOWS_BINARY_DIR}"
    PREFIX "${CMAKE_BINARY_DIR}/windows-side"
    CMAKE_ARGS
      -DCMAKE_BUILD_TYPE=Release
      "-DCMAKE_TOOLCHAIN_FILE=${LARKSPIRE_WINDOWS_QT}/mingw64-toolchain.cmake"
      -DLARKSPIRE_SERVICE=OFF
      -DLARKSPIRE_BENCHMARKS=${LARKSPIRE_BENCHMARKS}
      -DLARKSPIRE_PRECOMPILE=${LARKSPIRE_PRECOMPILE}
      -DLARKSPIRE_WINDOWS_QT=
    BUILD_COMMAND "${CMAKE_COMMAND}" --build <BINARY_DIR> --target windows_side
    BUILD_ALWAYS ON
    # The desktop looks for the helper beside itself.
    INSTALL_COMMAND "${CMAKE_COMMAND}" -E copy_if_different
      <BINARY_DIR>/src/linkage/wine/larkspire-wine-helper.exe $<TARGET_FILE_DIR:larkspire>
    USES_TERMINAL_BUILD ON)
endif()
