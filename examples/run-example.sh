#!/usr/bin/env bash
# Runs the example step with the qvt binary given as $1: the weekly Mauna Loa
# CO2 record, accumulated to months. Until the run driver is built, the step
# is parsed and checked.
set -euo pipefail
qvt=$(realpath "${1:?usage: run-example.sh PATH-TO-QVT}")
cd "$(dirname "$0")"
mkdir -p out
echo "== qvt check quickstart.qvt"
"$qvt" check quickstart.qvt > out/quickstart.check.json
echo "statement records written to examples/out/quickstart.check.json"
echo "== qvt run quickstart.qvt"
"$qvt" run quickstart.qvt
