# The coverage preset's report on the tool's own code: not on what is generated, nor on the simulator
# and the tests.

find_program(GCOVR gcovr)
if(NOT GCOVR)
    message(FATAL_ERROR "gcovr not found: run scripts/install-dependencies coverage")
endif()
set(MORVANE_COVERAGE_MINIMUM 98 CACHE STRING "Percentage of lines that the tests must reach")

set(folders app console interfaces client phonebook transfer uuid)
list(JOIN folders "|" any_folder)
set(report "${CMAKE_BINARY_DIR}/coverage")
set(gcovr "${GCOVR}" --root "${PROJECT_SOURCE_DIR}" --object-directory "${CMAKE_BINARY_DIR}" --filter
          "${PROJECT_SOURCE_DIR}/(${any_folder})/")

# Counts of an older build would be added to, or complained of on the standard error of what is
# tested.
add_custom_target(
    coverage-reset ALL
    COMMAND find "${CMAKE_BINARY_DIR}" -name *.gcda -delete
    VERBATIM)

# Branches twice: all of them, and without those that only an exception takes, of which the compiler
# puts one behind nearly every call.
add_custom_target(
    coverage-report
    COMMAND "${CMAKE_COMMAND}" -E make_directory "${report}"
    COMMAND "${CMAKE_COMMAND}" -E echo "With the branches that only exceptions take:"
    COMMAND ${gcovr} --branches --txt "${report}/all-branches.txt" --print-summary
    COMMAND "${CMAKE_COMMAND}" -E echo "Without:"
    COMMAND
        ${gcovr} --exclude-throw-branches --txt "${report}/lines.txt" --html-details
        "${report}/index.html" --html-title Morvane --print-summary --fail-under-line
        ${MORVANE_COVERAGE_MINIMUM}
    COMMAND "${CMAKE_COMMAND}" -E echo "Files and lines: ${report}/lines.txt, ${report}/index.html"
    VERBATIM)
