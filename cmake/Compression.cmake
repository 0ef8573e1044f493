find_program(GZIP gzip REQUIRED)

# compress(<file> <variable>)
#
# Makes <file>.gz with every build, the same bytes each time, and puts its path into <variable>.
function(compress file variable)
    set(result "${CMAKE_CURRENT_BINARY_DIR}/${file}.gz")
    add_custom_command(
        OUTPUT "${result}"
        COMMAND "${GZIP}" -9nc "${CMAKE_CURRENT_SOURCE_DIR}/${file}" > "${result}"
        DEPENDS "${file}"
        VERBATIM)
    add_custom_target(compress-${file} ALL DEPENDS "${result}")
    set(${variable} "${result}" PARENT_SCOPE)
endfunction()
