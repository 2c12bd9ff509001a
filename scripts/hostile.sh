#!/usr/bin/env bash
# Treats the running program as a hostile network and a careless application
# would (not part of the tests): ZEPT on the built-in simulator against the
# stand-in application, while probes flood the traffic port, send garbage and
# absurd values, fill it with distinct aircraft, freeze the application and
# restart it, and connect a peer that never reads. Probes repeat for the
# given minutes; each prints held or failed, with ZEPT's memory and the
# growth of Log.txt over the probe.
#   scripts/hostile.sh [MINUTES]     (default 10)
# Outputs stay in hostile/: console.txt, Log.txt, probes.txt.
set -euo pipefail
cd "$(dirname "$0")/.."
minutes="${1:-10}"
cmake --preset default >/dev/null
cmake --build --preset default --target zept rt_app_standin zept_bundled_data >/dev/null
rm -rf hostile
scripts/program_folder.sh build/default hostile
mkdir -p hostile/data
src="$PWD"
traffic_port=49005
tcp_port=10747

standin_pid=""
zept_pid=""
start_standin() {
  "$src/build/default/rt_app_standin" --scenario "$src/data/rt_scenario_egtk.csv" \
    >>"$src/hostile/standin.txt" 2>&1 &
  standin_pid=$!
}
cleanup() {
  [ -n "$zept_pid" ] && kill -KILL "$zept_pid" 2>/dev/null || true
  [ -n "$standin_pid" ] && kill -CONT "$standin_pid" 2>/dev/null || true
  [ -n "$standin_pid" ] && kill -TERM "$standin_pid" 2>/dev/null || true
  wait 2>/dev/null || true
}
trap cleanup EXIT

start_standin
cd hostile
XDG_DATA_HOME="$PWD/simulator/localappdata" ZEPT_DATA_DIR="$PWD/data" ./zept --rt-app --status 2 --duration $((minutes * 60 + 120)) \
  >console.txt 2>&1 &
zept_pid=$!
cd "$src"
sleep 40  # start-up: history, parked list, first live traffic
if ! kill -0 "$zept_pid" 2>/dev/null; then
  echo "ZEPT ended during its start: $(head -1 hostile/console.txt)"
  echo "(another program on this machine may hold port $tcp_port or $traffic_port)"
  exit 1
fi

rss_kb() { awk '/^VmRSS:/ {print $2}' "/proc/$zept_pid/status" 2>/dev/null || echo 0; }
log_bytes() { stat -c %s hostile/Log.txt 2>/dev/null || echo 0; }
last_status() { grep ' | created ' hostile/console.txt | tail -1; }
status_count() { grep -c ' | created ' hostile/console.txt || true; }

# Sends datagrams to the traffic port for some seconds: python, one kind.
udp() {
  python3 - "$traffic_port" "$@" <<'PY'
import os, random, socket, sys, time
port, kind, seconds = int(sys.argv[1]), sys.argv[2], float(sys.argv[3])
s = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
end = time.time() + seconds
n = 0
def line(hexid, alt="3000", vs="0", gs="150", roll="0"):
    f = [""] * 44
    f[0], f[1], f[2], f[3], f[4], f[5] = "RTTFC", str(hexid), "51.84", "-1.32", alt, vs
    f[7], f[8], f[9], f[10], f[11] = "90", gs, f"HST{hexid % 10000:04}", "A320", "G-HOST"
    f[14], f[17], f[20], f[23], f[28] = f"{time.time():.2f}", "adsb_icao", "160", roll, "A3"
    return ",".join(f)
while time.time() < end:
    if kind == "flood":
        d = "RTTFC," + "x" * 16000
    elif kind == "garbage":
        d = os.urandom(random.randint(1, 2000)).decode("latin-1")
    elif kind == "absurd":
        d = random.choice([line(5000000 + n % 50, alt="1e308"), line(5000000 + n % 50, alt="2.1e9"),
                           line(5000000 + n % 50, vs="1e300"), line(5000000 + n % 50, gs="99999")])
    elif kind == "distinct":
        d = line(1000000 + n)
    s.sendto(d.encode("latin-1"), ("127.0.0.1", port))
    n += 1
    if n % 200 == 0:
        time.sleep(0.001)
print(n)
PY
}

printf '%-22s %-6s %10s %10s %12s  %s\n' probe result rss_kb d_rss_kb d_log_bytes note \
  | tee hostile/probes.txt
report() {  # name held|failed rss0 log0 note
  local rss log
  rss=$(rss_kb)
  log=$(log_bytes)
  printf '%-22s %-6s %10s %10s %12s  %s\n' "$1" "$2" "$rss" "$((rss - $3))" "$(($log - $4))" "$5" \
    | tee -a hostile/probes.txt
}
alive() { kill -0 "$zept_pid" 2>/dev/null; }
# Status lines keep coming: the tick and the main loop are not stuck.
ticking() {
  local before
  before=$(status_count)
  sleep 5
  [ "$(status_count)" -gt "$before" ]
}

deadline=$((SECONDS + minutes * 60))
while [ $SECONDS -lt $deadline ] && alive; do
  for probe in flood garbage absurd distinct frozen restarted nonreader; do
    [ $SECONDS -lt $deadline ] && alive || break
    rss0=$(rss_kb)
    log0=$(log_bytes)
    result=held
    note=""
    case $probe in
      flood | garbage | absurd)
        sent=$(udp "$probe" 10)
        note="$sent datagrams in 10 s"
        ticking || result=failed
        # A log line per datagram would be megabytes: a few lines and counts.
        [ $(($(log_bytes) - log0)) -lt 200000 ] || result=failed
        if [ $probe = absurd ] && ! grep -q "implausible" hostile/Log.txt; then
          result=failed
          note="$note; nothing refused"
        fi
        ;;
      distinct)
        sent=$(udp distinct 20)
        note="$sent distinct aircraft in 20 s"
        ticking || result=failed
        [ $(($(rss_kb) - rss0)) -lt 100000 ] || result=failed
        ;;
      frozen)
        kill -STOP "$standin_pid"
        sleep 20
        grep -q "RT App silent" <(last_status) && note="status showed the silent feed" ||
          note="status did not show a silent feed"
        kill -CONT "$standin_pid"
        woke=$SECONDS
        while [ $((SECONDS - woke)) -lt 40 ]; do
          sleep 2
          grep -q "RT App connected" <(last_status) && break
        done
        note="$note; connected again after $((SECONDS - woke)) s"
        [ $((SECONDS - woke)) -lt 40 ] || result=failed
        ticking || result=failed
        ;;
      restarted)
        kill -TERM "$standin_pid"
        wait "$standin_pid" 2>/dev/null || true
        start_standin
        back=$SECONDS
        while [ $((SECONDS - back)) -lt 60 ]; do
          sleep 2
          grep -q "RT App connected" <(last_status) && break
        done
        note="traffic link back after $((SECONDS - back)) s"
        [ $((SECONDS - back)) -lt 60 ] || result=failed
        ;;
      nonreader)
        # Connects to the program's port and never reads; the real link
        # must go on or start over, never freeze.
        python3 - "$tcp_port" <<'PY' &
import socket, sys, time
s = socket.socket()
s.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 2048)
try:
    s.connect(("127.0.0.1", int(sys.argv[1])))
    time.sleep(25)
except OSError:
    pass
PY
        nonreader_pid=$!
        sleep 5
        ticking || result=failed
        wait "$nonreader_pid" 2>/dev/null || true
        ticking || result=failed
        ;;
    esac
    alive || { result=failed; note="$note; ZEPT ended"; }
    report "$probe" "$result" "$rss0" "$log0" "$note"
  done
done

# Ctrl-C must still end it promptly.
if alive; then
  kill -INT "$zept_pid"
  for _ in $(seq 1 20); do alive || break; sleep 0.1; done
  if alive; then echo "close on SIGINT: failed (still running after 2 s)"; else
    echo "close on SIGINT: held"; fi
fi
wait "$zept_pid" 2>/dev/null || true
zept_pid=""
echo "probes: hostile/probes.txt; last status: $(last_status)"
