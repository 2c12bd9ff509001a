#!/usr/bin/env bash
# A long run of the main job (not part of the tests): ZEPT on the built-in
# simulator with the stand-in application looping the bundled scenario (each
# round under new transponder codes, so aircraft keep coming and going).
# Samples ZEPT's resident memory every 10 seconds and reports whether it
# stayed flat, what the traffic engine did, and any traffic exceptions.
#   scripts/soak.sh [MINUTES]     (default 30)
# Outputs stay in soak/: memory.csv, console.txt, Log.txt.
set -euo pipefail
cd "$(dirname "$0")/.."
minutes="${1:-30}"
scripts/setup.sh
cmake --preset default >/dev/null
cmake --build --preset default --target zept rt_app_standin zept_bundled_data >/dev/null
rm -rf soak
scripts/program_folder.sh build/default soak
mkdir -p soak/data

build/default/rt_app_standin --scenario data/rt_scenario_egtk.csv >soak/standin.txt 2>&1 &
standin_pid=$!
trap 'kill "$standin_pid" 2>/dev/null; wait 2>/dev/null || true' EXIT

cd soak
XDG_DATA_HOME="$PWD/simulator/localappdata" ZEPT_DATA_DIR="$PWD/data" ./zept --rt-app --status 10 --duration $((minutes * 60)) \
  >console.txt 2>&1 &
zept_pid=$!
echo "soak: $minutes minutes, ZEPT pid $zept_pid; memory every 10 s in soak/memory.csv"
echo "elapsed_s,rss_kb" >memory.csv
start=$SECONDS
while kill -0 "$zept_pid" 2>/dev/null; do
  rss=$(awk '/^VmRSS:/ {print $2}' "/proc/$zept_pid/status" 2>/dev/null || true)
  [[ -n "$rss" ]] && echo "$((SECONDS - start)),$rss" >>memory.csv
  sleep 10
done
wait "$zept_pid" || true

python3 - "$minutes" <<'PY'
import re, sys
rows = [tuple(map(int, l.split(","))) for l in open("memory.csv").read().split()[1:]]
warm = [r for r in rows if r[0] >= 120] or rows   # after two minutes of start-up
first, last = warm[0][1], warm[-1][1]
peak = max(r[1] for r in warm)
n = len(warm)
mx = sum(r[0] for r in warm) / n
my = sum(r[1] for r in warm) / n
sxx = sum((r[0] - mx) ** 2 for r in warm) or 1
slope_kb_per_h = sum((r[0] - mx) * (r[1] - my) for r in warm) / sxx * 3600
status = [l for l in open("console.txt", errors="replace") if " | created " in l]
log = open("Log.txt", errors="replace").read()
exceptions = log.count("Traffic exception")
ticks = [float(m) for l in status for m in re.findall(r"(\d+) us max", l)]
print(f"soak: {sys.argv[1]} min, {len(rows)} samples")
print(f"soak: memory after warm-up {first / 1024:.1f} MB, at the end {last / 1024:.1f} MB, "
      f"peak {peak / 1024:.1f} MB, trend {slope_kb_per_h / 1024:+.2f} MB/h")
if status:
    print("soak: last status:", status[-1].strip())
if ticks:
    print(f"soak: slowest tick seen {max(ticks):.0f} us")
print(f"soak: traffic exceptions {exceptions}")
PY
