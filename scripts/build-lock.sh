# shellcheck shell=bash
# Sourced by the scripts that build.

# with_build_lock FOLDER COMMAND...: runs the command while it has a lock on this build folder;
# waits for the lock. A subshell owns it, so that it is kept if the script is killed while its
# compiler is running. Programs do not inherit the descriptor: a background process, such as the
# server of a compiler cache, would keep the lock.
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
