# embed_file(<target> <file> <header> <namespace> <constant>)
#
# Adds a source to <target> that defines <constant> with the bytes of <file>. <header> declares it
# as `extern const std::string_view <constant>;` in <namespace>.
function(embed_file target file header namespace constant)
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
    file(READ "${file}" bytes HEX)
    string(LENGTH "${bytes}" size)
    math(EXPR size "${size} / 2")
    string(REGEX REPLACE "(..)" "\\\\x\\1" bytes "${bytes}")
    file(CONFIGURE OUTPUT "${file}.cpp" CONTENT [[
#include "@header@"

namespace @namespace@ {

const std::string_view @constant@("@bytes@", @size@);

}  // namespace @namespace@
]] @ONLY)
    target_sources(${target} PRIVATE "${CMAKE_CURRENT_BINARY_DIR}/${file}.cpp")
endfunction()
