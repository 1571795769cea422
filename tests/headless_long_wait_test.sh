#!/bin/sh
# A collection whose readings wait long (a one-shot type, the dual mode) still ends on time: a
# reading's own wait ends with the duration, and with a signal, rather than after the interval.
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
exit $failed
