#!/usr/bin/env python3
"""Builds the archive's airport files of PHNL and BIKF from real data, and the
small EGTK pair (an archive file without stands and a handmade file).

  scripts/make_airport_files.py [TESTDATA_DIR]

Stands come from FlightGear's ground networks (<ICAO>.groundnet.xml): name,
position in degrees and decimal minutes, heading, radius in metres, kind.
Who stands where comes from the real weekly timetable (flights.tsv.gz) and
the airframe pools (aircraft.tsv):

1. Every flight of the week into and out of the airport, per pool; a 24Hr
   row flies on each of the seven days. An arrival's time is its departure
   plus the flight's duration, on the weekly circle.
2. Each arrival is paired with the pool's first free departure after it
   (at least 30 minutes later, at most 36 hours): one stay on the ground.
3. A stay gets an airframe of the pool: the first one, in registration
   order, that isn't on the ground at the airport during the stay.
4. A stay gets a stand of its kind (freighters on cargo stands, falling back
   to gates; passenger aircraft on gates; military stands stay empty) whose
   radius fits half the wingspan, and which is free in every half hour of
   the stay. Preferred is the tightest fit, then a stand the same airline
   used before, then the stand list's order. A stay no stand can take is
   counted and left out.
5. A stay becomes one opt per day it covers (day 1 Monday .. 7 Sunday, the
   half hours from on-block, 10 minutes after landing, to off-block at the
   departure); the last one carries cpl="true".

Output (deterministic): data/airports/archive/stock/{PHNL,BIKF,EGTK}.xml,
data/airports/learned/stock/EGTK.xml.
"""
import csv
import gzip
import math
import os
import re
import sys
import xml.etree.ElementTree as ET
from xml.sax.saxutils import quoteattr

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from make_dbase_records import FREIGHTER_CODES, IATA_TO_ICAO  # noqa: E402  one table for both

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
TESTDATA = sys.argv[1] if len(sys.argv) > 1 else os.path.join(ROOT, "..", "shared", "testdata", "real")
FG = os.path.join(TESTDATA, "flightgear")
OUT = os.path.join(ROOT, "data", "airports")

WEEK_MIN = 7 * 1440
MIN_TURN_MIN = 30
MAX_STAY_MIN = 36 * 60
TAXI_IN_MIN = 10
FIT_TOLERANCE_M = 0.5
DATE = "25 Nov 2026"  # fixed, so that a rerun gives the same files
COPYRIGHT = "Stands: FlightGear ground network; stays: FlightGear AI timetable (GPL-2.0-or-later)"

AIRPORTS = {
    "PHNL": {"name": "Honolulu Intl", "iata": "HNL"},
    "BIKF": {"name": "Keflavik", "iata": "KEF"},
}

# Ground network kinds to stand type numbers; gates and GA ramps by radius.
def stand_type(kind, radius_m):
    size = 2 if radius_m >= 30 else 1 if radius_m >= 16 else 0
    if kind == "cargo":
        return 5
    if kind == "mil-cargo":
        return 6
    if kind == "mil-fighter":
        return 7
    if kind == "ga":
        return 2 + size
    return 8 + size


TYPE_NAMES = ["NONE", "RAMP_GA", "RAMP_GA_SMALL", "RAMP_GA_MEDIUM", "RAMP_GA_LARGE", "RAMP_CARGO",
              "RAMP_MIL_CARGO", "RAMP_MIL_COMBAT", "GATE_SMALL", "GATE_MEDIUM", "GATE_HEAVY",
              "DOCK_GA", "FUEL", "VEHICLE", "RAMP_GA_EXTRA", "GATE_EXTRA"]


def degrees(text):
    hemi, deg, minutes = text[0], text[1:].split()[0], text[1:].split()[1]
    value = float(deg) + float(minutes) / 60.0
    return -value if hemi in "SW" else value


def read_stands(icao):
    root = ET.parse(os.path.join(FG, f"{icao}.groundnet.xml")).getroot()
    stands, seen = [], set()
    for p in root.iter("Parking"):
        name = (p.get("name", "") + p.get("number", "")).strip()
        if name in seen:
            name = f"{name}-{p.get('index')}"
        seen.add(name)
        radius = float(p.get("radius"))
        stands.append({
            "id": name, "kind": p.get("type"), "lat": degrees(p.get("lat")),
            "lon": degrees(p.get("lon")), "heading": float(p.get("heading")) % 360.0,
            "radius": radius, "type": stand_type(p.get("type"), radius),
        })
    return stands


def wingspans():
    root = ET.parse(os.path.join(ROOT, "data", "dbase.xml")).getroot()
    return {w.get("type"): float(w.get("meters")) for w in root.iter("wingspan")}


def read_pools():
    pools = {}
    with open(os.path.join(FG, "aircraft.tsv"), encoding="utf-8") as f:
        for row in csv.DictReader(f, delimiter="\t"):
            pools.setdefault(row["pool"], []).append(row)
    for rows in pools.values():
        rows.sort(key=lambda r: r["registration"])
    return pools


def minute_of(text):
    day, _, clock = text.rpartition("/")
    h, m, _s = (int(x) for x in clock.split(":"))
    return (int(day) if day else 0) * 1440 + h * 60 + m


def callsign(raw, pool):
    prefix = pool.split("-")[0]
    digits = re.findall(r"\d+", raw)
    return prefix + digits[-1] if digits else prefix


def read_movements(icao):
    """Arrivals and departures at the airport per pool, minutes of the week."""
    arrivals, departures = {}, {}
    with gzip.open(os.path.join(FG, "flights.tsv.gz"), "rt", encoding="utf-8") as f:
        for row in csv.DictReader(f, delimiter="\t"):
            if icao not in (row["departure"], row["arrival"]):
                continue
            dep = minute_of(row["departure_time"])
            duration = (minute_of(row["arrival_time"]) - dep) % 1440
            days = range(7) if row["repeat"] != "WEEK" else [0]
            for extra in days:
                start = (dep + extra * 1440) % WEEK_MIN
                cs = callsign(row["callsign"], row["pool"])
                if row["arrival"] == icao:
                    arrivals.setdefault(row["pool"], []).append(((start + duration) % WEEK_MIN, cs))
                if row["departure"] == icao:
                    departures.setdefault(row["pool"], []).append((start, cs))
    return arrivals, departures


def pair_stays(arrivals, departures):
    stays = []
    for pool in sorted(arrivals):
        deps = sorted(departures.get(pool, []))
        used = [False] * len(deps)
        for arr, cs_in in sorted(arrivals[pool]):
            best = None
            for i, (dep, _cs) in enumerate(deps):
                wait = (dep - arr) % WEEK_MIN
                if not used[i] and MIN_TURN_MIN <= wait <= MAX_STAY_MIN and (best is None or wait < best[0]):
                    best = (wait, i)
            if best is None:
                continue
            used[best[1]] = True
            stays.append({"pool": pool, "on": (arr + TAXI_IN_MIN) % WEEK_MIN,
                          "length": best[0] - TAXI_IN_MIN, "cs": f"{cs_in}:{deps[best[1]][1]}"})
    stays.sort(key=lambda s: (s["on"], s["pool"], s["cs"]))
    return stays


def slots(stay):
    """The half hours of the week the stay occupies (0 .. 335)."""
    first = stay["on"] // 30
    last = (stay["on"] + stay["length"]) // 30
    return [h % 336 for h in range(first, last + 1)]


def build(icao, spans, pools):
    stands = read_stands(icao)
    arrivals, departures = read_movements(icao)
    stays = pair_stays(arrivals, departures)
    busy_stand = [set() for _ in stands]
    busy_frame = {}
    airline_stands = {}
    dropped = 0
    for stay in stays:
        frames = pools.get(stay["pool"], [])
        if not frames:
            dropped += 1
            continue
        occupied = set(slots(stay))
        frame = next((f for f in frames if not (busy_frame.get(f["registration"], set()) & occupied)), None)
        model = IATA_TO_ICAO.get(frame["actype"]) if frame else None
        if frame is None or model is None:
            dropped += 1
            continue
        half_span = spans.get(model, 30.0) / 2.0
        cargo = frame["flighttype"] == "cargo" or frame["actype"] in FREIGHTER_CODES
        airline = stay["pool"].split("-")[0]
        kinds = [("cargo",), ("gate",)] if cargo else [("gate",)]
        choice = None
        for kind in kinds:
            fitting = [i for i, s in enumerate(stands)
                       if s["kind"] in kind and s["radius"] + FIT_TOLERANCE_M >= half_span
                       and not (busy_stand[i] & occupied)]
            if fitting:
                known = airline_stands.get(airline, set())
                choice = min(fitting, key=lambda i: (stands[i]["radius"], i not in known, i))
                break
        if choice is None:
            dropped += 1
            continue
        busy_stand[choice] |= occupied
        busy_frame.setdefault(frame["registration"], set()).update(occupied)
        airline_stands.setdefault(airline, set()).add(choice)
        stands[choice].setdefault("stays", []).append(
            {**stay, "reg": frame["registration"], "airl": frame["airline"], "type": model})
    return stands, len(stays), dropped


def day_pieces(stay):
    """(day 1..7, first half hour, last half hour) per day the stay covers."""
    pieces = []
    for slot in slots(stay):
        day, hh = slot // 48 + 1, slot % 48
        if pieces and pieces[-1][0] == day and pieces[-1][2] == hh - 1:
            pieces[-1][2] = hh
        else:
            pieces.append([day, hh, hh])
    return pieces


def hours_text(first, last):
    return f"{first}" if first == last else f"{first}:{last}"


def header(f, icao, name, iata, lat, lon, alt, count, extra=()):
    f.write('<?xml version="1.0"?>\n<root>\n  <meta>\n')
    for key, value in (("author", "ZEPT"), ("version", "15.15.0"), ("date", DATE),
                       ("copyright", COPYRIGHT), ("sim", "2020")):
        f.write(f"    <info name={quoteattr(key)} value={quoteattr(value)} />\n")
    f.write("  </meta>\n  <parameters>\n")
    params = [("icao", icao)] + ([("iata", iata)] if iata else []) + [
        ("airport_name", name), ("latitude", f"{lat:.4f}"), ("longitude", f"{lon:.4f}"),
        ("publisher", "stock")] + list(extra) + [("altitude", str(alt))]
    if count is not None:
        params.append(("num_parkpos", str(count)))
    for key, value in params:
        f.write(f"    <parameter name={quoteattr(key)} value={quoteattr(value)} />\n")
    f.write("  </parameters>\n")


def parkpos_open(s):
    return (f'    <parkpos id={quoteattr(s["id"])} typestr="{TYPE_NAMES[s["type"]]}" '
            f'latitude="{s["lat"]:.6f}" longitude="{s["lon"]:.6f}" heading="{s["heading"]:.1f}" '
            f'radius="{s["radius"]:.1f}"')


def write_airport(icao, catalogue, spans, pools):
    stands, stay_count, dropped = build(icao, spans, pools)
    lat, lon, alt = catalogue[icao]
    info = AIRPORTS[icao]
    path = os.path.join(OUT, "archive", "stock", f"{icao}.xml")
    opts = 0
    with open(path, "w", encoding="utf-8", newline="\n") as f:
        header(f, icao, info["name"], info["iata"], lat, lon, alt, len(stands))
        f.write("  <parkpositions>\n")
        for s in stands:
            stays = sorted(s.get("stays", []), key=lambda x: (x["on"], x["reg"]))
            if not stays:
                f.write(parkpos_open(s) + " />\n")
                continue
            f.write(parkpos_open(s) + ">\n")
            for stay in stays:
                pieces = day_pieces(stay)
                for n, (day, first, last) in enumerate(pieces):
                    cpl = ' cpl="true"' if n == len(pieces) - 1 else ""
                    f.write(f'      <opt reg={quoteattr(stay["reg"])} airl="{stay["airl"]}" '
                            f'type="{stay["type"]}" day="{day}" hh="{hours_text(first, last)}" '
                            f'cs="{stay["cs"]}"{cpl} />\n')
                    opts += 1
            f.write("    </parkpos>\n")
        f.write("  </parkpositions>\n</root>\n")
    used = sum(1 for s in stands if s.get("stays"))
    print(f"{icao}: {len(stands)} stands ({used} used), {stay_count} stays, "
          f"{dropped} without a stand, {opts} opt entries")


# A few stands of the Oxford apron, placed by hand, with the light aircraft
# that a user saw there: what a handmade file of a small airfield holds.
EGTK_STANDS = [
    ("A1", 1, 51.836900, -1.322600, 225.0, 8.0),
    ("A2", 1, 51.836780, -1.322430, 225.0, 8.0),
    ("A3", 1, 51.836660, -1.322260, 225.0, 8.0),
    ("B1", 3, 51.835950, -1.321300, 180.0, 18.0),
    ("B2", 3, 51.835800, -1.321000, 180.0, 18.0),
    ("H1", 0, 51.834900, -1.318900, 90.0, 10.0),
]
EGTK_OPTS = {
    "A1": [("G-BOYH", "C172", 1, "16:19", False), ("G-BOYH", "C172", 3, "18:21", False)],
    "A2": [("G-BNSR", "P28A", 2, "20:25", True), ("G-BNSR", "P28A", 5, "16:22", True)],
    "A3": [("G-BRBN", "C172", 6, "17:20", True)],
    "B1": [("G-OXFD", "BE20", 4, "14:30", False)],
    "B2": [("G-JETX", "C25A", 1, "22:34", True)],
}


def write_egtk(catalogue):
    lat, lon, alt = catalogue["EGTK"]
    with open(os.path.join(OUT, "archive", "stock", "EGTK.xml"), "w", encoding="utf-8", newline="\n") as f:
        header(f, "EGTK", "Oxford Kidlington", "OXF", lat, lon, alt, 0)
        f.write("</root>\n")
    os.makedirs(os.path.join(OUT, "learned", "stock"), exist_ok=True)
    with open(os.path.join(OUT, "learned", "stock", "EGTK.xml"), "w", encoding="utf-8", newline="\n") as f:
        header(f, "EGTK", "Oxford Kidlington", "OXF", lat, lon, alt, None,
               extra=[("handmade", "true")])
        f.write("  <parkpositions>\n")
        for sid, kind, slat, slon, heading, radius in EGTK_STANDS:
            s = {"id": sid, "type": kind, "lat": slat, "lon": slon, "heading": heading, "radius": radius}
            line = parkpos_open(s)
            if kind == 0:
                line += ' type="0" heli="true"'
            f.write(line + ">\n")
            for reg, model, day, hh, soft in EGTK_OPTS.get(sid, []):
                soft_attr = ' soft="true"' if soft else ""
                f.write(f'      <opt reg="{reg}" airl="" type="{model}"{soft_attr} day="{day}" hh="{hh}" />\n')
            f.write("    </parkpos>\n")
        f.write("  </parkpositions>\n</root>\n")
    print("EGTK: archive file without stands, handmade file with "
          f"{len(EGTK_STANDS)} stands and {sum(len(v) for v in EGTK_OPTS.values())} opt entries")


def read_catalogue():
    root = ET.parse(os.path.join(OUT, "airports.xml")).getroot()
    return {ap.get("c"): (float(ap.get("la")), float(ap.get("lo")), int(ap.get("a")))
            for ap in root.iter("ap")}


def main():
    os.makedirs(os.path.join(OUT, "archive", "stock"), exist_ok=True)
    catalogue = read_catalogue()
    spans, pools = wingspans(), read_pools()
    for icao in sorted(AIRPORTS):
        write_airport(icao, catalogue, spans, pools)
    write_egtk(catalogue)


if __name__ == "__main__":
    main()
