#!/usr/bin/env bash
# Builds the benchmarks in a release tree and runs them; arguments go to Google Benchmark.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake --preset release >/dev/null
cmake --build --preset release --parallel "$(nproc)"
for b in build-release/bench/*_bench; do
  "$b" "$@"
done
