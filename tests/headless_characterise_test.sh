#!/bin/sh
# The built program characterising with no display: the three files, the table on standard
# output, no file replaced, and the exit status of each way a sweep can end.
# Usage: headless_characterise_test.sh path/to/lxmeval
bin="$1"
. "$(dirname "$0")/headless_lib.sh"

# rows FILE: the table's rows (after the "#" lines and the column names).
rows() { grep -v '^#' "$1" | tail -n +2 | wc -l | tr -d ' '; }

case="every setting of the LXM600 into a new folder"
run 0 --characterise --output "$work/a/b" --sensor LXM600 --readings 4 --reference 250 --simulate --light 250 --ideal
for f in csv png md; do [ -s "$work/a/b/characterisation.$f" ] || fail "no characterisation.$f"; done
[ "$(rows "$work/a/b/characterisation.csv")" = 2 ] || fail "$(rows "$work/a/b/characterisation.csv") rows, expected 2"
grep -q "^# status: complete" "$work/a/b/characterisation.csv" || fail "not complete"
grep -q "ideal chip" "$work/a/b/characterisation.md" || fail "the report does not name the bench"
grep -q "^  2000 " "$work/out" || fail "no table on stdout"
head -c 8 "$work/a/b/characterisation.png" | od -c | grep -q "P   N   G" || fail "not a PNG"

case="a second sweep keeps the first one's files"
cp "$work/a/b/characterisation.csv" "$work/first.csv"
run 0 --characterise --output "$work/a/b" --sensor LXM600 --readings 2 --measure ir --simulate
cmp -s "$work/first.csv" "$work/a/b/characterisation.csv" || fail "the first table was replaced"
[ -s "$work/a/b/characterisation-2.md" ] || fail "no characterisation-2.md"

case="SIGTERM stops the sweep with the files marked incomplete"
env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM "$bin" --characterise --output "$work/t" --simulate \
    >"$work/out" 2>"$work/err" </dev/null &
pid=$!
i=0
while ! grep -q "measuring 1000 lux 12" "$work/err" && [ $i -lt 100 ]; do sleep 0.1; i=$((i + 1)); done
kill -TERM $pid
wait $pid
rc=$?
[ "$rc" = 1 ] || fail "exit status $rc after SIGTERM, expected 1"
grep -q "^# status: incomplete (2 of 16 settings): cancelled" "$work/t/characterisation.csv" || fail "not marked"

case="bad arguments and an unwritable folder"
run 2 --characterise --simulate
run 2 --characterise --output "$work/x" --readings 1 --simulate
run 2 --readings 8 --simulate
run 2 --characterise --output "$work/x" --measure prox --sensor LXM470 --simulate
touch "$work/file"
run 2 --characterise --output "$work/file/sub" --simulate
grep -q "$work/file/sub" "$work/err" || fail "the folder is not named"

exit $failed
