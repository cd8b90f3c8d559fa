#!/usr/bin/env bash
# Runs the example step with the qvt binary given as $1.
set -euo pipefail
qvt=${1:?usage: run-example.sh PATH-TO-QVT}
cd "$(dirname "$0")"
"$qvt" --help >/dev/null
echo "qvt built at $qvt"
