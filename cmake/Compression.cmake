find_program(GZIP gzip REQUIRED)

# compress(<file> <variable>)
#
# Adds a reproducible <file>.gz to every build and sets <variable> to its path.
function(compress file variable)
    cmake_path(ABSOLUTE_PATH file)
    cmake_path(GET file FILENAME name)
    set(result "${CMAKE_CURRENT_BINARY_DIR}/${name}.gz")
    add_custom_command(
        OUTPUT "${result}"
        COMMAND "${GZIP}" -9nc "${file}" > "${result}"
        DEPENDS "${file}"
        VERBATIM)
    add_custom_target(compress-${name} ALL DEPENDS "${result}")
    set(${variable} "${result}" PARENT_SCOPE)
endfunction()
