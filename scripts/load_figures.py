#!/usr/bin/env python3
"""The figures of a load run (scripts/load.sh) from its folder: ticks.csv
(every tick), samples.csv (every 5 s), udp.txt, standin.txt, Log.txt and
console.txt. The whole run, and the part from which 95 % of the most
aircraft the simulator held were in it.

  scripts/load_figures.py FOLDER CLK_TCK CORES
"""
import os
import re
import sys

folder, tck, cores = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])


def path(name):
    return os.path.join(folder, name)


def pct(values, p):
    values = sorted(values)
    return values[min(len(values) - 1, int(p * (len(values) - 1) + 0.5))]


# elapsed, zept ticks, rss, stand-in ticks, machine busy, machine all, load, rcvbuf drops
rows = []
standin_ticks = 0
for line in list(open(path("samples.csv")))[1:]:
    r = line.strip().split(",")
    if len(r) < 7 or r[1] == "0":
        continue
    standin_ticks = max(standin_ticks, int(r[3]))  # 0 once it has ended
    rows.append((int(r[0]), int(r[1]), int(r[2]), standin_ticks, int(r[4]), int(r[5]), float(r[6]),
                 int(r[7]) if len(r) > 7 and r[7] else None))
ticks, trailer = [], ""
for line in open(path("ticks.csv")):
    if line.startswith("#"):
        trailer = line
    elif line[0].isdigit():
        f = line.strip().split(",")
        # elapsed s, tick us, late us, in the simulator, processor us, waits (-1: not counted)
        ticks.append((int(f[0]) / 1000, float(f[1]), float(f[2]), int(f[3]),
                      float(f[4]) if len(f) > 5 else None, int(f[5]) if len(f) > 5 else -1))
if not ticks or len(rows) < 2:
    sys.exit(f"load: no figures (see {folder}/console.txt and Log.txt)")

peak = max(t[3] for t in ticks)
steady_from = next(t[0] for t in ticks if t[3] >= 0.95 * peak)
# The samples' clock starts with the process, the ticks' with the traffic.
offset = rows[-1][0] - ticks[-1][0]
steady_rows = [r for r in rows if r[0] >= steady_from + offset]


def tick_line(name, part):
    d = [t[1] for t in part]
    late = [t[2] / 1000 for t in part]
    print(f"load: {name}: {len(d)} ticks, tick mean {sum(d) / len(d):.0f} us, p99 {pct(d, .99):.0f} us, "
          f"max {max(d):.0f} us; {sum(x > 1000 for x in d)} over 1 ms, {sum(x > 5000 for x in d)} over 5 ms; "
          f"main loop lateness p99 {pct(late, .99):.2f} ms, max {max(late):.1f} ms")
    if part[0][4] is not None:
        cpu = [t[4] for t in part]
        waited = [t for t in part if t[5] > 0]
        print(f"load: {name}: the tick's own processor time mean {sum(cpu) / len(cpu):.0f} us, "
              f"p99 {pct(cpu, .99):.0f} us, max {max(cpu):.0f} us; ticks that waited (gave the "
              f"processor up themselves) {len(waited)}"
              + (f", {sum(t[1] for t in waited) / len(waited):.0f} us long on average" if waited else ""))


def cpu_line(name, a, b):
    dt = b[0] - a[0]
    zept = (b[1] - a[1]) / tck / dt
    standin = (b[3] - a[3]) / tck / dt
    busy = (b[4] - a[4]) / ((b[5] - a[5]) or 1) * cores
    drops = f"; {b[7] - a[7]} datagrams dropped for a full receive buffer" if a[7] is not None else ""
    print(f"load: {name}: ZEPT {100 * zept:.1f} % of one core, the stand-in {100 * standin:.1f} %; "
          f"the machine ({cores} cores) busy {100 * busy:.0f} % of one core, others "
          f"{100 * max(0.0, busy - zept - standin):.0f} %, load average {a[6]:.1f} .. {b[6]:.1f}{drops}")


print(f"load: {len(ticks) / 100:.0f} s of traffic; at most {peak} live aircraft in the simulator, "
      f"95 % of them from {steady_from:.0f} s")
tick_line("whole run", ticks)
tick_line("from then on", [t for t in ticks if t[0] >= steady_from])
cpu_line("whole run", rows[0], rows[-1])
if len(steady_rows) >= 2:
    cpu_line("from then on", steady_rows[0], steady_rows[-1])
rss = [r[2] for r in rows]
print(f"load: resident memory peak {max(rss) / 1024:.0f} MB, at the end {rss[-1] / 1024:.0f} MB")

standin = open(path("standin.txt"), errors="replace").read()
sent = re.findall(r"traffic datagrams (\d+)", standin)
m = re.search(r"datagrams (\d+), messages received (\d+), replaced unread (\d+)", trailer)
udp = {l.split(",")[0]: [int(x) for x in l.strip().split(",")[1:]] for l in open(path("udp.txt"))}
if sent and m:
    s, got, received, replaced = int(sent[-1]), int(m.group(1)), int(m.group(2)), int(m.group(3))
    full = ""
    if len(udp.get("udp_after", [])) == 4 and len(udp.get("udp_before", [])) == 4:
        d = [a - b for a, b in zip(udp["udp_after"], udp["udp_before"])]
        full = (f"; the system dropped {d[3]} for a full receive buffer and {d[1]} sent before "
                f"a reader listened")
    print(f"load: datagrams: the stand-in sent {s} to the traffic port, ZEPT's reader took {got}: "
          f"lost {s - got} ({100 * (s - got) / max(s, 1):.2f} %{full})")
    print(f"load: late: of {received} reports handed to the engine, {replaced} "
          f"({100 * replaced / max(received, 1):.0f} %) were replaced by a newer batch before the tick "
          f"took them")
log = open(path("Log.txt"), errors="replace").read()
print(f"load: traffic exceptions {log.count('Traffic exception')}; the last status line:")
status = [l for l in open(path("console.txt"), errors="replace") if " | created " in l]
if status:
    print("  " + status[-1].strip())
