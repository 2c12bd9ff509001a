#!/usr/bin/env python3
"""Draws a motion recording as PNG plots with gnuplot: one of
tools/replay_motion, or the built-in simulator's recording of a run
(zept --record FILE; scripts/run.sh writes run/motion.csv).

Usage: scripts/plot_motion.py RECORDING.csv OUTDIR [CALLSIGN|object_ID ...]

For each aircraft (or only the callsigns given) three plots go to OUTDIR:
<callsign>_track.png (ground track, east and north in NM from the first
frame), <callsign>_alt.png and <callsign>_speed.png (altitude and true
airspeed over time in seconds). The reported points, at the time the engine
means to be there, are marked on all three (the simulator's recording has no
reports, names each aircraft by its object id and the user aircraft "user").
Needs gnuplot (Debian package gnuplot-nox); only the standard library otherwise.
"""
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


def main(argv):
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
        for name, fr in sorted(frames.items()):
            if wanted and name not in wanted:
                continue
            safe = "".join(c if c.isalnum() or c in "-_" else "_" for c in name)
            paths = write_data(tmp, safe, fr, reports.get(name, []))
            for png in plot(safe, *paths, argv[2]):
                print(png)
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
