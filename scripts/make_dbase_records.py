#!/usr/bin/env python3
"""Writes the <dbase> section of data/dbase.xml from real airframes.

The airframes come from FlightGear's AI traffic (testdata/real/flightgear):
registration, airline, IATA type code, and the pool the aircraft flies for.
Taken are the aircraft of every pool that flies to or from the demo airports,
a few per pool, then a spread over the remaining pools up to the wanted
count. IATA type codes are converted to ICAO designators here; an aircraft
whose type or airline the database doesn't know is left out.

A pool named after another airline (AAL-E70 flown by RPA) gives that airline
as the airline and the flying one as the operator.

Usage: scripts/make_dbase_records.py [testdata folder] [count]
"""
import csv
import gzip
import re
import sys
import xml.etree.ElementTree as ET
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
DBASE = ROOT / "data" / "dbase.xml"
TESTDATA = Path(sys.argv[1]) if len(sys.argv) > 1 else ROOT.parent / "shared" / "testdata" / "real"
WANTED = int(sys.argv[2]) if len(sys.argv) > 2 else 450
DEMO_AIRPORTS = {"PHNL", "BIKF"}
PER_DEMO_POOL = 4
PER_OTHER_POOL = 1
MAX_PER_MODEL = 40

# IATA type code (or FlightGear's own spelling) -> ICAO designator.
IATA_TO_ICAO = {
    "318": "A318", "319": "A319", "320": "A320", "321": "A321", "32N": "A20N", "32Q": "A21N",
    "A320": "A320", "320-232": "A320", "320-214": "A320", "320-233": "A320", "A320-200": "A320",
    "A320-214": "A320", "Airbus_A321": "A321", "332": "A332", "333": "A333", "A330-243": "A332",
    "A330-341": "A333", "339": "A339", "343": "A343", "345": "A345", "346": "A346", "359": "A359",
    "380": "A388", "388": "A388", "310": "A310", "A310": "A310", "AB6": "A306", "ABY": "A306",
    "300-605R": "A306", "300B2-203": "A30B", "300B4-2C": "A30B", "ABF": "A30B", "33X": "A332",
    "221": "BCS1", "CS1": "BCS1", "223": "BCS3", "CS3": "BCS3",
    "717": "B712", "733": "B733", "734": "B734", "735": "B735", "736": "B736", "737": "B737",
    "73G": "B737", "738": "B738", "73H": "B738", "737-800": "B738", "739": "B739", "737-900": "B739",
    "73P": "B734", "73F": "B734", "7M8": "B38M", "7M9": "B39M", "744": "B744", "74Y": "B744",
    "74F": "B744", "74H": "B748", "74N": "B748", "752": "B752", "757": "B752", "75F": "B752",
    "753": "B753", "762": "B762", "76X": "B762", "763": "B763", "767": "B763", "76Y": "B763",
    "767-383ER": "B763", "764": "B764", "772": "B772", "773": "B773", "77L": "B77L", "77F": "B77L",
    "77W": "B77W", "788": "B788", "789": "B789", "78X": "B78X", "M1F": "MD11",
    "E70": "E170", "E75": "E75L", "E90": "E190", "E95": "E195", "ER3": "E135", "ERD": "E135",
    "ER4": "E145", "ERJ": "E145", "ERJ145": "E145", "CR1": "CRJ1", "CR2": "CRJ2", "CR7": "CRJ7",
    "CR9": "CRJ9", "CRK": "CRJX", "DH1": "DH8A", "DH2": "DH8B", "DH3": "DH8C", "DH4": "DH8D",
    "AT4": "AT43", "AT5": "AT45", "AT7": "AT72", "ATR": "AT72", "100": "F100", "F70": "F70",
    "SF3": "SF34", "J32": "JS32", "J41": "JS41", "SU9": "SU95", "DHT": "DHC6", "BNI": "BN2P",
    "B1900D": "B190", "b1900d": "B190", "beech200": "BE20", "C208": "C208", "c172": "C172",
    "c177": "C177", "c182": "C182", "c182rg": "C182", "c310": "C310", "pa28": "P28A",
}
# Types that are freighters whoever flies them.
FREIGHTER_CODES = {"74Y", "74F", "74N", "75F", "76X", "76Y", "77F", "M1F", "ABY", "ABF", "33X", "73F"}


def read_known():
    tree = ET.parse(DBASE).getroot()
    models = {c.strip() for e in tree.find("aircrafts") for c in e.get("types", "").split(",")}
    airlines = {c.strip() for e in tree.find("ICAO_airlines") for c in e.get("codes", "").split(",")}
    return models - {""}, airlines - {""}


def demo_pools():
    pools = set()
    with gzip.open(TESTDATA / "flightgear" / "flights.tsv.gz", "rt", encoding="utf-8") as f:
        for row in csv.DictReader(f, delimiter="\t"):
            if row["departure"] in DEMO_AIRPORTS or row["arrival"] in DEMO_AIRPORTS:
                pools.add(row["pool"])
    return pools


def record(row, models, airlines):
    model = IATA_TO_ICAO.get(row["actype"])
    if model not in models:
        return None
    flying = row["airline"]
    prefix = re.split(r"[-]", row["pool"])[0]
    airline, operator = flying, ""
    if re.fullmatch(r"[A-Z]{3}", prefix) and prefix != flying and prefix in airlines:
        airline, operator = prefix, flying
    if airline not in airlines or (operator and operator not in airlines):
        return None
    cargo = row["flighttype"] == "cargo" or row["actype"] in FREIGHTER_CODES
    return {"r": row["registration"], "a": airline, "o": operator, "m": model, "c": cargo}


def main():
    models, airlines = read_known()
    demo = demo_pools()
    by_pool = {}
    with open(TESTDATA / "flightgear" / "aircraft.tsv", encoding="utf-8") as f:
        for row in csv.DictReader(f, delimiter="\t"):
            rec = record(row, models, airlines)
            if rec:
                by_pool.setdefault(row["pool"], []).append(rec)
    chosen, seen = [], set()

    def take(pool, n):
        for rec in sorted(by_pool[pool], key=lambda r: r["r"])[:n]:
            if rec["r"] not in seen and len(chosen) < WANTED:
                seen.add(rec["r"])
                chosen.append(rec)

    for pool in sorted(p for p in by_pool if p in demo):
        take(pool, PER_DEMO_POOL)
    # Then the other pools, favouring types that are still rare in the pick.
    per_model = {}
    for rec in chosen:
        per_model[rec["m"]] = per_model.get(rec["m"], 0) + 1
    for pool in sorted((p for p in by_pool if p not in demo),
                       key=lambda p: (per_model.get(by_pool[p][0]["m"], 0), p)):
        if per_model.get(by_pool[pool][0]["m"], 0) < MAX_PER_MODEL:
            before = len(chosen)
            take(pool, PER_OTHER_POOL)
            for rec in chosen[before:]:
                per_model[rec["m"]] = per_model.get(rec["m"], 0) + 1

    lines = ["  <dbase>"]
    for rec in sorted(chosen, key=lambda r: r["r"]):
        attrs = f'r="{rec["r"]}" a="{rec["a"]}"'
        if rec["o"]:
            attrs += f' o="{rec["o"]}"'
        attrs += f' m="{rec["m"]}"'
        if rec["c"]:
            attrs += ' c="true"'
        lines.append(f"    <d {attrs} />")
    lines.append("  </dbase>")
    section = "\n".join(lines)

    text = DBASE.read_text(encoding="utf-8")
    if "<dbase>" in text:
        text = re.sub(r"  <dbase>.*?</dbase>", lambda _: section, text, flags=re.S)
    else:
        text = text.replace("</root>", section + "\n</root>")
    DBASE.write_text(text, encoding="utf-8")
    print(f"{len(chosen)} records written to {DBASE}")


if __name__ == "__main__":
    main()
