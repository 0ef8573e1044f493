# Toolchain for 32-bit ARM with hardware floating point, see docs/target.md.
#
# MORVANE_SYSROOT, a variable of CMake or of the environment, is the target's file tree: headers,
# libraries and pkg-config files. The default is that of a Yocto SDK, if its environment is set up,
# or else that of scripts/armhf-sysroot.
#
# The compiler is set by the environment variables CC and CXX, as in an SDK, or is
# MORVANE_CROSS_PREFIX with gcc and g++ appended.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

# Debian's name; the default of cpack is the build machine.
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armhf)

# Also pass these to compiler checks, which are separate projects.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES MORVANE_SYSROOT MORVANE_CROSS_PREFIX)

foreach(candidate IN ITEMS "$ENV{MORVANE_SYSROOT}" "$ENV{SDKTARGETSYSROOT}"
                           "${CMAKE_CURRENT_LIST_DIR}/../build/armhf-sysroot")
    if(NOT MORVANE_SYSROOT)
        set(MORVANE_SYSROOT "${candidate}")
    endif()
endforeach()
get_filename_component(CMAKE_SYSROOT "${MORVANE_SYSROOT}" REALPATH)
if(NOT IS_DIRECTORY "${CMAKE_SYSROOT}/usr/include")
    message(FATAL_ERROR "No sysroot in ${CMAKE_SYSROOT}: run scripts/armhf-sysroot or set "
                        "MORVANE_SYSROOT")
endif()

set(MORVANE_CROSS_PREFIX "arm-linux-gnueabihf-" CACHE STRING "Prefix of the compiler's name")
if(NOT DEFINED ENV{CC})
    set(CMAKE_C_COMPILER "${MORVANE_CROSS_PREFIX}gcc")
endif()
if(NOT DEFINED ENV{CXX})
    set(CMAKE_CXX_COMPILER "${MORVANE_CROSS_PREFIX}g++")
endif()

# All code is built by one compiler, so ABI changes between versions do not matter.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(ENV{PKG_CONFIG_SYSROOT_DIR} "${CMAKE_SYSROOT}")
set(pkg_config_folders lib/arm-linux-gnueabihf/pkgconfig lib/pkgconfig share/pkgconfig)
list(TRANSFORM pkg_config_folders PREPEND "${CMAKE_SYSROOT}/usr/")
list(JOIN pkg_config_folders ":" pkg_config_path)
set(ENV{PKG_CONFIG_LIBDIR} "${pkg_config_path}")
set(ENV{PKG_CONFIG_PATH} "")

# Used to run the tests.
find_program(QEMU_ARM NAMES qemu-arm qemu-arm-static)
if(QEMU_ARM)
    set(CMAKE_CROSSCOMPILING_EMULATOR "${QEMU_ARM};-L;${CMAKE_SYSROOT}")
endif()
