#!/usr/bin/env bash
# Installs what is missing, builds the tests under AddressSanitizer and UBSan, and runs them.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake --preset ci >/dev/null
cmake --build --preset ci --parallel "$(nproc)"
ctest --preset ci --parallel "$(nproc)" "$@"
