#!/usr/bin/env bash
# Builds the libFuzzer targets with clang, ASan and UBSan, and runs each for the given
# number of seconds (default 300). Findings land in fuzz-corpus/<target>/crash-*.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-300}
scripts/install-deps.sh
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz --parallel "$(nproc)"
export ASAN_OPTIONS=detect_leaks=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
for target in ${FUZZ_TARGETS:-xml_load_fuzzer date_parse_fuzzer script_fuzzer csv_line_fuzzer sor_load_fuzzer profiles_load_fuzzer batch_load_fuzzer}; do
  corpus=fuzz-corpus/$target
  mkdir -p "$corpus"
  seeds=fuzz/corpus/${target%%_*}
  echo "== $target for ${seconds}s"
  build-fuzz/fuzz/$target -max_total_time="$seconds" -print_final_stats=1 \
    -artifact_prefix="$corpus/" "$corpus" $( [ -d "$seeds" ] && echo "$seeds" )
done
