# Builds programs for 64-bit Windows with Debian's mingw compiler and a static Qt.
#
# Qt lies in the folder that QUORIL_QT_MINGW names (a CMake or environment variable), else where
# scripts/qt-windows.sh puts it. moc, rcc and uic are those of the host.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(mingw x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${mingw}-gcc-posix)
set(CMAKE_CXX_COMPILER ${mingw}-g++-posix)
set(CMAKE_RC_COMPILER ${mingw}-windres)

if(NOT QUORIL_QT_MINGW)
  set(qt_folder "$ENV{QUORIL_QT_MINGW}")
  if(NOT qt_folder AND DEFINED ENV{XDG_CACHE_HOME})
    set(qt_folder $ENV{XDG_CACHE_HOME}/quoril/qt-mingw)
  elseif(NOT qt_folder)
    set(qt_folder $ENV{HOME}/.cache/quoril/qt-mingw)
  endif()
  set(QUORIL_QT_MINGW ${qt_folder} CACHE PATH "Qt for mingw")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QUORIL_QT_MINGW)

set(CMAKE_FIND_ROOT_PATH ${QUORIL_QT_MINGW} /usr/${mingw})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(QT_HOST_PATH /usr CACHE PATH "Qt of the host")
set(QT_HOST_PATH_CMAKE_DIR /usr/lib/x86_64-linux-gnu/cmake CACHE PATH "CMake files of the host's Qt")

# The compiler's own libraries go into the program too: it needs no DLL but those of Windows. The time of the build
# doesn't, so that the same sources give the same program.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -Wl,--no-insert-timestamp")
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine-run.sh)
