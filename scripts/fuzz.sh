#!/usr/bin/env bash
# Builds the libFuzzer targets with clang and runs each for a while.
# Not part of CI. Usage: scripts/fuzz.sh [seconds per target, default 60]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-60}"
scripts/setup.sh --fuzz
cmake --preset fuzz >/dev/null
cmake --build --preset fuzz
mkdir -p build/fuzz/corpus
for target in build/fuzz/fuzz_*; do
  [[ -x "$target" ]] || continue
  name=$(basename "$target")
  corpus="build/fuzz/corpus/$name"
  mkdir -p "$corpus"
  echo "== $name for ${seconds}s"
  (cd build/fuzz && "./$name" -max_total_time="$seconds" -print_final_stats=1 "corpus/$name" 2>&1 | tail -n 12)
done
