#!/usr/bin/env python3
"""Writes a simulator installation with AI aircraft packages, as files on disk.

The liveries are real airframes (FlightGear's AI traffic: registration,
airline, IATA type code), laid out the way AI packages lay them out: one
folder per aircraft with an aircraft.cfg that names its type in [GENERAL]
and holds several [FLTSIM.N] sections; livery-only folders that name their
aircraft through base_container; the IVAO layout with the model in the folder
name. Keys are sometimes capitalised, values quoted or not, lines end in
comments. Packages stand in Community under the names the automatic search
looks for, with a user-aitraffic folder and packages the walk must skip; a
UserCfg.opt points at the packages folder; every package has a manifest.json.

Faults are seeded at realistic rates (every kind at least once): UTF-16 and
CP1252 files, missing, empty or invalid icao_airline, 4-letter airline codes
ending in X or C, duplicated keys, unknown and misspelt models, a file
without sections, section numbers above 10000 and beyond 32 bits, a missing
type designator, a missing IVAO texture folder, a title in two packages,
paths too deep to enter, folders of scenery publishers. seeded.json lists
what the scan must report, line by line, with <PACKAGES> for the packages
folder, and a sample of the liveries it must produce.

Deterministic for a given seed and size.

Usage: scripts/make_ai_install.py OUT [--size small|large] [--seed N] [--usercfg-path TEXT]
The committed small tree is made with --usercfg-path Packages; a program
folder that gets a copy writes the copy's absolute path into it.
"""
import argparse
import csv
import importlib.util
import json
import random
import shutil
import sys
import xml.etree.ElementTree as ET
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
TESTDATA = ROOT.parent / "shared" / "testdata" / "real"
AIRCRAFT_TSV = TESTDATA / "flightgear" / "aircraft.tsv"
DBASE = ROOT / "data" / "dbase.xml"
DEMO_TRAFFIC = ROOT / "data" / "rt_scenario_egtk.csv"
P = "<PACKAGES>"

SIZES = {  # liveries per package, sections per file
    "small": {"per_package": 90, "ivao": 24, "user": 12, "per_file": (3, 8)},
    "large": {"per_package": 5600, "ivao": 2200, "user": 600, "per_file": (3, 10)},
}
# Section faults and their rates; the small tree gets each at least once.
SECTION_FAULTS = [
    ("missing_airline", 0.020), ("empty_airline", 0.005), ("invalid_airline", 0.010),
    ("airline_x", 0.008), ("airline_c", 0.004), ("zzzz", 0.004), ("dup_title", 0.004),
    ("dup_atc_id", 0.004), ("missing_title", 0.004), ("bad_atc_id", 0.006),
    ("fictional", 0.003), ("stub", 0.003), ("rfo", 0.002),
]
FILE_ENCODINGS = [("utf16", 0.03), ("cp1252", 0.03)]
CONTAINERS = {"A20N": "Asobo_A320_NEO", "B78X": "Asobo_B787_10", "B748": "Asobo_B747_8i"}
INVALID_AIRLINES = ["QQX1", "Q9Q", "ABCDE", "XQZ"]


def load_iata_table():
    found = importlib.util.spec_from_file_location("dbase_records", ROOT / "scripts" / "make_dbase_records.py")
    module = importlib.util.module_from_spec(found)
    saved, sys.argv = sys.argv, sys.argv[:1]
    try:
        found.loader.exec_module(module)
    finally:
        sys.argv = saved
    return module.IATA_TO_ICAO


def read_dbase():
    root = ET.parse(DBASE).getroot()
    codes = lambda sec, attr: {c.strip() for e in root.find(sec) for c in e.get(attr, "").split(",")} - {""}
    return {
        "models": codes("aircrafts", "types"),
        "airlines": codes("ICAO_airlines", "codes"),
        "heavy": codes("heavy", "types"),
        "similar": [set(e.get("types", "").split(",")) - {""} for e in root.find("similar_types")],
        "fixes": {e.get("wro"): e.get("cor") for e in root.find("fixes")},
        "regs": {e.get("r") for e in root.find("dbase")},
    }


def reg_known(reg, db):
    tries = []
    if len(reg) >= 5 and not reg.startswith("N") and "-" not in reg:
        tries += [reg[:2] + "-" + reg[2:], reg[:1] + "-" + reg[1:]]
    return any(t in db["regs"] for t in tries + [reg])


class Tree:
    def __init__(self, out, size, seed):
        self.out, self.size = out, SIZES[size]
        self.small = size == "small"
        self.rng = random.Random(seed)
        self.seed = seed
        self.db = read_dbase()
        self.reports = {k: [] for k in ["InvalidAirlineCodes.txt", "InvalidAircraftCodes.txt", "Fixes.txt",
                                        "InvalidAircraftCfgFiles.txt", "IncompleFltsimSections.txt",
                                        "AircraftCfgWithNoFltsimSection.txt"]}
        self.log_lines, self.present, self.absent = [], [], []
        self.titles = set()
        self.made_pairs = set()  # (airline, model) of every livery the scan keeps
        self.pending_faults = [f for f, _ in SECTION_FAULTS] if self.small else []
        self.files = 0
        self.liveries = 0

    # -- rows -------------------------------------------------------------
    def load_rows(self):
        iata = load_iata_table()
        rows = []
        with open(AIRCRAFT_TSV, encoding="utf-8") as f:
            for row in csv.DictReader(f, delimiter="\t"):
                model = iata.get(row["actype"])
                if model in self.db["models"] and row["airline"] in self.db["airlines"]:
                    rows.append({"reg": row["registration"], "airline": row["airline"], "model": model,
                                 "cargo": row["flighttype"] == "cargo"})
        self.rows = rows

    def sample(self, count):
        return [self.rng.choice(self.rows) for _ in range(count)]

    # -- writing ----------------------------------------------------------
    def write(self, rel, lines, encoding="utf8"):
        path = self.out / "Packages" / rel
        path.parent.mkdir(parents=True, exist_ok=True)
        text = "\r\n".join(lines) + "\r\n"
        if encoding == "utf16":
            path.write_bytes(b"\xff\xfe" + text.encode("utf-16-le"))
        elif encoding == "cp1252":
            path.write_bytes(text.encode("cp1252"))
        else:
            path.write_bytes(text.encode("utf-8"))
        self.files += 1

    def manifest(self, package, title, creator):
        path = self.out / "Packages" / "Community" / package / "manifest.json"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(json.dumps({
            "dependencies": [], "content_type": "AIRCRAFT", "title": title, "manufacturer": "",
            "creator": creator, "package_version": "1.%d.%d" % (self.rng.randint(0, 9), self.rng.randint(0, 30)),
            "minimum_game_version": "1.37.19", "release_notes": {}}, indent=2) + "\n")

    def report(self, name, line):
        self.reports[name].append(line)

    # -- sections ---------------------------------------------------------
    def unique_title(self, text):
        title, n = text, 2
        while title in self.titles:
            title, n = f"{text} {n}", n + 1
        self.titles.add(title)
        return title

    def pick_fault(self):
        if self.pending_faults:
            return self.pending_faults.pop(0)
        for fault, rate in SECTION_FAULTS:
            if self.rng.random() < rate:
                return fault
        return None

    def unknown_reg(self):
        while True:
            reg = "N%d%s" % (self.rng.randint(100, 999), self.rng.choice("ABCDEFGHJK") * 2)
            if not reg_known(reg, self.db) and reg not in self.used_regs:
                self.used_regs.add(reg)
                return reg

    def section(self, number, row, model, prefix, cfg, head_case, extra_title="", clean=False):
        """Lines of one [FLTSIM.N] section and what the scan must make of it."""
        head = f"[{head_case}.{number}]"
        fault = None if clean else self.pick_fault()
        reg, airline = row["reg"], row["airline"]
        if fault in ("missing_airline", "empty_airline", "invalid_airline"):
            reg = self.unknown_reg()
        title = self.unique_title(f"{prefix} {model} {airline} {reg}{extra_title}")
        if fault == "fictional":
            title = self.unique_title(f"{prefix} Fictional {model} {airline} {reg}")
        if fault == "stub":
            self.titles.discard(title)
            base, n = f"{prefix} {model} {airline} {reg}", 2
            while base + "-STUB" in self.titles:
                base, n = f"{prefix} {model} {airline} {reg} {n}", n + 1
            title = base + "-STUB"
            self.titles.add(title)
        key = lambda k: k.capitalize() if self.rng.random() < 0.15 else k
        lines = [head, f'{key("title")} = "{title}" ; Variation name',
                 f'model = "" ; model folder', f'texture = "{airline}" ; texture folder']
        code = airline
        if fault == "invalid_airline":
            code = self.rng.choice(INVALID_AIRLINES)
        elif fault == "airline_x":
            code = airline + "X"
        elif fault == "airline_c":
            code = airline + "C"
        elif fault == "zzzz":
            code = "zzzz"
        elif fault == "rfo":
            code = "RFO"
        if fault == "empty_airline":
            lines.append('icao_airline = ""')
        elif fault != "missing_airline":
            # A comment may follow a quoted value only: behind a bare value
            # it would be read as part of the code.
            if self.rng.random() < 0.7:
                lines.append(f'{key("icao_airline")} = "{code}" ; airline code')
            else:
                lines.append(f"{key('icao_airline')} = {code}")
        atc = reg
        if fault == "bad_atc_id":
            atc = reg + "*"
        lines.append(f'atc_id = "{atc}" ; tail number')
        if fault == "dup_atc_id":
            lines.append(f'atc_id = "{reg}"')
        lines.append(f'atc_airline = "{airline}" ; airline name')
        lines.append(f'atc_parking_types = "{"RAMP,CARGO" if row["cargo"] else "GATE,RAMP"}" ; parking')
        if fault == "dup_title":
            lines.append(f'title = "{title} again"')
        if fault == "missing_title":
            lines = [l for l in lines if not l.lower().startswith("title")]
        lines += ["isAirTraffic = 1 ; Is the plane usable for air traffic", "isUserSelectable = 0", ""]

        path = f"{P}/{cfg}"
        incomplete = lambda text: self.report("IncompleFltsimSections.txt", text)
        made = {"title": title, "airline": code.upper()[:3], "model": model, "regcode": reg}
        if fault == "zzzz":
            made.update(airline="ZZZ", regcode="")
        if fault == "stub":
            made.update(airline="ZZZ", regcode="")
        if fault == "invalid_airline":
            self.report("InvalidAirlineCodes.txt", f"{code:<12} in {path}")
        if fault in ("missing_airline", "empty_airline", "invalid_airline"):
            incomplete(f"{path} {head} icao_airline is missing, or it has invalid info")
            if model in self.db["heavy"]:
                incomplete(f"'{title}' '{path}' has no airline and regcode not in dbase")
                made = None
            else:
                made["airline"] = "PVT"
        if fault == "bad_atc_id":
            incomplete(f"invalid atc_id={atc} in: {path}")
            made["regcode"] = ""
        if fault == "dup_atc_id":
            incomplete(f"{path}, {head}, has more than one atc_id key")
            made = None
        if fault == "dup_title":
            incomplete(f"{path} {head} has more than one title key")
            made = None
        if fault == "missing_title":
            incomplete(f"{path} {head} misses title")
            made = None
        if fault in ("fictional", "rfo"):
            made = None
        if made is None:
            self.absent.append(title)
        elif fault or self.rng.random() < 0.1:
            self.present.append(dict(made, rank=self.rank, known_reg=reg_known(made["regcode"], self.db)))
        if made is not None:
            self.liveries += 1
            self.made_pairs.add((made["airline"], model))
        return lines

    # -- files ------------------------------------------------------------
    def header(self, model, comment_extra="", designator=True):
        lines = ["; AI aircraft" + comment_extra, "[VERSION]", "major = 1", "minor = 0", "",
                 "[GENERAL]", 'atc_type = "TT:ATCCOM.ATC_NAME AIRBUS.0.text"', 'Category = "airplane"']
        if designator:
            form = self.rng.choice(['icao_type_designator = "{}"', "icao_type_designator = {}",
                                    'ICAO_Type_Designator = "{}" ; type'])
            lines.append(form.format(model))
        lines += ['icao_engine_type = "Jet"', "icao_engine_count = 2", "",
                  ";===================== FLTSIM =====================", ""]
        return lines

    def aircraft_file(self, package, prefix, folder, rows, model):
        cfg = f"Community/{package}/SimObjects/Airplanes/{folder}/aircraft.cfg"
        encoding = "utf8"
        for enc, rate in FILE_ENCODINGS:
            if self.rng.random() < rate or (self.small and enc not in self.encodings_done):
                encoding = enc
                break
        self.encodings_done.add(encoding)
        extra = {"utf16": " Færøerne", "cp1252": " créé à la main"}.get(encoding, "")
        lines = self.header(model, extra)
        for i, row in enumerate(rows):
            lines += self.section(i, row, model, prefix, cfg, self.rng.choice(["FLTSIM", "fltsim", "FltSim"]),
                                  extra if encoding != "utf8" else "")
        self.write(cfg, lines, encoding)

    def demo_rows(self):
        """A row for every model the demo traffic flies or parks, so that the
        demo finds a livery for each; made up (private) where no airframe of
        that type is in the data."""
        models = set()
        with open(DEMO_TRAFFIC, encoding="utf-8") as f:
            for line in f:
                fields = line.rstrip("\n").split(",")
                if fields[0] == "T" and len(fields) > 10 and fields[10]:
                    models.add(fields[10])
                elif fields[0] == "P" and len(fields) > 5 and fields[5]:
                    models.add(fields[5])
        rows = []
        for n, model in enumerate(sorted(models & self.db["models"])):
            real = [r for r in self.rows if r["model"] == model]
            rows.append(self.rng.choice(real) if real else
                        {"reg": "G-ZD%c%c" % (65 + n // 26, 65 + n % 26), "airline": "PVT", "model": model,
                         "cargo": False})
        return rows

    def demo_fleet(self):
        """A livery from the airline's own real fleet for every airline and
        model the demo traffic flies that the tree has neither of nor of a
        similar model: at the default depth the ladder takes nothing of
        another airline for a Large or Heavy model. The demo aircraft's own
        registration is left out, so that the airline's step is what finds
        it. Drawn from its own random stream, so that the rest of the tree
        stays as the seed makes it."""
        pairs = {}
        with open(DEMO_TRAFFIC, encoding="utf-8") as f:
            for line in f:
                fields = line.rstrip("\n").split(",")
                if fields[0] == "T" and len(fields) > 14 and fields[14] in self.db["airlines"]:
                    pairs.setdefault((fields[14], fields[10]), set()).add(fields[11])
        near = lambda model: set().union(*(g for g in self.db["similar"] if model in g), {model})
        chosen = []
        rng = random.Random(f"{self.seed} demo fleet")
        for (airline, model), regs in sorted(pairs.items()):
            if any((airline, m) in self.made_pairs for m in near(model)):
                continue
            fleet = [r for r in self.rows if r["airline"] == airline and r["reg"] not in regs]
            same = [r for r in fleet if r["model"] == model]
            similar = sorted((r for r in fleet if r["model"] in near(model)), key=lambda r: r["reg"])
            if same or similar:
                chosen.append(rng.choice(same or similar))
        saved, self.rng, self.rank = self.rng, rng, 1
        for row in chosen:
            cfg = (f"Community/aig-aitraffic-oci/SimObjects/Airplanes/"
                   f"AIG_{row['model']}_{row['airline']}/aircraft.cfg")
            self.write(cfg, self.header(row["model"]) +
                       self.section(0, row, row["model"], "AIG", cfg, "FLTSIM", clean=True))
        self.rng = saved

    def package(self, package, prefix, count, title, extra_rows=()):
        self.manifest(package, title, prefix + " team")
        rows = self.sample(count) + list(extra_rows)
        by_model = {}
        for row in rows:
            by_model.setdefault(row["model"], []).append(row)
        lo, hi = self.size["per_file"]
        for model in sorted(by_model):
            group, n = by_model[model], 0
            while group:
                take = self.rng.randint(lo, hi)
                chunk, group = group[:take], group[take:]
                self.aircraft_file(package, prefix, f"{prefix}_{model}_{n}", chunk, model)
                n += 1
        self.livery_only(package, prefix)
        self.file_faults(package, prefix)

    def livery_only(self, package, prefix):
        """Folders that name their aircraft through base_container only."""
        for model, container in CONTAINERS.items():
            rows = [r for r in self.sample(40) if r["model"] != model][:2]
            for i, row in enumerate(rows):
                row = dict(row, model=model)
                cfg = f"Community/{package}/SimObjects/Airplanes/{container}-LIVERY-{prefix}-{i}/aircraft.cfg"
                lines = ["[VERSION]", "major = 1", "minor = 0", "", "[VARIATION]",
                         f'base_container = "..\\{container}"', "",
                         ";===================== FLTSIM =====================", ""]
                lines += self.section(0, row, model, prefix, cfg, "FLTSIM")
                self.write(cfg, lines)

    def file_faults(self, package, prefix):
        base = f"Community/{package}/SimObjects/Airplanes"
        count = 1 if self.small else max(1, self.size["per_package"] // 1000)
        for n in range(count):
            row = self.rng.choice(self.rows)
            # An unknown type designator refuses the file.
            cfg = f"{base}/{prefix}_XY{n:02d}_unknown/aircraft.cfg"
            code = f"XY{n:02d}"
            lines = self.header(code)
            self.absent.append(self.unique_title(f"{prefix} {code} {row['airline']} {row['reg']}"))
            lines += [f"[FLTSIM.0]", f'title = "{self.absent[-1]}"', f'icao_airline = "{row["airline"]}"', ""]
            self.write(cfg, lines)
            self.report("InvalidAircraftCodes.txt", f"{code:<16} in {P}/{cfg}")
            # A misspelt one is corrected.
            cfg = f"{base}/{prefix}_A32N_{n}/aircraft.cfg"
            lines = self.header("A32N")
            for i, row in enumerate(self.sample(2)):
                lines += self.section(i, dict(row, model="A20N"), "A20N", prefix, cfg, "FLTSIM")
            self.write(cfg, lines)
            self.report("Fixes.txt", f"Model fix: A32N found in {P}/{cfg} changed into A20N")
            # A base aircraft without liveries.
            cfg = f"{base}/{prefix}_base_{n}/aircraft.cfg"
            self.write(cfg, self.header("A320"))
            self.report("AircraftCfgWithNoFltsimSection.txt", f"{P}/{cfg}")
            # A section number beyond 10000 refuses the file.
            cfg = f"{base}/{prefix}_bignum_{n}/aircraft.cfg"
            row = self.rng.choice(self.rows)
            title = self.unique_title(f"{prefix} {row['model']} {row['airline']} {row['reg']} big")
            self.absent.append(title)
            self.write(cfg, self.header(row["model"]) + ["[FLTSIM.10001]", f'title = "{title}"',
                                                         f'icao_airline = "{row["airline"]}"'])
            self.report("InvalidAircraftCfgFiles.txt",
                        f"{P}/{cfg} contains a [fltsim.x] section with a number < 0 or > 10000")
            # One beyond 32 bits is only logged.
            cfg = f"{base}/{prefix}_hugenum_{n}/aircraft.cfg"
            title = self.unique_title(f"{prefix} {row['model']} {row['airline']} {row['reg']} huge")
            self.absent.append(title)
            self.write(cfg, self.header(row["model"]) + ["[FLTSIM.0]", "title = x", "[FLTSIM.99999999999]",
                                                         f'title = "{title}"'])
            self.log_lines.append("fltsim num 99999999999 incorrect")
            # No type designator and no base container.
            cfg = f"{base}/{prefix}_nodesignator_{n}/aircraft.cfg"
            title = self.unique_title(f"{prefix} {row['airline']} {row['reg']} untyped")
            self.absent.append(title)
            self.write(cfg, self.header("", designator=False) + ["[FLTSIM.0]", f'title = "{title}"'])
            self.report("InvalidAircraftCfgFiles.txt",
                        f"Line icao_type_designator= is missing in [General] section of {P}/{cfg}")

    def ivao(self, count):
        package = "IVAO_MTL"
        self.manifest(package, "IVAO Multiplayer Traffic Library", "IVAO")
        by_model = {}
        for row in self.sample(count):
            by_model.setdefault(row["model"], []).append(row)
        for model in sorted(by_model):
            cfg = f"Community/{package}/SimObjects/Airplanes/IVAO_{model}/aircraft.cfg"
            path = f"{P}/{cfg}"
            lines = ["[VERSION]", "major = 1", "minor = 0", "", "[GENERAL]", 'Category = "airplane"', ""]
            for i, row in enumerate(by_model[model]):
                head = f"[fltsim.{i}]"
                airline, texture = row["airline"], f'{row["airline"]}{row["reg"].replace("-", "")}_{i}'
                fault = None
                if self.small and i == 0 and not self.ivao_faults:
                    fault = self.ivao_faults_todo.pop(0) if self.ivao_faults_todo else None
                elif self.rng.random() < 0.01:
                    fault = self.rng.choice(["texture", "airline"])
                if fault == "airline":
                    airline = "Q9Q"
                title = self.unique_title(f"{model} {airline} {row['reg']}")
                lines += [head, f'title={title}', f'texture={texture}', f'atc_id={row["reg"]}',
                          'atc_parking_types=GATE', "ui_variation=IVAO", ""]
                if fault != "texture":
                    tex = self.out / "Packages" / Path(cfg).parent / f"texture.{texture}"
                    tex.mkdir(parents=True, exist_ok=True)
                    (tex / "texture.cfg").write_text("[fltsim]\nfallback.1=..\\texture\n")
                if fault == "texture":
                    self.report("IncompleFltsimSections.txt", f"{path} {head} texture.{texture} does not exist")
                    self.absent.append(title)
                elif fault == "airline":
                    self.report("InvalidAirlineCodes.txt", f"{'Q9Q':<12} in {path}")
                    self.absent.append(title)
                else:
                    self.liveries += 1
                    self.made_pairs.add((airline, model))
                    if self.rng.random() < 0.2:
                        self.present.append({"title": title, "airline": airline, "model": model,
                                             "regcode": row["reg"], "rank": self.rank,
                                             "known_reg": reg_known(row["reg"], self.db)})
            self.write(cfg, lines)

    def user_folder(self):
        package = "user-aitraffic-custom"
        self.package(package, "USR", self.size["user"], "My own AI traffic")
        base = f"Community/{package}/SimObjects/Airplanes"
        # Folders the walk doesn't enter: scenery publishers' names, a path too deep.
        for folder in ["inibuilds-a310-ai", "flytampa-extras", "x" * 120 + "/" + "y" * 140]:
            row = self.rng.choice(self.rows)
            title = self.unique_title(f"USR {row['model']} {row['airline']} {row['reg']} skipped")
            self.absent.append(title)
            self.write(f"{base}/{folder}/aircraft.cfg", self.header(row["model"]) + [
                "[FLTSIM.0]", f'title = "{title}"', f'icao_airline = "{row["airline"]}"', ""])
        # A title that a higher package already has.
        cfg = f"{base}/USR_dup_title/aircraft.cfg"
        taken = self.first_aig_title
        self.write(cfg, self.header(taken["model"]) + [
            "[FLTSIM.0]", f'title = "{taken["title"]}"', f'icao_airline = "{taken["airline"]}"', ""])
        self.report("IncompleFltsimSections.txt",
                    f"{P}/{cfg} [FLTSIM.0] title '{taken['title']}' already exists")

    def never_scanned(self):
        """Packages the automatic search doesn't take."""
        for package in ["aig-aitraffic-oci_CVT_old", "user-aitraffic_CVT_backup", "fsdreamteam-gsx-pro",
                        "myairport-eham-amsterdam"]:
            self.manifest(package, package, "someone")
            if package.startswith("myairport"):
                continue
            row = self.rng.choice(self.rows)
            title = self.unique_title(f"{package} {row['model']} {row['airline']} {row['reg']}")
            self.absent.append(title)
            self.write(f"Community/{package}/SimObjects/Airplanes/X/aircraft.cfg", self.header(row["model"]) + [
                "[FLTSIM.0]", f'title = "{title}"', f'icao_airline = "{row["airline"]}"', ""])

    def official(self):
        cfg = "Official/OneStore/asobo-aircraft-c172sp-as1000/SimObjects/Airplanes/Asobo_C172sp_AS1000/aircraft.cfg"
        self.write(cfg, self.header("C172") + ["[FLTSIM.0]", 'title = "Cessna Skyhawk G1000 Asobo"',
                                               'atc_id = "ASXGS"', ""])

    def user_cfg(self, packages_text):
        path = self.out / "localappdata" / "Packages" / "Microsoft.FlightSimulator_8wekyb3d8bbwe" / "LocalCache"
        path.mkdir(parents=True, exist_ok=True)
        (path / "UserCfg.opt").write_text(
            "Version 63\n{Graphics\n\tVersion 1.1\n}\n{Sound\n\tMainVolume 1.0\n}\n"
            f'InstalledPackagesPath "{packages_text or (self.out / "Packages").resolve()}"\n')

    def build(self, packages_text):
        self.load_rows()
        self.used_regs = set()
        self.encodings_done = {"utf8"}
        self.ivao_faults, self.ivao_faults_todo = False, ["texture", "airline"]
        self.official()
        self.rank = 1
        self.package("aig-aitraffic-oci", "AIG", self.size["per_package"], "AIG AI Traffic OCI", self.demo_rows())
        self.first_aig_title = next(p for p in self.present if p["rank"] == 1 and "FlightSim" not in p["title"])
        self.rank = 2
        self.package("fsltl-traffic-base", "FSLTL", self.size["per_package"], "FSLTL Traffic Base")
        self.rank = 3
        self.package("justflight-aircraft-traffic-fleet", "JF", self.size["per_package"], "JF Traffic Fleet")
        self.rank = 4
        self.ivao(self.size["ivao"])
        self.rank = 5
        self.user_folder()
        self.never_scanned()
        self.demo_fleet()
        self.user_cfg(packages_text)
        seeded = {"reports": self.reports, "log": sorted(set(self.log_lines)), "present": self.present,
                  "absent": self.absent, "files": self.files, "liveries": self.liveries}
        (self.out / "seeded.json").write_text(json.dumps(seeded, indent=1, ensure_ascii=False) + "\n")
        return seeded


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("out", type=Path)
    parser.add_argument("--size", choices=SIZES, default="small")
    parser.add_argument("--seed", type=int, default=16)
    parser.add_argument("--usercfg-path", default="",
                        help="the InstalledPackagesPath written (default: OUT/Packages, absolute)")
    args = parser.parse_args()
    if args.out.exists():
        shutil.rmtree(args.out)
    args.out.mkdir(parents=True)
    seeded = Tree(args.out.resolve(), args.size, args.seed).build(args.usercfg_path)
    faults = sum(len(v) for v in seeded["reports"].values())
    print(f"{args.out}: {seeded['files']} files, about {seeded['liveries']} liveries, {faults} report lines seeded")


if __name__ == "__main__":
    main()
