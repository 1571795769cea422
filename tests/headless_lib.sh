# What the tests of the built program without a window share, sourced by each: a scratch
# folder, the run of the program the way a bench script or CI starts it (no display of any
# kind, standard input not a terminal), and the report of a failed case with what it printed.
# The sourcing script sets bin (the program) and case (the case under way).
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
failed=0

show() {
    # The program's summary line would otherwise read like a test runner's own.
    sed -e 's/ passed, / passed; /' -e 's/^/    /' "$work/$1"
}
fail() {
    echo "FAIL ($case): $*"
    echo "  stdout:"; show out
    echo "  stderr:"; show err
    failed=1
}
# run EXPECTED_EXIT ARGS...
run() {
    expect=$1; shift
    env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM "$bin" "$@" >"$work/out" 2>"$work/err" </dev/null
    rc=$?
    [ "$rc" = "$expect" ] || fail "exit status $rc, expected $expect"
}
