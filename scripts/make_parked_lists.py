#!/usr/bin/env python3
"""Builds the parked lists that the stand-in RealTraffic application answers
with at PHNL and BIKF (rt_app_standin --parked FILE), from the same real
timetable as the airport files.

  scripts/make_parked_lists.py [TESTDATA_DIR]

The stays on the ground come from scripts/make_airport_files.py (the same
pairing of arrivals and departures of flights.tsv.gz, the same airframes of
aircraft.tsv and the same stands), so the live service and the airport file
tell the same week. Like the real service, some records then disagree with
the file, each choice fixed by the stay's place in the list:

- moved: the aircraft stands at another free stand of its kind (the nearest);
- airframe: the flight was flown by another airframe of the pool, one the
  airport file never has there at that time (the last free one in
  registration order);
- no registration: the service doesn't know the airframe ("null");
- the rest agree with the file.

The stand-in lists a stay from its on-block time until ten minutes after
its off-block time, so the list still holds an aircraft that is already
pushing back or taxiing in the live data; each record is stamped with its
on-block time, when the service last saw it arrive.

Output (deterministic): data/parked/PHNL.csv, data/parked/BIKF.csv, lines
  airport,<ICAO>
  S,<on min>,<off min>,<hexid hex>,<lat>,<lon>,<callsign>,<model>,<regcode>,<stand>,<agreement>
with minutes of the week from Monday 00:00 UTC (off may pass the week's end).
"""
import os
import sys
import zlib

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
import make_airport_files as apf  # noqa: E402  the same stays as the airport files
from make_dbase_records import IATA_TO_ICAO  # noqa: E402

OUT = os.path.join(apf.ROOT, "data", "parked")
MOVED_EVERY, MOVED_AT = 7, 3
AIRFRAME_EVERY, AIRFRAME_AT = 5, 1
NOREG_EVERY, NOREG_AT = 11, 5


def hexid_of(text):
    """A transponder address for an airframe, the same in every file of ours."""
    h = zlib.crc32(text.encode("utf-8")) & 0xFFFFFF
    return h if h > 0x10000 else h + 0x100000


def distance_m(a, b):
    return apf.math.hypot((a["lat"] - b["lat"]) * 111120,
                          (a["lon"] - b["lon"]) * 111120 * apf.math.cos(apf.math.radians(a["lat"])))


def records(icao, spans, pools):
    stands, _count, _dropped = apf.build(icao, spans, pools)
    busy_stand = [set() for _ in stands]
    busy_frame = {}
    stays = []
    for i, s in enumerate(stands):
        for stay in s.get("stays", []):
            occupied = set(apf.slots(stay))
            busy_stand[i] |= occupied
            busy_frame.setdefault(stay["reg"], set()).update(occupied)
            stays.append((stay, i))
    stays.sort(key=lambda x: (x[0]["on"], x[0]["reg"]))
    out, counts = [], {}
    for n, (stay, i) in enumerate(stays):
        occupied = set(apf.slots(stay))
        stand, reg, model, agreement = i, stay["reg"], stay["type"], "file"
        if n % MOVED_EVERY == MOVED_AT:
            kind, radius = stands[i]["kind"], stands[i]["radius"]
            free = [j for j, s in enumerate(stands) if j != i and s["kind"] == kind
                    and s["radius"] >= radius and not (busy_stand[j] & occupied)]
            if free:
                stand = min(free, key=lambda j: (distance_m(stands[i], stands[j]), j))
                busy_stand[stand] |= occupied
                agreement = "moved"
        elif n % AIRFRAME_EVERY == AIRFRAME_AT:
            others = [f for f in pools.get(stay["pool"], []) if f["registration"] != reg
                      and not (busy_frame.get(f["registration"], set()) & occupied)
                      and IATA_TO_ICAO.get(f["actype"])]
            if others:
                frame = others[-1]
                reg, model = frame["registration"], IATA_TO_ICAO[frame["actype"]]
                busy_frame.setdefault(reg, set()).update(occupied)
                agreement = "airframe"
        elif n % NOREG_EVERY == NOREG_AT:
            reg, agreement = "", "noreg"
        counts[agreement] = counts.get(agreement, 0) + 1
        s = stands[stand]
        out.append((stay["on"], stay["on"] + stay["length"], hexid_of(reg or stay["cs"]),
                    s["lat"], s["lon"], stay["cs"].split(":")[0], model, reg, s["id"], agreement))
    return out, counts


def main():
    os.makedirs(OUT, exist_ok=True)
    spans, pools = apf.wingspans(), apf.read_pools()
    for icao in sorted(apf.AIRPORTS):
        rows, counts = records(icao, spans, pools)
        path = os.path.join(OUT, f"{icao}.csv")
        with open(path, "w", encoding="utf-8", newline="\n") as f:
            f.write(f"# Parked aircraft at {icao} over the week, by scripts/make_parked_lists.py\n")
            f.write("# S,on_min,off_min,hexid,lat,lon,callsign,model,regcode,stand,agreement\n")
            f.write(f"airport,{icao}\n")
            for on, off, hexid, lat, lon, cs, model, reg, stand, agreement in rows:
                f.write(f"S,{on},{off},{hexid:x},{lat:.6f},{lon:.6f},{cs},{model},{reg},{stand},"
                        f"{agreement}\n")
        print(f"{icao}: {len(rows)} stays, " + ", ".join(f"{k} {v}" for k, v in sorted(counts.items())))


if __name__ == "__main__":
    main()
