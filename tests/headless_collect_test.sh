#!/bin/sh
# The built program collecting with no window, the way a bench script starts it: no display,
# standard input and error not terminals. Its output is captured and shown only on a failure.
# Usage: headless_collect_test.sh path/to/lxmeval
bin="$1"
. "$(dirname "$0")/headless_lib.sh"
cr=$(printf '\r')

has() { grep -qF -- "$2" "$1" || fail "$1 lacks: $2"; }
# rows FILE: the sample rows of a log (after the "#" lines and the column names).
rows() { grep -v '^#' "$1" | tail -n +2 | wc -l | tr -d ' '; }
# A log is well formed: "#" lines, then the column names, then rows of the column count.
well_formed() {
    awk -F, -v cols="$2" '
        /^#/ { if (seen) bad = "a # line after the columns"; next }
        !seen { seen = 1; if ($0 != cols "\r") bad = "column row: " $0; next }
        { if (NF != split(cols, c, ",")) bad = "row " NR ": " $0 }
        END { if (!seen) bad = "no column row"; if (bad) { print bad; exit 1 } }' "$1" ||
        fail "$1 is not well formed"
}

case="als for a number of samples"
run 0 --collect als-cont --output "$work/als.csv" --samples 50 --interval 0 --simulate
[ "$(rows "$work/als.csv")" = 50 ] || fail "$(rows "$work/als.csv") rows, expected 50"
well_formed "$work/als.csv" "time,seconds,sample,raw,value,unit,status"
has "$work/als.csv" "# sensor: LXM410"
has "$work/als.csv" "# interval: 0 ms"
grep -q ",lux,ok$cr\$" "$work/als.csv" || fail "no lux rows"
[ ! -s "$work/out" ] || fail "stdout should be empty"
grep -q 'samples, ' "$work/err" && fail "a progress line on a stderr that is no terminal"

case="the dual mode with range and resolution on another sensor"
run 0 --collect prox-ir --output "$work/dual.csv" --samples 12 --sensor LXM430 --range 4000 \
    --resolution 12 --interval 5 --simulate
[ "$(rows "$work/dual.csv")" = 12 ] || fail "$(rows "$work/dual.csv") rows, expected 12"
well_formed "$work/dual.csv" "time,seconds,sample,raw,value,unit,status,ir,prox"
has "$work/dual.csv" "# sensor: LXM430"
has "$work/dual.csv" "# range: 4000 lux"
has "$work/dual.csv" "# interval: 5 ms"

case="a duration"
run 0 --collect ir-cont --output "$work/ir.csv" --duration 0.5 --interval 20 --simulate
n=$(rows "$work/ir.csv")
[ "$n" -ge 5 ] && [ "$n" -le 40 ] || fail "$n rows in half a second at 20 ms"
grep -q ",counts,ok$cr\$" "$work/ir.csv" || fail "no counts rows"

case="SIGTERM ends the run with the file complete"
env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM "$bin" --collect als-cont --output "$work/term.csv" \
    --interval 10 --simulate >"$work/out" 2>"$work/err" </dev/null &
pid=$!
i=0
while [ "$(rows "$work/term.csv" 2>/dev/null || echo 0)" -lt 3 ] && [ $i -lt 100 ]; do sleep 0.1; i=$((i + 1)); done
kill -TERM $pid
wait $pid
rc=$?
[ "$rc" = 0 ] || fail "exit status $rc after SIGTERM, expected 0"
well_formed "$work/term.csv" "time,seconds,sample,raw,value,unit,status"
[ "$(rows "$work/term.csv")" -ge 3 ] || fail "rows were lost"
has "$work/err" "stopped by signal"

case="the multi-function sensor, proximity"
run 0 --collect prox-cont --output "$work/m600.csv" --sensor LXM600 --samples 20 --interval 0 --simulate
[ "$(rows "$work/m600.csv")" = 20 ] || fail "$(rows "$work/m600.csv") rows, expected 20"
well_formed "$work/m600.csv" "time,seconds,sample,raw,value,unit,status"
has "$work/m600.csv" "# sensor: LXM600"
has "$work/m600.csv" "# measurement: Proximity"
grep -q ",counts,ok$cr\$" "$work/m600.csv" || fail "no counts rows"

case="the multi-function sensor, ALS in lux"
run 0 --collect als --output "$work/m600als.csv" --sensor LXM600 --samples 6 --interval 30 --simulate
[ "$(rows "$work/m600als.csv")" = 6 ] || fail "$(rows "$work/m600als.csv") rows, expected 6"
has "$work/m600als.csv" "# measurement: ALS"
grep -q ",lux,ok$cr\$" "$work/m600als.csv" || fail "no lux rows"

# refused SAYS ARGS...: exit 2, one message that says SAYS, and no file.
refused() {
    says=$1; shift
    rm -f "$work/refused.csv"
    run 2 "$@" --output "$work/refused.csv" --samples 5 --simulate
    [ ! -e "$work/refused.csv" ] || fail "a log although the arguments were refused"
    [ "$(grep -c '^lxmeval:' "$work/err")" = 1 ] || fail "not one message"
    has "$work/err" "$says"
}
case="what the multi-function sensor lacks"
refused "collect prox and ir" --collect prox-ir --sensor LXM600
refused "leave it out" --collect als --sensor LXM600 --resolution 12
refused "2000 or 125 (lux) for LXM600" --collect als --sensor LXM600 --range 1000

case="no board"
run 2 --collect als --output "$work/none.csv" --samples 5
[ ! -e "$work/none.csv" ] || fail "a log without a board"

case="bad arguments"
run 2 --collect als-cont --output "$work/x.csv" --samples 5 --range 500 --simulate
run 2 --collect als-cont --samples 5 --simulate

case="a log that cannot be created: told in one line with the reason, before any sample"
for bad in "$work/no/such/dir.csv:No such file" "$work:Is a directory"; do
    run 2 --collect als-cont --output "${bad%%:*}" --samples 5 --simulate
    [ "$(grep -c '^lxmeval:' "$work/err")" = 1 ] || fail "not one message"
    has "$work/err" "\"${bad%%:*}\": ${bad#*:}"
done

case="a one-shot reading waits as long as its resolution asks"
run 0 --collect als --range 4000 --resolution 16 --samples 4 --output "$work/once.csv" --simulate
has "$work/once.csv" "# interval: 118 ms"
has "$work/once.csv" "# resolution: 16 bits"
[ "$(grep -c ",lux,ok$cr\$" "$work/once.csv")" = 4 ] || fail "not 4 ok rows"

case="a shorter interval is said once and its readings are marked early"
run 0 --collect als --resolution 16 --interval 8 --samples 4 --output "$work/early.csv" --simulate
[ "$(grep -c ",lux,early$cr\$" "$work/early.csv")" = 4 ] || fail "not 4 early rows"
[ "$(grep -c '^lxmeval:' "$work/err")" = 1 ] || fail "not one message"
has "$work/err" "shorter than the 100.0 ms a 16-bit conversion takes"

exit $failed
