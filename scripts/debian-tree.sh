# shellcheck shell=bash
# Sourced by the scripts that need a Debian system of its own, in a folder.

# The package sources of this machine.
debian_sources() {
    # shellcheck disable=SC2016 # the names are apt's
    apt-get indextargets --format 'deb $(REPO_URI) $(RELEASE) $(COMPONENT)' \
        'Created-By: Packages' 'Label: Debian' 'Component: main'
}

# Command prefix for mmdebstrap.
launcher=()

# make_debian_tree MACHINE VARIANT TARGET OPTION...: see mmdebstrap(1)
make_debian_tree() {
    debian_sources | "${launcher[@]}" mmdebstrap --quiet --architectures="$1" --variant="$2" "${@:4}" '' "$3" -
}

# Makes absolute links relative: they would point out of the tree.
make_links_relative() {
    local link
    find "$1" -lname '/*' | while read -r link; do
        ln --symbolic --relative --force "$1$(readlink "$link")" "$link"
    done
}

# extract_debian_tree MACHINE FOLDER OPTION...: extracts packages without configuring them, which
# works for other processors; omits devices, which only root may create
extract_debian_tree() {
    mkdir -p "$2" &&
        make_debian_tree "$1" extract - --format=tar "${@:3}" |
        tar --extract --no-same-owner --directory="$2" --exclude='./dev/*' &&
        make_links_relative "$2"
}
