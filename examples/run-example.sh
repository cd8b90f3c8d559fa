#!/usr/bin/env bash
# Runs the example steps with the qvt binary given as $1: the weekly Mauna Loa
# CO2 record, accumulated to months and forecast two years ahead, and the
# demand of three spare parts. The outputs, the listing and the HTML report
# with the plots go to examples/out/.
set -euo pipefail
qvt=$(realpath "${1:?usage: run-example.sh PATH-TO-QVT}")
cd "$(dirname "$0")"
mkdir -p out
echo "== qvt run quickstart.qvt"
status=0
"$qvt" run quickstart.qvt --lib work=out --log out/quickstart.log --listing out/quickstart.lst \
  --html out/quickstart.html || status=$?
echo "log: examples/out/quickstart.log"
echo "printed tables: examples/out/quickstart.lst; report with plots: examples/out/quickstart.html"
for ds in co2_out co2_for co2_est co2_comp parts_for parts_est; do
  f=out/$ds.csv
  if [[ -f $f ]]; then
    echo "$ds: examples/$f ($(($(wc -l < "$f") - 1)) rows)"
  else
    echo "$ds: not written (see the log)"
  fi
done
echo "== last forecasts (examples/out/co2_for.csv)"
tail -n 3 out/co2_for.csv
echo "== the models chosen for the parts (examples/out/parts_est.csv)"
cut -d, -f1-5 out/parts_est.csv
exit $status
