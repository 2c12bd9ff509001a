#!/usr/bin/env python3
"""Draws a motion recording as PNG plots with gnuplot: one of
tools/replay_motion, or the built-in simulator's recording of a run
(zept --record FILE; scripts/run.sh writes run/motion.csv).

Usage: scripts/plot_motion.py RECORDING.csv OUTDIR [--airport FILE] [CALLSIGN|object_ID ...]

For each aircraft (or only the callsigns given) three plots go to OUTDIR:
<callsign>_track.png (ground track, east and north in NM from the first
frame), <callsign>_alt.png and <callsign>_speed.png (altitude and true
airspeed over time in seconds). The reported points, at the time the engine
means to be there, are marked on all three (the simulator's recording has no
reports, names each aircraft by its object id and the user aircraft "user").

With --airport, the ground view too: the airport's taxi network (the arcs of
a groundnet.xml file) and its stands (circles of their radius, a stroke for
the heading; from a groundnet.xml or one of our airport files), with each
aircraft's track while it was on the ground and its reported ground points,
in metres: <callsign>_ground.png, zoomed to where that aircraft moved, and
ground.png with every aircraft.
Needs gnuplot (Debian package gnuplot-nox); only the standard library otherwise.
"""
import xml.etree.ElementTree as ET
import math
import os
import shutil
import subprocess
import sys
import tempfile

TICKS_PER_SECOND = 100.0
NM_PER_DEG_LAT = 60.0


SIM_HEADER = "time_ms,object_id,"


def read_sim_recording(f):
    """The simulator's positions as frames of the replay's shape: those the
    program sent per object, and the user aircraft's own track as "user"
    (where and when AI objects appeared and went is left out)."""
    frames = {}
    for line in f:
        fields = line.rstrip("\n").split(",")
        if len(fields) < 11:
            continue
        kind = fields[11] if len(fields) > 11 else "set"
        if kind not in ("set", "user"):
            continue
        name = "user" if kind == "user" else f"object_{fields[1]}"
        tick = str(int(fields[0]) // 10)  # milliseconds to hundredths
        frame = ["F", tick, fields[1], name, fields[2], fields[3], fields[4],
                 "", "", "", "", fields[9], ""]
        frames.setdefault(name, []).append(frame)
    return frames, {}


def read_recording(path):
    frames, reports = {}, {}
    with open(path, encoding="utf-8") as f:
        first = f.readline()
        if first.startswith(SIM_HEADER):
            return read_sim_recording(f)
        f.seek(0)
        for line in f:
            if line.startswith("#") or not line.strip():
                continue
            fields = line.rstrip("\n").split(",")
            if fields[0] == "F" and len(fields) == 13:
                frames.setdefault(fields[3] or fields[2], []).append(fields)
            elif fields[0] == "R" and len(fields) == 8:
                reports.setdefault(fields[3] or fields[2], []).append(fields)
    return frames, reports


def write_data(directory, name, frames, reports):
    """Two data files: frames (t, east, north, alt, tas) and reports (t, east, north, alt, speed)."""
    lat0, lon0 = float(frames[0][4]), float(frames[0][5])
    t0 = int(frames[0][1])
    coslat = math.cos(math.radians(lat0))

    def east_north(lat, lon):
        return ((lon - lon0) * NM_PER_DEG_LAT * coslat, (lat - lat0) * NM_PER_DEG_LAT)

    frame_path = os.path.join(directory, name + "_frames.dat")
    with open(frame_path, "w", encoding="utf-8") as out:
        for fr in frames[::10]:  # ten samples a second are plenty to draw
            e, n = east_north(float(fr[4]), float(fr[5]))
            out.write(f"{(int(fr[1]) - t0) / TICKS_PER_SECOND:.2f} {e:.5f} {n:.5f} {fr[6]} {fr[11]}\n")
    report_path = os.path.join(directory, name + "_reports.dat")
    with open(report_path, "w", encoding="utf-8") as out:
        for r in reports:
            e, n = east_north(float(r[4]), float(r[5]))
            out.write(f"{(int(r[1]) - t0) / TICKS_PER_SECOND:.2f} {e:.5f} {n:.5f} {r[6]} {r[7]}\n")
    return frame_path, report_path


def plot(name, frame_path, report_path, outdir):
    base = os.path.join(outdir, name)
    script = f"""
set terminal pngcairo size 1000,700 noenhanced
set grid
set key top left
set output '{base}_track.png'
set title '{name}: ground track'
set xlabel 'east, NM'
set ylabel 'north, NM'
set size ratio -1
plot '{frame_path}' using 2:3 with lines lw 2 title 'played', \\
     '{report_path}' using 2:3 with points pt 7 ps 0.8 title 'reported'
set size noratio
set output '{base}_alt.png'
set title '{name}: altitude'
set xlabel 'time, s'
set ylabel 'altitude, ft'
plot '{frame_path}' using 1:4 with lines lw 2 title 'played', \\
     '{report_path}' using 1:4 with points pt 7 ps 0.8 title 'reported'
set output '{base}_speed.png'
set title '{name}: speed'
set ylabel 'knots'
plot '{frame_path}' using 1:5 with lines lw 2 title 'played true airspeed', \\
     '{report_path}' using 1:5 with points pt 7 ps 0.8 title 'reported ground speed'
"""
    subprocess.run(["gnuplot"], input=script, text=True, check=True)
    return [base + s for s in ("_track.png", "_alt.png", "_speed.png")]


GROUND_STATES = {"taxi", "parking", "parked", "pushing_back", "pushed_back", "landing_roll",
                 "takeoff_roll"}
M_PER_DEG = 111132.95


def groundnet_degrees(text):
    """'N21 19.725' to degrees."""
    hemi, deg, minutes = text[0], *text[1:].split()
    value = float(deg) + float(minutes) / 60.0
    return -value if hemi in "SW" else value


def read_airport(path):
    """Arcs ((lat, lon), (lat, lon)) and stands (lat, lon, heading deg, radius m)."""
    root = ET.parse(path).getroot()
    arcs, stands = [], []
    if root.tag == "groundnet":
        where = {}
        for n in list(root.iter("node")) + list(root.iter("Parking")):
            where[n.get("index")] = (groundnet_degrees(n.get("lat")), groundnet_degrees(n.get("lon")))
        for p in root.iter("Parking"):
            lat, lon = where[p.get("index")]
            stands.append((lat, lon, float(p.get("heading")), float(p.get("radius"))))
        for a in root.iter("arc"):
            if a.get("begin") in where and a.get("end") in where:
                arcs.append((where[a.get("begin")], where[a.get("end")]))
    else:
        for p in root.iter("parkpos"):
            stands.append((float(p.get("latitude")), float(p.get("longitude")),
                           float(p.get("heading")), float(p.get("radius")) * 1852.0))
    return arcs, stands


def plot_ground(airport, frames, reports, names, directory, outdir):
    """The ground view of each aircraft in names, and of all together."""
    arcs, stands = airport
    ground = {n: [f for f in frames[n] if f[12] in GROUND_STATES] for n in names}
    ground = {n: g for n, g in ground.items() if g}
    if not ground:
        return []
    lat0 = sum(s[0] for s in stands) / len(stands) if stands else float(next(iter(ground.values()))[0][4])
    lon0 = sum(s[1] for s in stands) / len(stands) if stands else float(next(iter(ground.values()))[0][5])
    coslat = math.cos(math.radians(lat0))

    def xy(lat, lon):
        return ((lon - lon0) * M_PER_DEG * coslat, (lat - lat0) * M_PER_DEG)

    net = os.path.join(directory, "net.dat")
    with open(net, "w", encoding="utf-8") as out:
        for a, b in arcs:
            (x1, y1), (x2, y2) = xy(*a), xy(*b)
            out.write(f"{x1:.1f} {y1:.1f} {x2 - x1:.1f} {y2 - y1:.1f}\n")
        out.write("0 0 0 0\n")
    stand_path = os.path.join(directory, "stands.dat")
    with open(stand_path, "w", encoding="utf-8") as out:
        for lat, lon, heading, radius in stands:
            x, y = xy(lat, lon)
            h = math.radians(heading)
            out.write(f"{x:.1f} {y:.1f} {radius:.1f} {radius * math.sin(h):.1f} {radius * math.cos(h):.1f}\n")
    pngs, layers = [], []
    for name, g in sorted(ground.items()):
        safe = "".join(c if c.isalnum() or c in "-_" else "_" for c in name)
        track = os.path.join(directory, safe + "_ground.dat")
        pts = []
        with open(track, "w", encoding="utf-8") as out:
            last = None
            for f in g[::10]:
                if last is not None and int(f[1]) - last > 20:
                    out.write("\n")
                last = int(f[1])
                x, y = xy(float(f[4]), float(f[5]))
                pts.append((x, y))
                out.write(f"{x:.2f} {y:.2f}\n")
        rep = os.path.join(directory, safe + "_ground_reports.dat")
        with open(rep, "w", encoding="utf-8") as out:
            for r in reports.get(name, []):
                if float(r[6]) <= 0:
                    out.write("{:.2f} {:.2f}\n".format(*xy(float(r[4]), float(r[5]))))
        layers.append((name, track, rep))
        xs, ys = [p[0] for p in pts], [p[1] for p in pts]
        pad = 60 + 0.05 * max(max(xs) - min(xs), max(ys) - min(ys))
        box = (min(xs) - pad, max(xs) + pad, min(ys) - pad, max(ys) + pad)
        pngs.append(ground_plot(os.path.join(outdir, safe + "_ground.png"), f"{name}: on the ground",
                                net, stand_path, layers[-1:], box))
    pngs.append(ground_plot(os.path.join(outdir, "ground.png"), "every aircraft on the ground",
                            net, stand_path, layers, None))
    return pngs


def ground_plot(png, title, net, stands, layers, box):
    ranges = "" if box is None else f"set xrange [{box[0]:.0f}:{box[1]:.0f}]\nset yrange [{box[2]:.0f}:{box[3]:.0f}]\n"
    lines = [f"'{net}' using 1:2:3:4 with vectors nohead lc rgb '#c8c8c8' title 'taxi network'",
             f"'{stands}' using 1:2:3 with circles lc rgb '#8fb8de' title 'stands'",
             f"'{stands}' using 1:2:4:5 with vectors nohead lc rgb '#4f7fae' notitle"]
    for name, track, rep in layers:
        lines.append(f"'{track}' using 1:2 with lines lw 2 title '{name} played'")
        if len(layers) == 1:
            lines.append(f"'{rep}' using 1:2 with points pt 7 ps 0.7 lc rgb 'black' title 'reported'")
    script = f"""
set terminal pngcairo size 1100,1000 noenhanced
set output '{png}'
set title '{title}'
set xlabel 'east, m'
set ylabel 'north, m'
set size ratio -1
set grid
set key outside right top
{ranges}plot {", ".join(lines)}
"""
    subprocess.run(["gnuplot"], input=script, text=True, check=True)
    return png


def main(argv):
    airport_path = None
    if "--airport" in argv:
        i = argv.index("--airport")
        if i + 1 >= len(argv):
            print(__doc__, file=sys.stderr)
            return 2
        airport_path = argv[i + 1]
        argv = argv[:i] + argv[i + 2:]
    if len(argv) < 3:
        print(__doc__, file=sys.stderr)
        return 2
    if shutil.which("gnuplot") is None:
        print("gnuplot is missing: run scripts/setup.sh --plot", file=sys.stderr)
        return 1
    frames, reports = read_recording(argv[1])
    wanted = set(argv[3:])
    os.makedirs(argv[2], exist_ok=True)
    with tempfile.TemporaryDirectory() as tmp:
        names = [n for n in sorted(frames) if not wanted or n in wanted]
        for name in names:
            safe = "".join(c if c.isalnum() or c in "-_" else "_" for c in name)
            paths = write_data(tmp, safe, frames[name], reports.get(name, []))
            for png in plot(safe, *paths, argv[2]):
                print(png)
        if airport_path:
            for png in plot_ground(read_airport(airport_path), frames, reports, names, tmp, argv[2]):
                print(png)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
