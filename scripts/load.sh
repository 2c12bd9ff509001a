#!/usr/bin/env bash
# The whole program under a large load (not part of the tests): ZEPT on the
# built-in simulator, the user parked at a Honolulu gate, with the stand-in
# application sending 2,000 live aircraft within range in its public form
# (one datagram per aircraft report, every 2 to 5 s, broadcast) and the
# parked lists of PHNL. Prints ZEPT's share of one core, its resident
# memory, the tick's mean, p99 and max, the main loop's lateness, and the
# datagrams lost or late, for the whole run and for the part after every
# aircraft was created; and the machine's load while it ran.
#   scripts/load.sh [SECONDS]     (default 600; ZEPT_LOAD_NO_BUILD=1: no build first)
# Runs in a network namespace of its own when it can (root), so that other
# programs on the ports don't meddle. Outputs stay in load/: console.txt,
# Log.txt, ticks.csv (every tick), samples.csv (every 5 s), standin.txt.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-600}"
if [[ -z "${ZEPT_LOAD_NETNS:-}" ]] && unshare --net true 2>/dev/null; then
  exec unshare --net bash -c 'ip link set lo up && ZEPT_LOAD_NETNS=1 exec "$0" "$@"' "$0" "$@"
fi
[[ -z "${ZEPT_LOAD_NETNS:-}" ]] && echo "load: no network namespace of its own (not root): ports are shared"

# ZEPT_LOAD_NO_BUILD=1 takes the build as it stands (while another build runs in it).
if [[ -z "${ZEPT_LOAD_NO_BUILD:-}" ]]; then
  export CCACHE_NOHASHDIR=1
  cmake --preset default >/dev/null
  cmake --build --preset default --target zept rt_app_standin zept_bundled_data >/dev/null
fi
scenario=build/load/rt_scenario_load.csv
if [[ ! -f $scenario || scripts/make_load_scenario.py -nt $scenario ]]; then
  python3 scripts/make_load_scenario.py --out "$scenario"
fi
rm -rf load
scripts/program_folder.sh build/default load
mkdir -p load/data
# The user at the Honolulu gate, in a simulator that holds every aircraft.
python3 - <<'PY'
import json
s = json.load(open("load/sim_scenario_phnl.json"))
s["max_ai_objects"] = 2500
json.dump(s, open("load/sim_scenario_load.json", "w"), indent=2)
PY
# The feed's range at its widest, so that the whole region is within it.
cat >load/data/parameters.xml <<'XML'
<?xml version="1.0"?>
<root>
  <parameters>
    <parameter name="RANGE" value="100" />
    <parameter name="AUTO_RANGE" value="false" />
  </parameters>
</root>
XML

src="$PWD"
standin_pid=""
zept_pid=""
cleanup() {
  [[ -n "$zept_pid" ]] && kill -TERM "$zept_pid" 2>/dev/null || true
  [[ -n "$standin_pid" ]] && kill -TERM "$standin_pid" 2>/dev/null || true
  wait 2>/dev/null || true
}
trap cleanup EXIT

# The system's UDP counters: in, no port, errors, receive buffer full.
snmp_udp() { awk '/^Udp: [0-9]/ {print $2","$3","$4","$6; exit}' /proc/net/snmp; }
echo "udp_before,$(snmp_udp)" >load/udp.txt
build/default/rt_app_standin --mode public --once --cycle-ms 100 --scenario "$scenario" \
  --parked data/parked/PHNL.csv >load/standin.txt 2>&1 &
standin_pid=$!
cd load
XDG_DATA_HOME="$PWD/simulator/localappdata" ZEPT_DATA_DIR="$PWD/data" \
  ZEPT_SIM_SCENARIO=sim_scenario_load.json \
  ./zept --rt-app --status 10 --duration "$seconds" --tick-figures ticks.csv >console.txt 2>&1 &
zept_pid=$!
cd "$src"
echo "load: $seconds s, ZEPT pid $zept_pid, stand-in pid $standin_pid; samples every 5 s in load/samples.csv"

# Every 5 s: ZEPT's and the stand-in's CPU ticks and memory, the machine's.
tck=$(getconf CLK_TCK)
echo "elapsed_s,zept_cpu_ticks,zept_rss_kb,standin_cpu_ticks,machine_busy_ticks,machine_all_ticks,loadavg,udp_rcvbuf_errors" \
  >load/samples.csv
cpu_ticks() { awk '{print $14 + $15}' "/proc/$1/stat" 2>/dev/null || echo 0; }
start=$SECONDS
while kill -0 "$zept_pid" 2>/dev/null; do
  rss=$(awk '/^VmRSS:/ {print $2}' "/proc/$zept_pid/status" 2>/dev/null || echo 0)
  machine=$(awk '/^cpu / {print $2+$3+$4+$7+$8+$9 "," $2+$3+$4+$5+$6+$7+$8+$9; exit}' /proc/stat)
  echo "$((SECONDS - start)),$(cpu_ticks "$zept_pid"),$rss,$(cpu_ticks "$standin_pid"),$machine,$(cut -d' ' -f1 /proc/loadavg),$(snmp_udp | cut -d, -f4)" \
    >>load/samples.csv
  sleep 5
done
wait "$zept_pid" || true
zept_pid=""
echo "udp_after,$(snmp_udp)" >>load/udp.txt
kill -TERM "$standin_pid" 2>/dev/null || true
wait "$standin_pid" 2>/dev/null || true
standin_pid=""

scripts/load_figures.py load "$tck" "$(nproc)"
