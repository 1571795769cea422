#!/usr/bin/env bash
# Installs what the program needs from Debian, builds it, and then either starts it on the
# simulated board (./dev.sh run), runs the whole test suite (./dev.sh test), builds the
# Debian package (./dev.sh package) or runs the benchmarks optimised (./dev.sh bench [filter]).
set -euo pipefail
cd "$(dirname "$0")"

packages=(cmake ninja-build g++ pkg-config qt6-base-dev qt6-svg-dev libqcustomplot-dev libqcustomplot2.1-qt6 libusb-1.0-0-dev libgtest-dev libgmock-dev
          libbenchmark-dev libumockdev-dev umockdev libglib2.0-dev ccache clang libclang-rt-dev
          dpkg-dev file lintian pybind11-dev python3-dev python3-numpy python3-pytest)

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
    # The script loader under libFuzzer for a minute, in a clang tree of its own; new inputs it
    # finds stay in build-fuzz, the seed corpus in fuzz/corpus.
    if command -v clang++ >/dev/null; then
        configure build-fuzz -DLXM_FUZZ=ON -DCMAKE_CXX_COMPILER=clang++
        cmake --build build-fuzz --target script_loader_fuzz
        mkdir -p build-fuzz/corpus
        echo "== script_loader_fuzz (60 s)"
        if ! ./build-fuzz/fuzz/script_loader_fuzz -max_total_time=60 -artifact_prefix=build-fuzz/ \
            -dict=fuzz/script.dict build-fuzz/corpus fuzz/corpus >build-fuzz/fuzz.log 2>&1; then
            tail -n 60 build-fuzz/fuzz.log
            echo "script_loader_fuzz failed; the input is in build-fuzz/ (crash-*), the log in build-fuzz/fuzz.log" >&2
            exit 1
        fi
        tail -n 1 build-fuzz/fuzz.log
    fi
    # The whole suite once more, in a tree of its own, under AddressSanitizer and UBSan with
    # float-cast-overflow (which GCC's "undefined" leaves out). Any report fails the test.
    configure build-asan -DLXM_SANITIZE=ON -DLXM_BUILD_BENCH=OFF -DCMAKE_BUILD_TYPE=Debug
    cmake --build build-asan
    echo "== the whole suite under AddressSanitizer and UndefinedBehaviorSanitizer"
    UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 ctest --test-dir build-asan --output-on-failure -j2 -E package_contents
    ;;
bench)
    install_packages
    configure build-rel -DCMAKE_BUILD_TYPE=RelWithDebInfo
    cmake --build build-rel --target lxm_bench
    QT_QPA_PLATFORM=offscreen ./build-rel/bench/lxm_bench --benchmark_filter="${2:-.}"
    ;;
package)
    install_packages
    configure build
    cmake --build build --target lxmeval lxm_package_docs
    (cd build && cpack -G DEB)
    deb=$(ls -t build/lxmeval_*.deb | head -1)
    lintian "$deb" || true
    echo "Built $deb; install it with: sudo apt install ./$deb"
    ;;
*)
    echo "usage: $0 run|test|package|bench [filter]" >&2
    exit 2
    ;;
esac
