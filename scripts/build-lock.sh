# shellcheck shell=bash
# Sourced by the scripts that build.

# with_build_lock FOLDER COMMAND...: runs the command with the lock of this build folder, for which
# it waits if need be. A subshell owns the lock, so that it is not released if the script is killed
# and its compiler keeps running. Programs do not inherit it: one that stays in the background, such
# as the server of a compiler cache, would keep it.
with_build_lock() {
    local folder=$1
    shift
    if ! mkdir -p "$folder" 2>/dev/null || [ ! -w "$folder" ]; then
        printf 'This user cannot build in %s: remove it, or make it writable\n' "$folder" >&2
        return 1
    fi
    (
        flock --nonblock 9 || {
            printf 'Waiting for another build in %s ...\n' "$folder" >&2
            flock 9 || exit
        }
        "$@" 9>&-
    ) 9>"$folder/lock"
}
