# shellcheck shell=bash
# Sourced by the other scripts: runs steps. The output of a step is written to a file in build/logs;
# its progress is displayed, and after a failure the summary of scripts/failures.
#
# The progress of a step is the last "N/M" at the start of a line of its output. On a terminal one
# line for all running steps is updated every second; otherwise a line is printed every 30 seconds.

declare -A step_process=() step_start=()
progress_is_shown=false

# quietly WHAT COMMAND...: runs a step. The command gets no standard input, which may contain
# answers for another program. Within a step of another script the output is part of that step's.
quietly() {
    if [ -n "${MORVANE_STEP-}" ]; then
        printf '%s ...\n' "$1"
        "${@:2}" </dev/null
    else
        begin "$@"
        finish "$1"
    fi
}

# begin WHAT COMMAND...: starts a step in the background, until finish WHAT.
begin() {
    hide_progress
    printf '%s ...\n' "$1" >&2
    mkdir -p "$(dirname "$(log_of "$1")")"
    # Without job control, bash starts background commands with SIGINT ignored.
    (
        trap - INT
        export MORVANE_STEP=$1
        "${@:2}"
    ) </dev/null >"$(log_of "$1")" 2>&1 &
    step_process[$1]=$!
    step_start[$1]=$SECONDS
}

# finish WHAT: waits for the step and returns its status.
finish() {
    local status=0 tenths
    for ((tenths = 1; ; ++tenths)); do
        kill -0 "${step_process[$1]}" 2>/dev/null || break
        sleep 0.1
        if [ -t 2 ]; then
            [ $((tenths % 10)) -ne 0 ] || rewrite_progress
        elif [ $((tenths % 300)) -eq 0 ]; then
            printf '%s\n' "$(progress)" >&2
        fi
    done
    wait "${step_process[$1]}" || status=$?
    unset "step_process[$1]"
    hide_progress
    [ "$status" -ne 0 ] || grep '^Skipping ' "$(log_of "$1")" >&2 || true
    [ "$status" -eq 0 ] || {
        printf '%s failed:\n' "$1"
        "$(dirname "${BASH_SOURCE[0]}")/failures" "$(log_of "$1")"
    } >&2
    return "$status"
}

log_of() {
    local name=${1,,}
    realpath --canonicalize-missing --relative-to=. \
        "$(dirname "${BASH_SOURCE[0]}")/../build/logs/${name//[^a-z0-9]/-}.log"
}

# progress: prints that of all running steps
progress() {
    local what counter text=
    for what in "${!step_process[@]}"; do
        counter=$(tail --bytes=4000 "$(log_of "$what")" |
            grep --text --only-matching --extended-regexp '^(\[| *)[0-9]+/[0-9]+' |
            tail --lines=1 | tr --delete '[ ')
        text+="${text:+, }$what${counter:+ $counter} ($((SECONDS - step_start[$what])) s)"
    done
    echo "$text"
}

rewrite_progress() {
    local columns
    read -r _ columns < <(stty size <&2)
    [ "$columns" -gt 0 ] || columns=80
    printf '\r\e[K%.*s' $((columns - 1)) "$(progress)" >&2
    progress_is_shown=true
}

hide_progress() {
    ! "$progress_is_shown" || printf '\r\e[K' >&2
    progress_is_shown=false
}
