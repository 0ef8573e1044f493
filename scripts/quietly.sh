# shellcheck shell=bash
# Sourced by the other scripts.

# quietly WHAT COMMAND...: says what is going on, and shows the command's output only if it fails.
# The command gets no standard input, which may be somebody's answers to something else.
quietly() {
    local what=$1 output
    shift
    printf '%s ...\n' "$what" >&2
    output=$("$@" </dev/null 2>&1) || {
        printf '%s\n%s failed.\n' "$output" "$what" >&2
        return 1
    }
}
