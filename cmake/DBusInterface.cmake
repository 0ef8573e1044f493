find_program(GDBUS_CODEGEN gdbus-codegen REQUIRED)

# add_dbus_interface(<target> <interface> <stem>)
#
# Adds the typed proxy and skeleton of the D-Bus interface described in <interface>.xml to <target>
# as <stem>.h and <stem>.c, and installs the description where D-Bus tools look for it.
function(add_dbus_interface target interface stem)
    set(xml "${CMAKE_CURRENT_SOURCE_DIR}/${interface}.xml")
    set(generate "${GDBUS_CODEGEN}" --interface-prefix com.veltrisonix. --pragma-once)
    foreach(kind IN ITEMS header body)
        set(suffix_header h)
        set(suffix_body c)
        set(output "${CMAKE_CURRENT_BINARY_DIR}/${stem}.${suffix_${kind}}")
        add_custom_command(
            OUTPUT "${output}"
            COMMAND ${generate} --${kind} --output "${output}" "${xml}"
            DEPENDS "${xml}"
            VERBATIM)
        target_sources(${target} PRIVATE "${output}")
    endforeach()
    install(FILES "${xml}" DESTINATION "${CMAKE_INSTALL_DATADIR}/dbus-1/interfaces"
            COMPONENT interfaces)
endfunction()
