#!/bin/sh
# The waits inside a collection's readings (a one-shot type, the dual mode): a long one ends with
# the duration, and with a signal, rather than after the interval; a short one marks its readings.
# Usage: headless_long_wait_test.sh path/to/lxmeval
bin="$1"
. "$(dirname "$0")/headless_lib.sh"

for type in als prox-ir; do
    case="$type at a one-minute interval for half a second"
    start=$(date +%s)
    run 0 --collect $type --output "$work/$type.csv" --interval 60000 --duration 0.5 --simulate
    [ $(($(date +%s) - start)) -le 5 ] || fail "took $(($(date +%s) - start)) s"
    grep -q "^time,seconds,sample,raw,value,unit,status" "$work/$type.csv" || fail "no column row"
done
case="the dual mode read before its conversions could end"
run 0 --collect prox-ir --output "$work/early.csv" --interval 2 --samples 3 --simulate
[ "$(grep -c ',counts,early,' "$work/early.csv")" = 3 ] || fail "not 3 early rows"
grep -q "the readings are marked early" "$work/err" || fail "not told"
exit $failed
