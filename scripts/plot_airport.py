#!/usr/bin/env python3
"""Draws an airport file's stands and a run's recording as a PNG map with
gnuplot, to check parking by looking.

Usage: scripts/plot_airport.py AIRPORT.xml [RECORDING.csv] OUT.png [--size KM]

AIRPORT.xml is an airport file (data/airports/archive/stock/PHNL.xml, or the
program folder's airports/...); RECORDING.csv the built-in simulator's
recording of a run (zept --record FILE; scripts/run.sh writes run/motion.csv).
The map, north up, in metres from the airport's reference point, shows:

- every stand as a circle of its radius, coloured by its type;
- static aircraft (objects that never moved from where they appeared and
  stayed at least half a minute), as filled triangles, with the name of the
  stand they stand on;
- the track of every other AI object (live traffic), a thin line from a dot
  where it appeared to a cross where it went;
- the user aircraft's track, a thick red line.

--size KM makes the map a square of that side around the reference point;
by default it holds every stand with a margin. Needs gnuplot (Debian package
gnuplot-nox, `scripts/setup.sh --plot`); only the standard library otherwise.
"""
import csv
import math
import os
import shutil
import subprocess
import sys
import tempfile
import xml.etree.ElementTree as ET

STATIC_M = 15.0  # an object that never strays this far from its first place is static,
STATIC_S = 30.0  # unless it was gone again this soon (a create taken back)

# Stand types by colour: gates by size, cargo, military, general aviation, the rest.
TYPE_GROUPS = [
    ("heavy gates", {"GATE_HEAVY", "GATE_EXTRA"}, "#1f3b8c"),
    ("medium gates", {"GATE_MEDIUM"}, "#3f7fd9"),
    ("small gates", {"GATE_SMALL"}, "#8fc1f0"),
    ("cargo", {"RAMP_CARGO"}, "#a0522d"),
    ("military", {"RAMP_MIL_CARGO", "RAMP_MIL_COMBAT"}, "#6b8e23"),
    ("GA ramps", {"RAMP_GA", "RAMP_GA_SMALL", "RAMP_GA_MEDIUM", "RAMP_GA_LARGE", "RAMP_GA_EXTRA"},
     "#2e8b57"),
    ("other", None, "#999999"),
]


def read_airport(path):
    root = ET.parse(path).getroot()
    params = {p.get("name"): p.get("value") for p in root.iter("parameter")}
    stands = []
    for p in root.iter("parkpos"):
        stands.append({"id": p.get("id"), "type": p.get("typestr") or "NONE",
                       "lat": float(p.get("latitude")), "lon": float(p.get("longitude")),
                       "radius": float(p.get("radius") or 10)})
    if "latitude" in params:
        ref = (float(params["latitude"]), float(params["longitude"]))
    elif stands:
        ref = (sum(s["lat"] for s in stands) / len(stands), sum(s["lon"] for s in stands) / len(stands))
    else:
        sys.exit(f"{path}: no reference point and no stands")
    return params.get("icao", "?"), params.get("airport_name", ""), ref, stands


def read_recording(path):
    """Objects by id (time-ordered positions, tail) and the user's positions."""
    objects, user = {}, []
    with open(path, encoding="utf-8") as f:
        for row in csv.DictReader(f):
            kind = row.get("kind") or "set"
            at = (int(row["time_ms"]), float(row["lat_deg"]), float(row["lon_deg"]))
            if kind == "user":
                user.append(at)
                continue
            o = objects.setdefault(int(row["object_id"]), {"points": [], "tail": ""})
            o["points"].append(at)
            if kind == "create":
                o["tail"] = row.get("tail", "")
    for o in objects.values():
        o["points"].sort()
    return objects, sorted(user)


class Frame:
    """Flat east/north metres around a reference point."""

    def __init__(self, ref):
        self.lat0, self.lon0 = ref
        self.coslat = math.cos(math.radians(self.lat0))

    def xy(self, lat, lon):
        return ((lon - self.lon0) * 111320.0 * self.coslat, (lat - self.lat0) * 110574.0)


def group_of(stand_type):
    for i, (_name, types, _colour) in enumerate(TYPE_GROUPS):
        if types is None or stand_type in types:
            return i
    return len(TYPE_GROUPS) - 1


def nearest_stand(frame, stands, x, y):
    best, best_d = None, math.inf
    for s in stands:
        sx, sy = frame.xy(s["lat"], s["lon"])
        d = math.hypot(sx - x, sy - y)
        if d < best_d:
            best, best_d = s, d
    return best if best is not None and best_d <= max(best["radius"], 20.0) else None


def main(argv):
    size_km = None
    if "--size" in argv:
        i = argv.index("--size")
        size_km = float(argv[i + 1])
        argv = argv[:i] + argv[i + 2:]
    if len(argv) not in (2, 3):
        sys.exit(__doc__)
    if shutil.which("gnuplot") is None:
        sys.exit("gnuplot is missing: scripts/setup.sh --plot installs it")
    airport_path, out_png = argv[0], argv[-1]
    recording = argv[1] if len(argv) == 3 else None
    icao, name, ref, stands = read_airport(airport_path)
    frame = Frame(ref)
    objects, user = read_recording(recording) if recording else ({}, [])

    statics, tracks = [], []
    for oid, o in sorted(objects.items()):
        pts = [frame.xy(lat, lon) for _t, lat, lon in o["points"]]
        spread = max(math.hypot(x - pts[0][0], y - pts[0][1]) for x, y in pts)
        lived_s = (o["points"][-1][0] - o["points"][0][0]) / 1000.0
        if spread > STATIC_M:
            tracks.append((oid, o["tail"], pts))
        elif lived_s >= STATIC_S:
            statics.append((oid, o["tail"], pts))

    work = tempfile.mkdtemp(prefix="plot_airport_")
    try:
        files = {}
        for i, (label, _types, _colour) in enumerate(TYPE_GROUPS):
            rows = [s for s in stands if group_of(s["type"]) == i]
            if rows:
                files[f"stands{i}"] = (label, rows)
                with open(os.path.join(work, f"stands{i}.dat"), "w", encoding="utf-8") as f:
                    for s in rows:
                        x, y = frame.xy(s["lat"], s["lon"])
                        f.write(f"{x:.1f} {y:.1f} {s['radius']:.1f}\n")
        occupied = []
        with open(os.path.join(work, "static.dat"), "w", encoding="utf-8") as f:
            for _oid, tail, pts in statics:
                x, y = pts[0]
                stand = nearest_stand(frame, stands, x, y)
                occupied.append(stand["id"] if stand else "")
                label = stand["id"] if stand else (tail or "?")
                f.write(f'{x:.1f} {y:.1f} "{label}"\n')
        with open(os.path.join(work, "tracks.dat"), "w", encoding="utf-8") as f:
            for _oid, _tail, pts in tracks:
                for x, y in pts[::5] + [pts[-1]]:
                    f.write(f"{x:.1f} {y:.1f}\n")
                f.write("\n\n")
        with open(os.path.join(work, "ends.dat"), "w", encoding="utf-8") as f:
            for _oid, _tail, pts in tracks:
                f.write(f"{pts[0][0]:.1f} {pts[0][1]:.1f} {pts[-1][0]:.1f} {pts[-1][1]:.1f}\n")
        with open(os.path.join(work, "user.dat"), "w", encoding="utf-8") as f:
            for _t, lat, lon in user:
                x, y = frame.xy(lat, lon)
                f.write(f"{x:.1f} {y:.1f}\n")

        if size_km:
            half = size_km * 500.0
            box = (-half, half, -half, half)
        else:
            xs = [frame.xy(s["lat"], s["lon"])[0] for s in stands] or [0.0]
            ys = [frame.xy(s["lat"], s["lon"])[1] for s in stands] or [0.0]
            half = max(max(xs) - min(xs), max(ys) - min(ys)) / 2 + 600
            cx, cy = (max(xs) + min(xs)) / 2, (max(ys) + min(ys)) / 2
            box = (cx - half, cx + half, cy - half, cy + half)

        plots = []
        for key, (label, rows) in files.items():
            colour = TYPE_GROUPS[int(key[6:])][2]
            plots.append(f"'{work}/{key}.dat' using 1:2:3 with circles lc rgb '{colour}' "
                         f"fs transparent solid 0.25 border title '{label} ({len(rows)})'")
        if tracks:
            plots.append(f"'{work}/tracks.dat' using 1:2 with lines lw 1 lc rgb '#7a7a7a' "
                         f"title 'live traffic ({len(tracks)})'")
            plots.append(f"'{work}/ends.dat' using 1:2 with points pt 7 ps 0.5 lc rgb '#404040' notitle")
            plots.append(f"'{work}/ends.dat' using 3:4 with points pt 2 ps 0.8 lc rgb '#404040' notitle")
        if statics:
            plots.append(f"'{work}/static.dat' using 1:2 with points pt 9 ps 1.4 lc rgb '#e07b00' "
                         f"title 'static aircraft ({len(statics)})'")
            plots.append(f"'{work}/static.dat' using 1:2:3 with labels offset 0,0.9 font ',7' "
                         f"tc rgb '#a05000' notitle")
        if user:
            plots.append(f"'{work}/user.dat' using 1:2 with lines lw 3 lc rgb '#d62728' title 'user aircraft'")
        if not plots:
            sys.exit("nothing to draw")
        title = (f"{icao} {name}: {len(stands)} stands, {len(statics)} static aircraft "
                 f"on {len(set(o for o in occupied if o))} stands, {len(tracks)} live tracks")
        script = f"""
set terminal pngcairo size 1400,1400 font ',10'
set output '{out_png}'
set title "{title}"
set size ratio -1
set xrange [{box[0]:.0f}:{box[1]:.0f}]
set yrange [{box[2]:.0f}:{box[3]:.0f}]
set xlabel 'east of the reference point (m)'
set ylabel 'north (m)'
set grid lc rgb '#dddddd'
set key outside right top box opaque
set style fill transparent solid 0.25
plot {', '.join(plots)}
"""
        result = subprocess.run(["gnuplot"], input=script, text=True, capture_output=True)
        if result.returncode != 0:
            sys.exit(f"gnuplot failed: {result.stderr.strip()}")
    finally:
        shutil.rmtree(work, ignore_errors=True)
    print(f"{out_png}: {len(stands)} stands, {len(statics)} static aircraft, "
          f"{len(tracks)} live tracks, user track of {len(user)} positions")


if __name__ == "__main__":
    main(sys.argv[1:])
