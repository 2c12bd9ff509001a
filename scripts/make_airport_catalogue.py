#!/usr/bin/env python3
"""Builds the three airport catalogue files from real data.

  scripts/make_airport_catalogue.py [TESTDATA_DIR]

Reads flightgear/airports.tsv.gz (apt.dat airports: code, elevation,
reference point) and flightgear/flights.tsv.gz (a weekly timetable) and
writes, deterministically:
  data/airports/airports.xml   every airport whose code has four letters or
                               digits (three-character local identifiers
                               can't be ICAO codes and are left out)
  data/airports/wktraffic.xml  every airport the timetable serves
  data/airports/archives.xml   a small publishers list and the archive's
                               add-on lists (empty: the archive holds stock
                               files only)
"""
import gzip
import os
import re
import sys
from xml.sax.saxutils import quoteattr

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
DEFAULT_TESTDATA = os.path.join(ROOT, "..", "shared", "testdata", "real")

# IATA codes of the airports that the demo and the tests meet; the source
# data carries none, and an airport without one gets "XXX" in the program.
IATA = {
    "BIKF": "KEF", "EGTK": "OXF", "PHNL": "HNL", "PHOG": "OGG", "PHKO": "KOA",
    "PHLI": "LIH", "PHTO": "ITO", "EGLL": "LHR", "EGKK": "LGW", "EGSS": "STN",
    "EHAM": "AMS", "EDDF": "FRA", "EDDM": "MUC", "LFPG": "CDG", "LFPO": "ORY",
    "KJFK": "JFK", "KLAX": "LAX", "KSFO": "SFO", "KSEA": "SEA", "KORD": "ORD",
    "KATL": "ATL", "KDFW": "DFW", "KDEN": "DEN", "KPHX": "PHX", "KLAS": "LAS",
    "CYVR": "YVR", "CYYZ": "YYZ", "RJTT": "HND", "RJAA": "NRT", "RKSI": "ICN",
    "YSSY": "SYD", "NZAA": "AKL", "BGSF": "SFJ", "ENGM": "OSL", "EKCH": "CPH",
}

# Canonical name first, then spellings found in package folder names.
PUBLISHERS = [
    "Aerosoft,aerosoft-",
    "FlyTampa,flytampa-",
    "iniBuilds,inibuilds-",
    "Orbx,orbx-,ORBX",
    "Taxi2Gate,taxi2gate-",
    "Justsim,justsim-",
]

CODE = re.compile(r"[A-Za-z0-9]{4}")


def read_airports(testdata):
    path = os.path.join(testdata, "flightgear", "airports.tsv.gz")
    airports = {}
    skipped = 0
    with gzip.open(path, "rt", encoding="utf-8") as f:
        header = f.readline().rstrip("\n").split("\t")
        col = {name: i for i, name in enumerate(header)}
        for line in f:
            row = line.rstrip("\n").split("\t")
            code = row[col["icao"]].upper()
            if not CODE.fullmatch(code):
                skipped += 1
                continue
            airports[code] = (float(row[col["lat"]]), float(row[col["lon"]]),
                              int(row[col["elevation_ft"]]))
    return airports, skipped


def read_served(testdata):
    path = os.path.join(testdata, "flightgear", "flights.tsv.gz")
    served = set()
    with gzip.open(path, "rt", encoding="utf-8") as f:
        header = f.readline().rstrip("\n").split("\t")
        col = {name: i for i, name in enumerate(header)}
        for line in f:
            row = line.rstrip("\n").split("\t")
            for key in ("departure", "arrival"):
                code = row[col[key]].upper()
                if CODE.fullmatch(code):
                    served.add(code)
    return served


def write_airports(path, airports):
    with open(path, "w", encoding="utf-8", newline="\n") as f:
        f.write('<?xml version="1.0"?>\n<root>\n  <airports>\n')
        for code in sorted(airports):
            lat, lon, alt = airports[code]
            iata = IATA.get(code)
            i = f' i="{iata}"' if iata else ""
            f.write(f'    <ap c="{code}"{i} la="{lat:.6f}" lo="{lon:.6f}" a="{alt}"/>\n')
        f.write("  </airports>\n</root>\n")


def write_weekly(path, codes):
    codes = sorted(codes)
    with open(path, "w", encoding="utf-8", newline="\n") as f:
        f.write('<?xml version="1.0"?>\n<root>\n  <traffic_airports>\n')
        for start in range(0, len(codes), 100):
            f.write(f'    <arp c="{",".join(codes[start:start + 100])}"/>\n')
        f.write("  </traffic_airports>\n</root>\n")


def write_archives(path):
    with open(path, "w", encoding="utf-8", newline="\n") as f:
        f.write('<?xml version="1.0"?>\n<root>\n  <publishers>\n')
        for names in PUBLISHERS:
            f.write(f"    <pub pn={quoteattr(names)}/>\n")
        f.write("  </publishers>\n")
        for sim in ("20", "24"):
            f.write(f'  <simaddons{sim}>\n    <s{sim} aps=""/>\n  </simaddons{sim}>\n')
            f.write(f"  <thirdparties{sim}>\n  </thirdparties{sim}>\n")
        f.write("</root>\n")


def main():
    testdata = sys.argv[1] if len(sys.argv) > 1 else DEFAULT_TESTDATA
    out = os.path.join(ROOT, "data", "airports")
    os.makedirs(out, exist_ok=True)
    airports, skipped = read_airports(testdata)
    served = read_served(testdata) & set(airports)
    write_airports(os.path.join(out, "airports.xml"), airports)
    write_weekly(os.path.join(out, "wktraffic.xml"), served)
    write_archives(os.path.join(out, "archives.xml"))
    print(f"{len(airports)} airports ({skipped} three-character identifiers left out), "
          f"{len(served)} with weekly traffic, {len(PUBLISHERS)} publishers")


if __name__ == "__main__":
    main()
