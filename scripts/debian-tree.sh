# shellcheck shell=bash
# Sourced by the scripts that need a Debian system of its own, in a folder.

# Of the release of this machine, and from where this machine's packages come from.
debian_sources() {
    # shellcheck disable=SC2016 # the names are apt's
    apt-get indextargets --format 'deb $(REPO_URI) $(RELEASE) $(COMPONENT)' \
        'Created-By: Packages' 'Label: Debian' 'Component: main'
}

# What mmdebstrap is started with.
launcher=()

# make_debian_tree MACHINE VARIANT TARGET OPTION...: see mmdebstrap(1)
make_debian_tree() {
    debian_sources | "${launcher[@]}" mmdebstrap --quiet --architectures="$1" --variant="$2" "${@:4}" '' "$3" -
}

# Links that start at the root would lead out of the tree.
make_links_relative() {
    local link
    find "$1" -lname '/*' | while read -r link; do
        ln --symbolic --relative --force "$1$(readlink "$link")" "$link"
    done
}

# extract_debian_tree MACHINE FOLDER OPTION...: nothing is configured, so that it may be of another
# processor; devices, which only root may make, are left out
extract_debian_tree() {
    mkdir -p "$2" &&
        make_debian_tree "$1" extract - --format=tar "${@:3}" |
        tar --extract --no-same-owner --directory="$2" --exclude='./dev/*' &&
        make_links_relative "$2"
}
