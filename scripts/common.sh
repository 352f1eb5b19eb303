# shellcheck shell=bash
# For the scripts of this folder: the packages that each job needs, and their installation.

# shellcheck disable=SC2034 # used by the scripts that include this file
{
build_packages=(g++ cmake ninja-build ccache pkg-config libboost-dev libinih-dev libcli11-dev libfmt-dev nlohmann-json3-dev)
test_packages=(libgtest-dev libgmock-dev groff-base)
bench_packages=(libbenchmark-dev libsqlite3-dev liblmdb-dev libleveldb-dev libglib2.0-dev libinih-dev python3)
check_packages=(clang clang-format clang-tidy shellcheck python3 abigail-tools xz-utils)
coverage_packages=(gcovr python3)
package_packages=(debhelper dpkg-dev lintian)
# The fuzzers' own library is but recommended by the compiler; llvm puts names into the traces of what they find.
fuzz_packages=(clang libclang-rt-14-dev llvm)
armhf_packages=(g++-arm-linux-gnueabihf qemu-user)
# Of the architecture armhf, unpacked below build/ by scripts/armhf-libraries and never installed.
armhf_libraries=(libboost1.74-dev libinih1 libinih-dev libcli11-dev libfmt9 libfmt-dev nlohmann-json3-dev
    googletest libgtest-dev libgmock-dev)
}

is_installed() {
    [ "$(dpkg-query --show --showformat='${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# Installs those of the named Debian packages that are missing; the network is asked only if there are any.
install_packages() {
    local package missing=() as_root=()
    if ! command -v apt-get >/dev/null; then
        echo "This is no Debian, so nothing is installed. The build needs what these Debian packages hold: $*" >&2
        return 0
    fi
    for package in "$@"; do
        is_installed "$package" || missing+=("$package")
    done
    [ ${#missing[@]} -gt 0 ] || return 0
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null; then
            echo "These packages are missing and neither root nor sudo is at hand to install them: ${missing[*]}" >&2
            return 1
        fi
        as_root=(sudo)
    fi
    echo "Installing: ${missing[*]}"
    "${as_root[@]}" apt-get update </dev/null || return 1
    "${as_root[@]}" env DEBIAN_FRONTEND=noninteractive \
        apt-get install --yes --no-install-recommends "${missing[@]}" </dev/null
}
