#!/usr/bin/env bash
# Builds ZEPT and runs every test: the optimised build, then the same unit
# tests under the address and undefined-behaviour sanitizers.
# Installs what is missing first (scripts/setup.sh).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh

export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}"

for preset in default asan; do
  echo "== build: $preset"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  echo "== test: $preset"
  ctest --preset "$preset"
done
