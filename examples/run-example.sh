#!/usr/bin/env bash
# Runs the example step with the qvt binary given as $1: the weekly Mauna Loa
# CO2 record, accumulated to months and forecast two years ahead. The outputs
# go to examples/out/.
set -euo pipefail
qvt=$(realpath "${1:?usage: run-example.sh PATH-TO-QVT}")
cd "$(dirname "$0")"
mkdir -p out
echo "== qvt run quickstart.qvt"
status=0
"$qvt" run quickstart.qvt --lib work=out --log out/quickstart.log || status=$?
echo "log: examples/out/quickstart.log"
for ds in co2_out co2_for co2_est co2_comp; do
  f=out/$ds.csv
  if [[ -f $f ]]; then
    echo "$ds: examples/$f ($(($(wc -l < "$f") - 1)) rows)"
  else
    echo "$ds: not written (see the log)"
  fi
done
echo "== last forecasts (examples/out/co2_for.csv)"
tail -n 3 out/co2_for.csv
exit $status
