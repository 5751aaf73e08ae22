# Cross-compiles to macOS with clang and LLVM's Mach-O linker, against an SDK folder made by
# scripts/make-macos-sdk. MACOS_SDK (a path), MACOS_ARCH (arm64, x86_64) and MACOS_MIN (the oldest
# release to run on) come from the command line or the environment.

set(CMAKE_SYSTEM_NAME Darwin)
set(CMAKE_SYSTEM_VERSION 20.0.0)
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES MACOS_SDK MACOS_ARCH MACOS_MIN)
foreach(setting MACOS_SDK MACOS_ARCH MACOS_MIN)
  if(NOT ${setting} AND DEFINED ENV{${setting}})
    set(${setting} "$ENV{${setting}}")
  endif()
  if(NOT ${setting})
    message(FATAL_ERROR "${setting} is not set; scripts/build-macos sets it through the presets")
  endif()
  set(${setting} "${${setting}}" CACHE STRING "" FORCE)
endforeach()
set(CMAKE_SYSTEM_PROCESSOR ${MACOS_ARCH})

find_program(VANTILE_CLANG clang-19 REQUIRED)
find_program(VANTILE_CLANGXX clang++-19 REQUIRED)
find_program(CMAKE_AR llvm-ar-19 REQUIRED)
find_program(CMAKE_RANLIB llvm-ranlib-19 REQUIRED)
find_program(CMAKE_INSTALL_NAME_TOOL llvm-install-name-tool-19 REQUIRED)
set(CMAKE_C_COMPILER ${VANTILE_CLANG})
set(CMAKE_CXX_COMPILER ${VANTILE_CLANGXX})
set(CMAKE_C_COMPILER_TARGET ${MACOS_ARCH}-apple-macos${MACOS_MIN})
set(CMAKE_CXX_COMPILER_TARGET ${MACOS_ARCH}-apple-macos${MACOS_MIN})
# Left to itself the driver picks the build machine's libc++ headers, which know nothing of what is
# available since which release.
set(CMAKE_CXX_FLAGS_INIT "-nostdinc++ -isystem ${MACOS_SDK}/usr/include/c++/v1")
foreach(kind SHARED MODULE EXE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "-fuse-ld=lld -Wl,-adhoc_codesign")
endforeach()
set(CMAKE_USER_MAKE_RULES_OVERRIDE ${CMAKE_CURRENT_LIST_DIR}/clang-macos-rules.cmake)

set(CMAKE_OSX_SYSROOT "${MACOS_SDK}" CACHE PATH "" FORCE)
# The target above says both.
set(CMAKE_OSX_DEPLOYMENT_TARGET "" CACHE STRING "" FORCE)
set(CMAKE_OSX_ARCHITECTURES "" CACHE STRING "" FORCE)

set(CMAKE_FIND_ROOT_PATH "${MACOS_SDK}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
