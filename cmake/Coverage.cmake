# Coverage report on the tool's own code, without generated code, simulator and tests.

find_program(GCOVR gcovr)
if(NOT GCOVR)
    message(FATAL_ERROR "gcovr not found: run scripts/install-dependencies coverage")
endif()
set(MORVANE_COVERAGE_MINIMUM 98 CACHE STRING "Required line coverage in percent")

set(folders app console interfaces client phonebook transfer uuid)
list(JOIN folders "|" any_folder)
set(report "${CMAKE_BINARY_DIR}/coverage")
set(gcovr "${GCOVR}" --root "${PROJECT_SOURCE_DIR}" --object-directory "${CMAKE_BINARY_DIR}" --filter
          "${PROJECT_SOURCE_DIR}/(${any_folder})/")

# Deletes counters of older builds, which would be added or reported as errors on standard error of
# the tested programs.
add_custom_target(
    coverage-reset ALL
    COMMAND find "${CMAKE_BINARY_DIR}" -name *.gcda -delete
    VERBATIM)

# Reports all branches, and those without exception branches, of which the compiler adds one to
# nearly every call.
add_custom_target(
    coverage-report
    COMMAND "${CMAKE_COMMAND}" -E make_directory "${report}"
    COMMAND "${CMAKE_COMMAND}" -E echo "With exception branches:"
    COMMAND ${gcovr} --branches --txt "${report}/all-branches.txt" --print-summary
    COMMAND "${CMAKE_COMMAND}" -E echo "Without exception branches:"
    COMMAND
        ${gcovr} --exclude-throw-branches --txt "${report}/lines.txt" --html-details
        "${report}/index.html" --html-title Morvane --print-summary --fail-under-line
        ${MORVANE_COVERAGE_MINIMUM}
    COMMAND "${CMAKE_COMMAND}" -E echo "Files and lines: ${report}/lines.txt, ${report}/index.html"
    VERBATIM)
