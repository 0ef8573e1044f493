# Toolchain for 32-bit ARM with hardware floating point, see docs/target.md.
#
# MORVANE_SYSROOT, a variable of CMake or of the environment, names the target's file tree: headers,
# libraries and pkg-config files. Without it that of a Yocto SDK is taken, if its environment is set
# up, or else the one that scripts/armhf-sysroot makes.
#
# The compiler is that of the environment variables CC and CXX, which such an SDK sets, or else
# MORVANE_CROSS_PREFIX with gcc and g++ appended.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR arm)

# What Debian calls it; without it cpack takes the building machine.
set(CPACK_DEBIAN_PACKAGE_ARCHITECTURE armhf)

# What compiler checks, which are projects of their own, must know too.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES MORVANE_SYSROOT MORVANE_CROSS_PREFIX)

foreach(candidate IN ITEMS "$ENV{MORVANE_SYSROOT}" "$ENV{SDKTARGETSYSROOT}"
                           "${CMAKE_CURRENT_LIST_DIR}/../build/armhf-sysroot")
    if(NOT MORVANE_SYSROOT)
        set(MORVANE_SYSROOT "${candidate}")
    endif()
endforeach()
get_filename_component(CMAKE_SYSROOT "${MORVANE_SYSROOT}" REALPATH)
if(NOT IS_DIRECTORY "${CMAKE_SYSROOT}/usr/include")
    message(FATAL_ERROR "No file tree in ${CMAKE_SYSROOT}: run scripts/armhf-sysroot, or name one "
                        "in MORVANE_SYSROOT")
endif()

set(MORVANE_CROSS_PREFIX "arm-linux-gnueabihf-" CACHE STRING "What the compiler's name begins with")
if(NOT DEFINED ENV{CC})
    set(CMAKE_C_COMPILER "${MORVANE_CROSS_PREFIX}gcc")
endif()
if(NOT DEFINED ENV{CXX})
    set(CMAKE_CXX_COMPILER "${MORVANE_CROSS_PREFIX}g++")
endif()

# All of it comes from one compiler, so that which ones disagreed long ago does not matter.
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

# Runs the tests.
find_program(QEMU_ARM NAMES qemu-arm qemu-arm-static)
if(QEMU_ARM)
    set(CMAKE_CROSSCOMPILING_EMULATOR "${QEMU_ARM};-L;${CMAKE_SYSROOT}")
endif()
