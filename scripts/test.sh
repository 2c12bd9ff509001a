#!/usr/bin/env bash
# Builds ZEPT and runs every test: the optimised build, then the same unit
# tests under the address and undefined-behaviour sanitizers, then the
# Windows build, cross-built with MinGW-w64 and run under Wine.
# Installs what is missing first (scripts/setup.sh); the Windows libraries are
# built once into a cache outside the tree (scripts/windows_deps.sh).
# ZEPT_SKIP_WINDOWS=1 leaves the Windows step out.
set -euo pipefail
cd "$(dirname "$0")/.."
windows=1
[[ "${ZEPT_SKIP_WINDOWS:-0}" = 1 ]] && windows=0
if [[ $windows = 1 ]]; then scripts/setup.sh --windows; else scripts/setup.sh; fi

export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}"

for preset in default asan; do
  echo "== build: $preset"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  echo "== test: $preset"
  ctest --preset "$preset"
done

if [[ $windows = 1 ]]; then
  started=$SECONDS
  echo "== build: windows"
  scripts/windows_deps.sh >/dev/null
  cmake --preset windows >/dev/null
  cmake --build --preset windows
  echo "== test: windows (under Wine; the main job uses build/default/rt_app_standin)"
  ctest --preset windows
  echo "== windows: $((SECONDS - started)) s"
fi
