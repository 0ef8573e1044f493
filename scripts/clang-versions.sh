# shellcheck shell=bash
# Sourced by the other scripts.

# Supported versions of clang and its tools: those of Debian 12, 13 and unstable. Others format
# differently or have other checks.
readonly clang_versions=(14 19 21)

# clang_version PROGRAM: prints its major version, or nothing if it is not installed
clang_version() {
    "$1" --version 2>/dev/null | sed --quiet --regexp-extended '/version/ { s/^[^0-9]*version ([0-9]+).*/\1/p; q }' || true
}

# find_clang PROGRAM: prints the command for the first supported version that is installed; status 1
# if there is none
find_clang() {
    local version unsuffixed
    unsuffixed=$(clang_version "$1")
    for version in "${clang_versions[@]}"; do
        if command -v "$1-$version" >/dev/null; then
            echo "$1-$version"
            return
        elif [ "$unsuffixed" = "$version" ]; then
            echo "$1"
            return
        fi
    done
    return 1
}

# find_clang_for WHAT PROGRAM: the same; if there is none, reports on standard error that WHAT is
# skipped
find_clang_for() {
    find_clang "$2" && return
    local earlier installed
    printf -v earlier '%s, ' "${clang_versions[@]:0:${#clang_versions[@]}-1}"
    installed=$(clang_version "$2")
    printf 'Skipping %s: it needs %s %s or %s; this system has %s\n' \
        "$1" "$2" "${earlier%, }" "${clang_versions[-1]}" "${installed:-none}" >&2
    return 1
}
