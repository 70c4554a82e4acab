# shellcheck shell=bash
# Sourced by run and check: finds or installs what a build needs.

# need PACKAGE... installs Debian packages, or says in one line what to install and ends the script.
need() {
    local -a as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        as_root=(sudo)
        if ! command -v sudo >/dev/null; then
            echo "keldump: please install: $*" >&2
            exit 1
        fi
    fi
    if ! command -v apt-get >/dev/null; then
        echo "keldump: please install: $*" >&2
        exit 1
    fi
    echo "keldump: installing $*" >&2
    if ! { "${as_root[@]}" apt-get update &&
        DEBIAN_FRONTEND=noninteractive "${as_root[@]}" apt-get install -y --no-install-recommends "$@"; } >&2; then
        echo "keldump: could not install; please install: $*" >&2
        exit 1
    fi
}

need_compiler() {
    local -a missing=()
    command -v g++ >/dev/null || missing+=(g++)
    command -v cmake >/dev/null || missing+=(cmake)
    command -v make >/dev/null || missing+=(make)
    [ ${#missing[@]} -eq 0 ] || need "${missing[@]}"
}
