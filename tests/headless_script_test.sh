#!/bin/sh
# The built program, run the way a bench script or CI runs it: no display of any kind, standard
# input not a terminal. Its output is captured here and compared, never passed through raw.
# Usage: headless_script_test.sh path/to/lxmeval
bin="$1"
. "$(dirname "$0")/headless_lib.sh"
tab=$(printf '\t')

has() { grep -qF -- "$2" "$work/$1" || fail "$1 lacks: $2"; }
lacks() { ! grep -qF -- "$2" "$work/$1" || fail "$1 should not hold: $2"; }
empty() { [ ! -s "$work/$1" ] || fail "$1 should be empty"; }

case="--help without a display"
run 0 --help
has out "--script FILE"
empty err

case="--version without a display"
run 0 --version
grep -qE '^lxmeval [0-9]+\.[0-9]+\.[0-9]+$' "$work/out" || fail "no version line"

case="unknown option"
run 2 --bogus
has err "unknown option '--bogus'"
empty out

case="bad collection type"
run 2 --collect lux --output x.csv
has err "--collect needs one of als, ir, prox"
empty out

case="bad loop count"
run 2 --script x.txt --loops zero
has err "--loops needs a whole number"

printf '# thresholds\r\n04,A55A\r\n04,,A55A\r\n`w5\r\n05,,5A # high byte\r\n04,,XX' >"$work/pass.txt"
case="a passing script"
run 0 --simulate --script "$work/pass.txt" --sensor LXM430
cat >"$work/expected" <<END
1${tab}NOP${tab}--${tab}--${tab}--${tab}-
2${tab}1 Reg: W:2${tab}00 88 04 A5 5A${tab}--${tab}--${tab}-
3${tab}1 Reg: R:2${tab}02 89 04${tab}A55A${tab}A55A${tab}pass
4${tab}Cmd:Delay :5: mSec${tab}--${tab}--${tab}--${tab}-
5${tab}1 Reg: R:1${tab}01 89 05${tab}5A${tab}5A${tab}pass
6${tab}1 Reg: R:1${tab}01 89 04${tab}XX${tab}A5${tab}-
2 passed, 0 failed
END
cmp -s "$work/out" "$work/expected" || fail "stdout differs from the expected rows and summary"

printf '04,11\n04,,22\n04,,11\n' >"$work/fail.txt"
case="a failing read"
run 1 --simulate --script "$work/fail.txt" --loops 2
has out "2${tab}1 Reg: R:1${tab}01 89 04${tab}22${tab}11${tab}fail"
has out "2 passed, 2 failed"
has err "Loop 2 of 2"

case="abort on fail"
run 1 --simulate --script "$work/fail.txt" --abort-on-fail
has out "0 passed, 1 failed"
lacks out "3${tab}"
has err "stopped at line 2"

case="a missing file"
run 2 --simulate --script "$work/missing.txt"
has err "$work/missing.txt"
empty out

printf '04,11\n04,1\n04,123\n`wx\n' >"$work/bad.txt"
case="rows that cannot run"
run 2 --simulate --script "$work/bad.txt"
has err "$work/bad.txt:3: Write data \"123\" has an odd number of hex digits"
has err "$work/bad.txt:4: Delay time is not numeric"
empty out

printf '04,11\n`A89\n04,22\n' >"$work/address.txt"
case="an illegal address"
run 2 --simulate --script "$work/address.txt"
has err "Illegal I2C address Script Row 2 Value = 89"
empty out

printf '04,11\n`w\n04,22\n' >"$work/pause.txt"
case="a pause with no terminal"
run 2 --simulate --script "$work/pause.txt"
has err "line 2 is a key-press pause"
lacks out "3${tab}"

case="no board"
run 2 --script "$work/pass.txt"
has err "Evaluation Board is not connected"

[ "$failed" = 0 ] && echo "headless runner: all cases passed"
exit "$failed"
