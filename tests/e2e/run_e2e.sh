#!/usr/bin/env bash
# Runs ZEPT as a process against the stand-in RealTraffic application and the
# built-in simulator, then checks what it left behind: aircraft created,
# moving within bounds, removed when their reports stopped, the user's
# airport parked, and a clean close on Ctrl-C.
#   tests/e2e/run_e2e.sh BUILD_DIR [--simconnect]
# With --simconnect the built-in simulator answers from behind the C functions
# of the simulator's client library: ZEPT loads the facade library
# SimConnect.so from its program folder, as it loads SimConnect.dll on a
# user's machine, and the simulator writes its own recording and log.
set -euo pipefail
src="$(cd "$(dirname "$0")/../.." && pwd)"
build="$(cd "$1" && pwd)"
via_library="${2:-}"
work="$(mktemp -d /tmp/zept_e2e.XXXXXX)"
standin_pid=""
zept_pid=""
cleanup() {
  [ -n "$zept_pid" ] && kill -KILL "$zept_pid" 2>/dev/null || true
  [ -n "$standin_pid" ] && kill -TERM "$standin_pid" 2>/dev/null || true
  wait 2>/dev/null || true
  if [ "${keep:-0}" = 1 ]; then echo "outputs kept in $work"; else rm -rf "$work"; fi
}
trap cleanup EXIT

# The link's ports are fixed; another run on this machine holds them until
# it ends, so wait for them (up to five minutes) rather than fail on a bind.
python3 - <<'PY'
import socket, sys, time
def free():
    for kind, port in ((socket.SOCK_STREAM, 10747), (socket.SOCK_DGRAM, 49005),
                       (socket.SOCK_DGRAM, 49004)):
        s = socket.socket(socket.AF_INET, kind)
        if kind == socket.SOCK_STREAM:  # connections closing on the port don't count
            s.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        try:
            s.bind(("0.0.0.0", port))
        except OSError:
            return False
        finally:
            s.close()
    return True
end = time.time() + 300
while not free():
    if time.time() > end:
        print("the RealTraffic ports stay busy; running anyway")
        sys.exit(0)
    time.sleep(5)
PY

"$src/scripts/program_folder.sh" "$build" "$work/program"
mkdir -p "$work/data"

# 25 s of live reports after the history, then silence: the scenario's last
# half minute, in the real application's public form: broadcast (on the
# loopback network, which only a socket bound to any address hears),
# no end markers, repeated and reordered datagrams.
"$build/rt_app_standin" --mode public --duplicate 0.05 --reorder 0.05 \
  --positions "$work/reported.csv" \
  --scenario "$src/data/rt_scenario_egtk.csv" --start 215 --no-loop \
  >"$work/standin.txt" 2>&1 &
standin_pid=$!

cd "$work/program"
if [ "$via_library" = --simconnect ]; then
  cp "$build/facade/SimConnect.so" "$work/program/SimConnect.so"
  simulator=(--simconnect "$work/program/SimConnect.so")
  export ZEPT_SIM_RECORD=motion.csv ZEPT_SIM_LOG=SimLog.txt
else
  simulator=(--record motion.csv)
fi
XDG_DATA_HOME="$work/program/simulator/localappdata" ZEPT_DATA_DIR="$work/data" ./zept --rt-app --status 2 "${simulator[@]}" --duration 400 \
  >"$work/console.txt" 2>&1 &
zept_pid=$!

# Wait until everything created has been removed again (or give up).
# Aircraft on the ground hold for MAX_HOLDING_MINUTES (3) after their last
# report before they go.
deadline=$((SECONDS + 300))
done_waiting=0
while [ $SECONDS -lt $deadline ]; do
  sleep 2
  line="$(grep ' | created ' "$work/console.txt" | tail -1 || true)"
  if [[ "$line" =~ created\ ([0-9]+).*active\ ([0-9]+)\ \|\ removed\ ([0-9]+) ]]; then
    if [ "${BASH_REMATCH[1]}" -gt 0 ] && [ "${BASH_REMATCH[2]}" = 0 ] &&
       [ "${BASH_REMATCH[3]}" = "${BASH_REMATCH[1]}" ]; then
      done_waiting=1
      break
    fi
  fi
  kill -0 "$zept_pid" 2>/dev/null || break
done
[ $done_waiting = 1 ] || echo "aircraft were not all removed within the wait"
sleep 3  # a stretch of recording with no aircraft

# Ctrl-C, as a user at the console would.
kill -INT "$zept_pid"
status=0
for _ in $(seq 1 30); do
  kill -0 "$zept_pid" 2>/dev/null || break
  sleep 1
done
if kill -0 "$zept_pid" 2>/dev/null; then
  echo "ZEPT did not end within 30 s of Ctrl-C"
  keep=1
  exit 1
fi
wait "$zept_pid" || status=$?
zept_pid=""
echo "ZEPT ended with exit code $status"

# The stand-in writes the positions it was sent when it ends.
kill -TERM "$standin_pid" 2>/dev/null || true
wait "$standin_pid" 2>/dev/null || true
standin_pid=""
head -1 "$work/standin.txt"

if ! python3 "$src/tests/e2e/check_run.py" "$work/program" "$work/console.txt" \
     "$src/data/rt_scenario_egtk.csv" "$work/reported.csv"; then
  keep=1
  exit 1
fi
if [ "$via_library" = --simconnect ] &&
   ! grep -qF "SimConnect library loaded: $work/program/SimConnect.so" "$work/program/Log.txt"; then
  echo "FAIL  the log names the SimConnect library that was loaded"
  keep=1
  exit 1
fi
