# Build settings of all targets: morvane-settings; for test code morvane-test-settings.

option(MORVANE_STRICT "Treat every warning as an error; require the test dependencies" OFF)
set(MORVANE_SANITIZER "" CACHE STRING "Sanitizers to build with, such as address,undefined or thread")
option(MORVANE_COVERAGE "Instrument for coverage" OFF)
option(MORVANE_BENCHMARKS "Build the benchmarks" OFF)
option(MORVANE_STATIC_RUNTIME "Link the C++ runtime statically into the tool, if possible" ON)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
    set(CMAKE_BUILD_TYPE MinSizeRel CACHE STRING "Build type" FORCE)
endif()

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}")

include(CheckPIESupported)
check_pie_supported()
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

add_library(morvane-language INTERFACE)
target_compile_definitions(
    # 64-bit file offsets: on 32-bit targets files with large inode numbers could not be opened.
    morvane-language INTERFACE MORVANE_VERSION="${PROJECT_VERSION}" _FILE_OFFSET_BITS=64
                               GLIB_VERSION_MIN_REQUIRED=GLIB_VERSION_2_66
                               GLIB_VERSION_MAX_ALLOWED=GLIB_VERSION_2_66)

if(MORVANE_STRICT)
    target_compile_options(
        morvane-language
        INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
                  -Wcast-align -Wcast-qual -Wformat=2 -Wmissing-declarations -Wnon-virtual-dtor
                  -Woverloaded-virtual -Wnull-dereference -Wundef -Wunused -Werror
                  # See console/mutex.h; "beta" checks the lock order.
                  $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety -Wthread-safety-beta>)
endif()

# Hardening. _FORTIFY_SOURCE needs optimisation and would hide errors from sanitizers.
set(optimised $<NOT:$<CONFIG:Debug>>)
add_library(morvane-hardening INTERFACE)
target_compile_options(morvane-hardening INTERFACE $<${optimised}:-fstack-protector-strong>)
target_compile_definitions(morvane-hardening INTERFACE $<${optimised}:_FORTIFY_SOURCE=2>)
target_link_options(morvane-hardening INTERFACE
                    $<${optimised}:LINKER:-z,relro,-z,now,-z,noexecstack,--as-needed>)

# Size matters in the flash of small boards. Half of the code of gdbus-codegen is for daemons;
# --gc-sections removes unused functions only if each has its own section.
add_library(morvane-size INTERFACE)
target_compile_options(
    morvane-size
    INTERFACE $<${optimised}:-ffunction-sections> $<${optimised}:-fdata-sections>
              $<${optimised}:-fvisibility=hidden>
              $<$<AND:${optimised},$<COMPILE_LANGUAGE:CXX>>:-fvisibility-inlines-hidden>)
target_link_options(morvane-size INTERFACE $<${optimised}:LINKER:--gc-sections>)
target_link_libraries(morvane-hardening INTERFACE morvane-size)

# The tool uses about 50 KiB of the C++ runtime; the shared library takes 2 MiB of flash, 1 MiB of
# memory and an eighth of the instructions at start. Not every cross compiler includes the static
# libraries.
add_library(morvane-static-runtime INTERFACE)
if(MORVANE_STATIC_RUNTIME AND NOT MORVANE_SANITIZER)
    include(CheckCXXSourceCompiles)
    set(CMAKE_REQUIRED_LINK_OPTIONS -static-libstdc++ -static-libgcc -pthread)
    check_cxx_source_compiles("#include <thread>\nint main() { std::thread([] { throw 1; }).join(); }"
                              MORVANE_HAS_STATIC_RUNTIME)
    unset(CMAKE_REQUIRED_LINK_OPTIONS)
    if(MORVANE_HAS_STATIC_RUNTIME)
        target_link_options(morvane-static-runtime INTERFACE $<${optimised}:-static-libstdc++>
                                                             $<${optimised}:-static-libgcc>)
    endif()
endif()

# Strip build paths from the binaries (reproducible builds).
add_library(morvane-reproducible INTERFACE)
target_compile_options(
    morvane-reproducible
    INTERFACE $<${optimised}:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>
              $<${optimised}:-ffile-prefix-map=${PROJECT_BINARY_DIR}=build>)
target_link_libraries(morvane-hardening INTERFACE morvane-reproducible)
add_library(morvane-settings INTERFACE)
target_link_libraries(morvane-settings INTERFACE morvane-language morvane-hardening)

# Test code is compiled more often than it is run: -O0. With -fPIE for libraries too, all test code
# can share one precompiled header.
add_library(morvane-test-settings INTERFACE)
target_compile_options(morvane-test-settings INTERFACE $<${optimised}:-O0> -fPIE)
target_link_libraries(morvane-test-settings INTERFACE morvane-language)

# Applies to generated code and tests, too.
if(MORVANE_SANITIZER)
    add_compile_options(-fsanitize=${MORVANE_SANITIZER} -fno-sanitize-recover=all
                        -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${MORVANE_SANITIZER})
endif()
if(MORVANE_COVERAGE)
    target_compile_options(morvane-settings INTERFACE --coverage -fprofile-update=atomic)
    add_link_options(--coverage)
    include(Coverage)
endif()
