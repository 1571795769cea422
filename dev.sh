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
    # A CI machine is thrown away afterwards: dpkg need not sync each of the files it unpacks.
    local unsafe=()
    if [ "${CI:-}" = true ]; then unsafe=(-o Dpkg::Options::=--force-unsafe-io); fi
    echo "Installing: ${missing[*]}"
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get update -qq
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
        "${unsafe[@]}" "${missing[@]}" </dev/null
}

configure() { cmake -S . -B "$1" -G Ninja "${@:2}" >/dev/null; }
# The program as users get it (optimised as the benchmarks measure it, no debug information):
# what run and package build, and the tree whose package the test checks.
configure_plain() {
    configure build -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE="-O2 -DNDEBUG" -DLXM_BUILD_BENCH=OFF
}

# Each parser's libFuzzer target: name, seconds of fuzzing, seed corpus, dictionary (- for none).
# The seconds add up to about a minute; a new target takes its share from the others. The test
# command builds them in a clang tree of their own (build-fuzz) and ctest runs them alongside
# the suite; new inputs they find stay in build-fuzz/corpus-<name>, crashes in build-fuzz/.
fuzz_targets=(
    "script_loader_fuzz 30 fuzz/corpus fuzz/script.dict"
    "runlog_fuzz 30 fuzz/corpus-runlog -"
)

case "${1:-}" in
run)
    install_packages
    configure_plain
    cmake --build build --target lxmeval
    exec ./build/lxmeval --simulate "${@:2}"
    ;;
test)
    install_packages
    # One tree carries the program and the whole suite under AddressSanitizer and UBSan with
    # float-cast-overflow (which GCC's "undefined" leaves out); any report fails the test.
    # Line tables (-g1) are enough for the reports and cost far less than full debug information.
    # The package test checks the package of the plain program, built first in build.
    configure_plain
    cmake --build build --target lxmeval lxm_package_docs lxm_python
    fuzz_runs=()
    if command -v clang++ >/dev/null; then
        configure build-fuzz -DLXM_FUZZ=ON -DCMAKE_CXX_COMPILER=clang++
        names=()
        for t in "${fuzz_targets[@]}"; do names+=("${t%% *}"); done
        cmake --build build-fuzz --target "${names[@]}"
        fuzz_runs=("${fuzz_targets[@]}")
    fi
    configure build-test -DLXM_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-g1 \
        -DLXM_BUILD_BENCH=OFF -DLXM_PACKAGE_TREE="$PWD/build" \
        -DLXM_FUZZ_TREE="$PWD/build-fuzz" -DLXM_FUZZ_RUNS="$(IFS=';'; echo "${fuzz_runs[*]}")"
    cmake --build build-test
    # The cases mostly wait on timers and the fuzzers on one core: three at a time keep two
    # cores busy.
    echo "== the whole suite under AddressSanitizer and UndefinedBehaviorSanitizer, and the fuzzers"
    UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 ctest --test-dir build-test --output-on-failure -j3
    ;;
bench)
    install_packages
    configure build-rel -DCMAKE_BUILD_TYPE=RelWithDebInfo -DLXM_BUILD_BENCH=ON
    cmake --build build-rel --target lxm_bench
    QT_QPA_PLATFORM=offscreen ./build-rel/bench/lxm_bench --benchmark_filter="${2:-.}"
    ;;
package)
    install_packages
    configure_plain
    cmake --build build --target lxmeval lxm_package_docs lxm_python
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
