#!/usr/bin/env bash
# The whole program under a large load (not part of the tests): ZEPT on the
# built-in simulator, the user parked at a Honolulu gate, with the stand-in
# application sending 2,000 live aircraft within range in its public form
# (one datagram per aircraft report, every 2 to 5 s, broadcast) and the
# parked lists of PHNL. Prints ZEPT's share of one core, its resident
# memory, the tick's mean, p99 and max, the main loop's lateness, and the
# datagrams lost or late, for the whole run and for the part after every
# aircraft was created; and the machine's load while it ran.
#   scripts/load.sh [SECONDS]     (default 600)
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

export CCACHE_NOHASHDIR=1
cmake --preset default >/dev/null
cmake --build --preset default --target zept rt_app_standin zept_bundled_data >/dev/null
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

snmp_udp() { awk '/^Udp: [0-9]/ {print $2","$4","$6; exit}' /proc/net/snmp; }  # in, errors, rcvbuf
echo "udp_before,$(snmp_udp)" >load/udp.txt
build/default/rt_app_standin --mode public --cycle-ms 100 --scenario "$scenario" \
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
echo "elapsed_s,zept_cpu_ticks,zept_rss_kb,standin_cpu_ticks,machine_busy_ticks,machine_all_ticks,loadavg" \
  >load/samples.csv
cpu_ticks() { awk '{print $14 + $15}' "/proc/$1/stat" 2>/dev/null || echo 0; }
start=$SECONDS
while kill -0 "$zept_pid" 2>/dev/null; do
  rss=$(awk '/^VmRSS:/ {print $2}' "/proc/$zept_pid/status" 2>/dev/null || echo 0)
  machine=$(awk '/^cpu / {print $2+$3+$4+$7+$8+$9 "," $2+$3+$4+$5+$6+$7+$8+$9; exit}' /proc/stat)
  echo "$((SECONDS - start)),$(cpu_ticks "$zept_pid"),$rss,$(cpu_ticks "$standin_pid"),$machine,$(cut -d' ' -f1 /proc/loadavg)" \
    >>load/samples.csv
  sleep 5
done
wait "$zept_pid" || true
zept_pid=""
echo "udp_after,$(snmp_udp)" >>load/udp.txt
kill -TERM "$standin_pid" 2>/dev/null || true
wait "$standin_pid" 2>/dev/null || true
standin_pid=""

python3 - "$tck" "$(nproc)" <<'PY'
import re, sys
tck, cores = int(sys.argv[1]), int(sys.argv[2])
rows = [l.strip().split(",") for l in open("load/samples.csv")][1:]
rows = [(int(r[0]), int(r[1]), int(r[2]), int(r[3]), int(r[4]), int(r[5]), float(r[6]))
        for r in rows if len(r) == 7 and r[1] != "0"]
ticks = []
trailer = ""
for line in open("load/ticks.csv"):
    if line.startswith("#"):
        trailer = line
    elif line[0].isdigit():
        t, tick, late, in_sim = line.split(",")
        ticks.append((int(t) / 1000, float(tick), float(late), int(in_sim)))
if not ticks or not rows:
    sys.exit("load: no figures (see load/console.txt and load/Log.txt)")

def pct(v, p):
    v = sorted(v)
    return v[min(len(v) - 1, int(p * (len(v) - 1) + 0.5))]

peak_in_sim = max(t[3] for t in ticks)
steady_from = next(t[0] for t in ticks if t[3] >= 0.95 * peak_in_sim)

def tick_line(name, part):
    if not part:
        return print(f"load: {name}: no ticks")
    d = [t[1] for t in part]
    late = [t[2] / 1000 for t in part]
    print(f"load: {name}: {len(d)} ticks, tick mean {sum(d) / len(d):.0f} us, p99 {pct(d, .99):.0f} us, "
          f"max {max(d):.0f} us, {sum(x > 5000 for x in d)} over 5 ms, {sum(x > 1000 for x in d)} over 1 ms; "
          f"loop lateness p99 {pct(late, .99):.2f} ms, max {max(late):.1f} ms")

# The loop's clock starts with the traffic; the samples' clock with the process.
offset = rows[-1][0] - ticks[-1][0]
def cpu_line(name, a, b):
    dt = b[0] - a[0]
    if dt <= 0:
        return
    zept = (b[1] - a[1]) / tck / dt
    standin = (b[3] - a[3]) / tck / dt
    all_ = (b[5] - a[5]) or 1
    busy = (b[4] - a[4]) / all_ * cores
    print(f"load: {name}: ZEPT {100 * zept:.1f} % of one core, the stand-in {100 * standin:.1f} %, "
          f"the whole machine busy {100 * busy:.0f} % of one core ({cores} cores), "
          f"others {100 * max(0.0, busy - zept - standin):.0f} %; load average {a[6]:.1f} .. {b[6]:.1f}")

print(f"load: {len(ticks) / 100:.0f} s of traffic, at most {peak_in_sim} aircraft in the simulator "
      f"(95 % of them from {steady_from:.0f} s)")
tick_line("whole run", ticks)
tick_line("all created", [t for t in ticks if t[0] >= steady_from])
cpu_line("whole run", rows[0], rows[-1])
steady_rows = [r for r in rows if r[0] >= steady_from + offset]
if len(steady_rows) >= 2:
    cpu_line("all created", steady_rows[0], steady_rows[-1])
rss = [r[2] for r in rows]
print(f"load: resident memory peak {max(rss) / 1024:.0f} MB, at the end {rss[-1] / 1024:.0f} MB")

standin = open("load/standin.txt", errors="replace").read()
sent = re.findall(r"traffic datagrams (\d+)", standin)
m = re.search(r"datagrams (\d+), messages received (\d+), replaced unread (\d+)", trailer)
udp = {l.split(",")[0]: [int(x) for x in l.strip().split(",")[1:]] for l in open("load/udp.txt")}
errors = [a - b for a, b in zip(udp.get("udp_after", [0, 0, 0]), udp.get("udp_before", [0, 0, 0]))]
if sent and m:
    s, got, received, replaced = int(sent[-1]), int(m.group(1)), int(m.group(2)), int(m.group(3))
    print(f"load: datagrams: the stand-in sent {s} traffic datagrams, ZEPT's reader took {got}, "
          f"lost {s - got} ({100 * (s - got) / max(s, 1):.2f} %; the system counted {errors[2]} "
          f"dropped for a full receive buffer)")
    print(f"load: late: of {received} reports handed to the engine {replaced} were replaced by a newer "
          f"batch before the tick took them ({100 * replaced / max(received, 1):.0f} %)")
log = open("load/Log.txt", errors="replace").read()
print(f"load: traffic exceptions {log.count('Traffic exception')}; last status:")
status = [l for l in open("load/console.txt", errors="replace") if " | created " in l]
if status:
    print("  " + status[-1].strip())
PY
