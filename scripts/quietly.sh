# shellcheck shell=bash
# Sourced by the other scripts.

# quietly WHAT COMMAND...: says what is going on, and shows the command's output only if it fails,
# or else only what it skipped.
# The command gets no standard input, which may be somebody's answers to something else.
quietly() {
    announce "$1"
    silently "$@"
}

announce() {
    printf '%s ...\n' "$1" >&2
}

# silently WHAT COMMAND...: the same without saying what is going on
silently() {
    local what=$1 output
    shift
    output=$("$@" </dev/null 2>&1) || {
        printf '%s\n%s failed.\n' "$output" "$what" >&2
        return 1
    }
    grep '^Skipping ' <<<"$output" >&2 || true
}

# test_quietly WHAT STEM OPTION...: as quietly, for ctest with these options. Leaves STEM.log and
# STEM.xml, and shows only tests that failed.
test_quietly() {
    local what=$1 stem=$2
    shift 2
    announce "Testing $what"
    ctest "$@" --quiet --output-log "$stem.log" --output-junit "$stem.xml" && return
    grep --invert-match --extended-regexp '^ *(Start +[0-9]+:|[0-9]+/[0-9]+ Test .* Passed )' \
        "$stem.log" >&2 || true
    return 1
}
