#!/usr/bin/env python3
"""Writes the load scenario for the stand-in application: thousands of live
aircraft circling within the feed's range of a hub, each reporting on its own
every few seconds, in the format of tools/rt_scenario.h (O lines).

  scripts/make_load_scenario.py [--aircraft 2000] [--hub PHNL] [--region-nm 90]
        [--at 2/20:00] [--seed 7] [--out build/load/rt_scenario_load.csv] [--testdata DIR]

Who flies is the real timetable's (flights.tsv.gz): the flights in the air at
the given moment of the week (day 0 Monday, UTC), those to and from the hub
first, then the others in a fixed order drawn from the seed, until the count
is reached; each gets an airframe of its pool (aircraft.tsv) that no other
aircraft of the scenario wears, its callsign as the airport files write it,
its model (the pool's type as an ICAO designator), the airline and the
emitter category of the reference database, and the route's airports as
three letters (a US airport's IATA code, the last three letters otherwise).

Where they fly is drawn: no real hub holds 2,000 aircraft within a feed's
range, so the real identities are laid around the hub, each on a circle of
4 to 20 NM whose whole round lies within the region. Lower and slower near
the hub, up to the flight's cruise level further out; one aircraft in three
reports every 3 to 5 s, the others about every 2 s (as the application's
public feed does). The stand-in flies the circles for as long as it plays.
Deterministic: the same arguments give the same file.
"""
import argparse
import csv
import gzip
import math
import os
import random
import sys
import zlib

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(HERE)
sys.path.insert(0, HERE)
# Those scripts read their own arguments when imported: they see none of ours.
_argv, sys.argv = sys.argv, sys.argv[:1]
import make_airport_files as apf  # noqa: E402  timetable minutes, callsigns, pools, catalogue
import make_ground_scenarios as mgs  # noqa: E402  test data folder, emitter categories
from make_dbase_records import IATA_TO_ICAO  # noqa: E402
sys.argv = _argv

MIN_RADIUS_NM, MAX_RADIUS_NM = 4.0, 20.0


def airborne(at_min):
    """The flights in the air at the moment of the week, as timetable rows."""
    out = []
    with gzip.open(os.path.join(apf.FG, "flights.tsv.gz"), "rt", encoding="utf-8") as f:
        for row in csv.DictReader(f, delimiter="\t"):
            dep = apf.minute_of(row["departure_time"])
            duration = (apf.minute_of(row["arrival_time"]) - dep) % 1440
            for extra in (range(7) if row["repeat"] != "WEEK" else [0]):
                start = (dep + extra * 1440) % apf.WEEK_MIN
                if 0 < (at_min - start) % apf.WEEK_MIN < duration:
                    out.append(row)
                    break
    return out


def three_letters(icao):
    return icao[1:] if len(icao) == 4 and icao[0] == "K" else icao[-3:]


def place(rng, region_nm):
    """A circle wholly within the region: centre, radius, start angle, sense."""
    radius = rng.uniform(MIN_RADIUS_NM, MAX_RADIUS_NM)
    reach = region_nm - radius
    centre = reach * math.sqrt(rng.random())  # even over the area
    bearing = rng.uniform(0, 2 * math.pi)
    return centre, bearing, radius, rng.uniform(0, 360), rng.random() < 0.5


def scenario(args):
    apf.FG = os.path.join(mgs.testdata_dir(args.testdata), "flightgear")
    catalogue = apf.read_catalogue()
    hub_lat, hub_lon, hub_elev = catalogue[args.hub]
    pools = apf.read_pools()
    heavy, large, bizjet = mgs.categories()
    day, clock = args.at.split("/")
    at_min = int(day) * 1440 + int(clock.split(":")[0]) * 60 + int(clock.split(":")[1])
    rows = airborne(at_min)
    order = random.Random(args.seed)
    order.shuffle(rows)
    rows.sort(key=lambda r: args.hub not in (r["departure"], r["arrival"]))  # stable: hub first
    used_regs, hexids, lines = set(), set(), []
    skipped = 0
    cos_hub = math.cos(math.radians(hub_lat))
    for row in rows:
        if len(lines) >= args.aircraft:
            break
        frames = [a for a in pools.get(row["pool"], []) if a["registration"] not in used_regs]
        model = IATA_TO_ICAO.get(frames[0]["actype"]) if frames else None
        if not frames or not model:
            skipped += 1
            continue
        rng = random.Random(f"{args.seed}:{row['callsign']}:{row['pool']}:{row['departure_time']}")
        frame = frames[rng.randrange(len(frames))]
        model = IATA_TO_ICAO.get(frame["actype"]) or model
        used_regs.add(frame["registration"])
        hexid = 0xA00000 | (zlib.crc32(frame["registration"].encode()) & 0xFFFFF)
        while hexid in hexids:
            hexid += 1
        hexids.add(hexid)
        centre_nm, bearing, radius, angle, clockwise = place(rng, args.region_nm)
        lat = hub_lat + centre_nm * math.cos(bearing) / 60
        lon = hub_lon + centre_nm * math.sin(bearing) / (60 * cos_hub)
        cruise_ft = max(int(row["cruise_fl"] or 0) * 100, 5000)
        alt = min(cruise_ft, hub_elev + 2000 + 400 * (centre_nm - radius if centre_nm > radius else 0))
        alt = round(max(alt, hub_elev + 1500), -2)
        gs = round(210 + (min(alt, 36000) - 2000) / 34000 * 270)
        period = 2.0 if rng.random() < 2 / 3 else round(rng.uniform(3, 5), 1)
        airline = row["pool"].split("-")[0]
        lines.append(
            f"O,{hexid},{lat:.6f},{lon:.6f},{radius:.2f},{angle:.1f},{1 if clockwise else 0},"
            f"{alt:.0f},{gs},{period},{apf.callsign(row['callsign'], row['pool'])},{model},"
            f"{frame['registration']},{three_letters(row['departure'])},"
            f"{three_letters(row['arrival'])},{airline},"
            f"{mgs.emitter(model, heavy, large, bizjet)}")
    head = [
        "# O,hexid,lat,lon,radius_nm,angle_deg,clockwise,alt_ft,gs_kt,period_s,callsign,model,"
        "regcode,from,to,airline,category",
        f"# {len(lines)} aircraft of the flights in the air at {args.at} (of {len(rows)}), circling "
        f"within {args.region_nm:g} NM of {args.hub}; made by scripts/make_load_scenario.py",
        f"start,{mgs.WEEK_START.timestamp() + at_min * 60:.0f}",
        f"airport,{args.hub},{hub_lat:.6f},{hub_lon:.6f},{hub_elev}",
    ]
    return "\n".join(head + lines) + "\n", len(lines), len(rows), skipped


def main():
    ap = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    ap.add_argument("--aircraft", type=int, default=2000)
    ap.add_argument("--hub", default="PHNL")
    ap.add_argument("--region-nm", type=float, default=90.0)
    ap.add_argument("--at", default="2/20:00", help="day/hh:mm of the week, UTC, day 0 Monday")
    ap.add_argument("--seed", type=int, default=7)
    ap.add_argument("--out", default=os.path.join(ROOT, "build", "load", "rt_scenario_load.csv"))
    ap.add_argument("--testdata")
    args = ap.parse_args()
    text, count, airborne_count, skipped = scenario(args)
    os.makedirs(os.path.dirname(os.path.abspath(args.out)), exist_ok=True)
    mgs.write(args.out, text)
    print(f"load scenario: {count} aircraft of {airborne_count} in the air at {args.at} "
          f"({skipped} without a free airframe or known model), around {args.hub} -> {args.out}")
    if count < args.aircraft:
        sys.exit(f"only {count} aircraft could be drawn")


if __name__ == "__main__":
    main()
