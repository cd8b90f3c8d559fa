#!/usr/bin/env bash
# Runs every benchmark program of a release build directory given as $1.
set -euo pipefail
build=${1:?usage: run-benchmarks.sh BUILD-DIR}
shopt -s nullglob
for b in "$build"/bench_*; do
  echo "== $(basename "$b")"
  "$b" --benchmark_min_time=0.2
done
echo "== scale run (bench/scale/run.sh)"
"$(dirname "$0")/scale/run.sh" "$build"
