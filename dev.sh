#!/usr/bin/env bash
# Installs what the program needs from Debian, builds it, and then either starts it on the
# simulated board (./dev.sh run) or runs the whole test suite (./dev.sh test).
set -euo pipefail
cd "$(dirname "$0")"

packages=(cmake ninja-build g++ pkg-config qt6-base-dev libusb-1.0-0-dev libgtest-dev libgmock-dev
          libbenchmark-dev libumockdev-dev umockdev libglib2.0-dev ccache)

install_packages() {
    local missing=()
    for p in "${packages[@]}"; do
        dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
    done
    [ ${#missing[@]} -eq 0 ] && return
    local sudo=()
    [ "$(id -u)" -ne 0 ] && sudo=(sudo)
    echo "Installing: ${missing[*]}"
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -qq
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends "${missing[@]}" </dev/null
}

configure() { cmake -S . -B "$1" -G Ninja "${@:2}" >/dev/null; }

case "${1:-}" in
run)
    install_packages
    configure build
    cmake --build build --target lxmeval
    exec ./build/lxmeval --simulate "${@:2}"
    ;;
test)
    install_packages
    configure build
    cmake --build build
    ctest --test-dir build --output-on-failure -j2
    # The whole suite once more, in a tree of its own, under AddressSanitizer and UBSan with
    # float-cast-overflow (which GCC's "undefined" leaves out). Any report fails the test.
    configure build-asan -DLXM_SANITIZE=ON -DLXM_BUILD_BENCH=OFF -DCMAKE_BUILD_TYPE=Debug
    cmake --build build-asan
    echo "== the whole suite under AddressSanitizer and UndefinedBehaviorSanitizer"
    UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 ctest --test-dir build-asan --output-on-failure -j2
    ;;
*)
    echo "usage: $0 run|test" >&2
    exit 2
    ;;
esac
