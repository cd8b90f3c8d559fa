#!/usr/bin/env bash
# Scale run: generates large inputs into a temporary folder (never committed)
# and runs `qvt run` on them with MODEL=SIMPLE and OUT=, OUTFOR=, OUTEST=,
# OUTCOMPONENT=, printing series per second and peak memory.
#   long form: 1,000 and 10,000 BY groups of one monthly series of 144
#              observations (peak memory must not grow with the groups);
#   wide form: one step with 200 series side by side, through the spool.
set -euo pipefail
build=$(realpath "${1:?usage: run.sh BUILD-DIR}")
qvt=$build/qvt
here=$(cd "$(dirname "$0")" && pwd)
tmp=$(mktemp -d "${TMPDIR:-/tmp}/qvt-scale-XXXXXX")
trap 'rm -rf "$tmp"' EXIT

cat > "$tmp/long.qvt" <<'QVT'
qvt data=long out=out outfor=outfor outest=outest outcomponent=outcomp lead=12;
  by series;
  id date interval=month;
  forecast sales / model=simple;
run;
QVT
for groups in 1000 10000; do
  python3 "$here/gen_long.py" "$tmp/long.csv" "$groups" 144
  python3 "$here/measure.py" "long form, $groups BY groups x 144 months" "$groups" "$tmp" \
    "$qvt" run long.qvt --log run.log
done

python3 "$here/gen_wide.py" "$tmp/wide.csv" "$tmp/wide.qvt" 200 144
python3 "$here/measure.py" "wide form, 200 series x 144 months in one step" 200 "$tmp" \
  "$qvt" run wide.qvt --log run.log
