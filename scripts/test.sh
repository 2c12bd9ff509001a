#!/usr/bin/env bash
# Builds ZEPT and runs every test: the optimised build, then the same unit
# tests under the address and undefined-behaviour sanitizers, then the tests
# that start threads under the thread sanitizer (the tsan preset selects them
# by name: a test that starts threads belongs to a suite named there, or has
# Thread, Concurrent, Racing or Parallel in its name), then the Windows
# build, cross-built with MinGW-w64 and run under Wine: the unit tests, the
# release folder's command line job and the main job, once on the built-in
# simulator and once through the SimConnect library's C functions.
# Installs what is missing first (scripts/setup.sh --windows). The Windows
# libraries are built once from Debian's source packages into a cache outside
# the tree (scripts/windows_deps.sh); that and Wine's first start run beside
# the Linux builds. The Windows step runs with ZEPT_WINDOWS=1 until its
# main job through the SimConnect library passes on the merged tree.
set -euo pipefail
cd "$(dirname "$0")/.."
windows=0
[[ "${ZEPT_WINDOWS:-0}" = 1 ]] && windows=1
if [[ $windows = 1 ]]; then scripts/setup.sh --windows; else scripts/setup.sh; fi

export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}"
# Any report fails the test that shows it.
export TSAN_OPTIONS="${TSAN_OPTIONS:-halt_on_error=1:second_deadlock_stack=1}"

all_started=$SECONDS
took() { echo "== $1 took $(( (SECONDS - $2 + 30) / 60 )) min"; }

prepare_pid=""
prepare_log="$(mktemp /tmp/zept_windows_prepare.XXXXXX)"
# A failed Linux step ends the preparation too (its own process group).
trap '[[ -n "$prepare_pid" ]] && kill -- "-$prepare_pid" 2>/dev/null; rm -f "$prepare_log"' EXIT
if [[ $windows = 1 ]]; then
  # Mostly downloads, configure scripts and single files: it fills the
  # cores the Linux builds leave idle.
  setsid bash -c 'started=$SECONDS
    scripts/windows_deps.sh && cmake/wine_run.sh --wait-server &&
    echo "windows libraries and Wine prefix ready in $((SECONDS - started)) s"' \
    >"$prepare_log" 2>&1 &
  prepare_pid=$!
fi

for preset in default asan tsan; do
  started=$SECONDS
  echo "== build: $preset"
  cmake --preset "$preset" >/dev/null
  cmake --build --preset "$preset"
  echo "== test: $preset"
  ctest --preset "$preset"
  took "$preset" "$started"
done

if [[ $windows = 1 ]]; then
  started=$SECONDS
  status=0
  wait "$prepare_pid" || status=$?
  prepare_pid=""
  if [[ $status != 0 ]]; then
    cat "$prepare_log"
    echo "== windows: the libraries could not be built"
    exit 1
  fi
  tail -1 "$prepare_log"
  echo "== build: windows"
  cmake --preset windows >/dev/null
  cmake --build --preset windows
  echo "== test: windows (under Wine; the main job uses build/default/rt_app_standin)"
  ctest --preset windows
  took windows "$started"
fi
took "everything" "$all_started"
