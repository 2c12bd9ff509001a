#!/usr/bin/env python3
"""Writes data/AIG-regcodes.xml: which real registration wears which installed title.

The titles are those of a generated AI installation (data/ai_install_small by
default), read from its aircraft.cfg files: the title, icao_airline and
atc_id of each [FLTSIM.N] section, the model from [GENERAL]
icao_type_designator, an IVAO folder name or a known base container. The
registrations are FlightGear's real airframes (testdata/real/flightgear/
aircraft.tsv): every airframe whose airline and type (IATA code converted to
ICAO) the installation has a livery for is given one of those liveries, so
that the regcode steps of matching are exercised by real registrations.

Some liveries are special: a livery painted on one airframe only. Those are
written with their own atc_id alone and s="true", so that registration is
matched at the top of the ladder and nobody else gets the title. A
registration that already is a title's atc_id is not given to another title.

Sections the scan would reject (no title, an airline that isn't three
letters, a fictional livery) are skipped; a title the scan drops anyway does no harm, since the
index build ignores regcode entries of titles it doesn't have.

Usage: scripts/make_regcodes.py [INSTALLATION] [--out FILE] [--tsv FILE]
"""
import argparse
import csv
import importlib.util
import re
import sys
import xml.etree.ElementTree as ET
from datetime import date
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
TESTDATA = ROOT.parent / "shared" / "testdata" / "real"
CONTAINERS = {"asobo_a320_neo": "A20N", "asobo_b787_10": "B78X", "asobo_b747_8i": "B748"}
SPECIAL_EVERY = 7  # one livery in seven of an airline and model is an airframe's own


def iata_table():
    found = importlib.util.spec_from_file_location("dbase_records", ROOT / "scripts" / "make_dbase_records.py")
    module = importlib.util.module_from_spec(found)
    saved, sys.argv = sys.argv, sys.argv[:1]
    try:
        found.loader.exec_module(module)
    finally:
        sys.argv = saved
    return module.IATA_TO_ICAO


def model_fixes():
    """Wrongly written model codes and their correct ones, as the reference data has them."""
    fixes = ET.parse(ROOT / "data" / "dbase.xml").getroot().find("fixes")
    return {} if fixes is None else {e.get("wro"): e.get("cor") for e in fixes}


def decode(raw):
    if raw.startswith(b"\xff\xfe") or raw.startswith(b"\xfe\xff"):
        return raw.decode("utf-16")
    if raw.startswith(b"\xef\xbb\xbf"):
        return raw[3:].decode("utf-8", errors="replace")
    try:
        return raw.decode("utf-8")
    except UnicodeDecodeError:
        return raw.decode("cp1252", errors="replace")


def value_of(line):
    text = line.split("=", 1)[1]
    text = text.split(";", 1)[0].strip() if not text.strip().startswith('"') else text.strip()
    if text.startswith('"'):
        end = text.find('"', 1)
        return text[1:end] if end > 0 else text[1:]
    return text.strip()


def read_cfg(path):
    """Yields (title, airline, model, atc_id) of each usable section."""
    sections, current = {}, None
    for line in decode(path.read_bytes()).splitlines():
        line = line.strip()
        match = re.fullmatch(r"\[([^\]]+)\]", line.split(";", 1)[0].strip())
        if match:
            current = match.group(1).strip().lower()
            sections.setdefault(current, {})
        elif current and "=" in line and not line.startswith(";"):
            key = line.split("=", 1)[0].strip().lower()
            sections[current].setdefault(key, value_of(line))
    general = sections.get("general", {})
    model = general.get("icao_type_designator", "").strip().upper()
    folder = path.parent.name
    if not model and folder.upper().startswith("IVAO_"):
        model = folder[5:].split("_")[0].upper()
    if not model:
        container = sections.get("variation", {}).get("base_container", "")
        model = CONTAINERS.get(container.replace("\\", "/").split("/")[-1].strip().lower(), "")
    if not re.fullmatch(r"[A-Z0-9]{2,4}", model):
        return
    for name, fields in sections.items():
        if not name.startswith("fltsim."):
            continue
        title = fields.get("title", "").strip()
        airline = fields.get("icao_airline", "").strip().upper()
        # The scan ignores fictional liveries; they get no registrations.
        if title and re.fullmatch(r"[A-Z]{3}", airline) and "fictional" not in title.lower():
            yield title, airline, model, fields.get("atc_id", "").strip()


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("installation", nargs="?", default=ROOT / "data" / "ai_install_small", type=Path)
    parser.add_argument("--out", default=ROOT / "data" / "AIG-regcodes.xml", type=Path)
    parser.add_argument("--tsv", default=TESTDATA / "flightgear" / "aircraft.tsv", type=Path)
    args = parser.parse_args()

    fixes = model_fixes()
    liveries = {}  # title -> (airline, model, atc_id); the first section of a title stands
    for cfg in sorted(args.installation.rglob("*")):
        if cfg.name.lower() == "aircraft.cfg" and cfg.is_file():
            for title, airline, model, atc_id in read_cfg(cfg):
                liveries.setdefault(title, (airline, fixes.get(model, model), atc_id))
    groups = {}
    for title, (airline, model, atc_id) in sorted(liveries.items()):
        groups.setdefault((airline, model), []).append(title)
    own = {atc for (_, _, atc) in liveries.values() if atc}

    to_icao = iata_table()
    airframes = {}
    with open(args.tsv, encoding="utf-8") as f:
        for row in csv.DictReader(f, delimiter="\t"):
            key = (row["airline"], to_icao.get(row["actype"], ""))
            reg = row["registration"].strip()
            if key in groups and reg and reg not in own and 3 <= len(reg) <= 12:
                airframes.setdefault(key, set()).add(reg)

    entries = []  # (title, [regcodes], special)
    eligible = 0  # titles that may be special: any but the first of its airline and model
    for key, titles in sorted(groups.items()):
        plain = titles[:1]
        for title in titles[1:]:
            atc_id = liveries[title][2]
            eligible += 1
            if eligible % SPECIAL_EVERY == 0 and atc_id:
                entries.append((title, [atc_id], True))
            else:
                plain.append(title)
        regs = sorted(airframes.get(key, ()))
        given = {title: [] for title in plain}
        for i, reg in enumerate(regs):
            given[plain[i % len(plain)]].append(reg)
        entries += [(title, given[title], False) for title in plain if given[title]]

    root = ET.Element("root")
    meta = ET.SubElement(root, "meta")
    for name, value in (("author", "ZEPT"), ("version", "1"), ("date", date.today().isoformat()),
                        ("copyright", "registrations: FlightGear AI traffic data, GPL-2.0-or-later"),
                        ("sim", "1")):
        ET.SubElement(meta, "info", name=name, value=value)
    aig = ET.SubElement(root, "aig")
    for title, regs, special in sorted(entries):
        element = ET.SubElement(aig, "l", t=title, r=",".join(regs))
        if special:
            element.set("s", "true")
    ET.indent(root, space="  ")
    args.out.write_text('<?xml version="1.0" encoding="UTF-8"?>\n' + ET.tostring(root, encoding="unicode") + "\n",
                        encoding="utf-8")
    regcodes = sum(len(regs) for _, regs, _ in entries)
    specials = sum(1 for e in entries if e[2])
    print(f"{len(entries)} titles ({specials} special) with {regcodes} regcodes written to {args.out}")


if __name__ == "__main__":
    main()
