# SPDX-License-Identifier: ISC
# Windows x64 by mingw-w64, as Debian has it. Programs run under Wine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix CACHE FILEPATH "C compiler")
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix CACHE FILEPATH "C++ compiler")
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# With the other thread model std::this_thread::get_id() answers the same in every thread, and the audio thread would
# draw.
execute_process(COMMAND ${CMAKE_CXX_COMPILER} -v ERROR_VARIABLE mingw_about OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
if(NOT mingw_about MATCHES "Thread model: posix")
  message(FATAL_ERROR "${CMAKE_CXX_COMPILER} is not a compiler of the posix thread model (g++-mingw-w64-x86-64-posix)")
endif()

# Where scripts/windows_libraries.sh has put the libraries of brezan.exe.
set(QLX_WINDOWS_LIBRARIES "" CACHE PATH "Prefix of libraries for the target, besides the compiler's own")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QLX_WINDOWS_LIBRARIES)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32 ${QLX_WINDOWS_LIBRARIES})
set(ENV{PKG_CONFIG_LIBDIR} "${QLX_WINDOWS_LIBRARIES}/lib/pkgconfig")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# C++ library, threads and all: nothing but the system's own libraries is left to be found on the user's machine.
set(CMAKE_EXE_LINKER_FLAGS_INIT -static)
set(CMAKE_MODULE_LINKER_FLAGS_INIT -static)

find_program(wine64 NAMES wine64 wine64-stable PATHS /usr/lib/wine NO_CACHE)
if(wine64)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${wine64})
endif()
