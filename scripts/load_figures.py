#!/usr/bin/env python3
"""The figures of a load run (scripts/load.sh) from its folder: ticks.csv
(every tick), samples.csv (every 5 s), udp.txt, standin.txt, Log.txt and
console.txt.

  scripts/load_figures.py FOLDER CLK_TCK CORES
"""
import os
import re
import sys

folder, tck, cores = sys.argv[1], int(sys.argv[2]), int(sys.argv[3])


def path(name):
    return os.path.join(folder, name)


rows = [l.strip().split(",") for l in open(path("samples.csv"))][1:]
rows = [(int(r[0]), int(r[1]), int(r[2]), int(r[3]), int(r[4]), int(r[5]), float(r[6]))
        for r in rows if len(r) == 7 and r[1] != "0"]
ticks = []
trailer = ""
for line in open(path("ticks.csv")):
    if line.startswith("#"):
        trailer = line
    elif line[0].isdigit():
        t, tick, late, in_sim = line.split(",")
        ticks.append((int(t) / 1000, float(tick), float(late), int(in_sim)))
if not ticks or not rows:
    sys.exit(f"load: no figures (see {folder}/console.txt and Log.txt)")

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

standin = open(path("standin.txt"), errors="replace").read()
sent = re.findall(r"traffic datagrams (\d+)", standin)
m = re.search(r"datagrams (\d+), messages received (\d+), replaced unread (\d+)", trailer)
udp = {l.split(",")[0]: [int(x) for x in l.strip().split(",")[1:]] for l in open(path("udp.txt"))}
errors = [a - b for a, b in zip(udp.get("udp_after", [0, 0, 0]), udp.get("udp_before", [0, 0, 0]))]
if sent and m:
    s, got, received, replaced = int(sent[-1]), int(m.group(1)), int(m.group(2)), int(m.group(3))
    print(f"load: datagrams: the stand-in sent {s} traffic datagrams, ZEPT's reader took {got}, "
          f"lost {s - got} ({100 * (s - got) / max(s, 1):.2f} %; the system counted {errors[2]} "
          f"dropped for a full receive buffer)")
    print(f"load: late: of {received} reports handed to the engine {replaced} were replaced by a newer "
          f"batch before the tick took them ({100 * replaced / max(received, 1):.0f} %)")
log = open(path("Log.txt"), errors="replace").read()
print(f"load: traffic exceptions {log.count('Traffic exception')}; last status:")
status = [l for l in open(path("console.txt"), errors="replace") if " | created " in l]
if status:
    print("  " + status[-1].strip())
