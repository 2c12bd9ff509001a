#!/usr/bin/env python3
"""Writes the built-in simulator's demo scenario: the user aircraft and
airports of a base scenario, with an installed title for every model that a
traffic scenario flies or parks.

Usage: scripts/make_demo_sim_scenario.py BASE.json TRAFFIC.csv OUT.json

Until the livery catalogue is built from scanned packages, the program asks
the simulator for "<model code> livery"; the demo installation has exactly
those titles, besides the base scenario's own.
"""
import json
import sys


def traffic_models(path):
    models = set()
    with open(path, encoding="utf-8") as f:
        for line in f:
            fields = line.rstrip("\n").split(",")
            if fields[0] == "T" and len(fields) > 10 and fields[10]:
                models.add(fields[10])
            elif fields[0] == "P" and len(fields) > 5 and fields[5]:
                models.add(fields[5])
    return sorted(models)


def main():
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    base_path, traffic_path, out_path = sys.argv[1:]
    with open(base_path, encoding="utf-8") as f:
        scenario = json.load(f)
    installed = scenario.setdefault("installed", [])
    known = {t["title"] if isinstance(t, dict) else t for t in installed}
    for model in traffic_models(traffic_path):
        title = f"{model} livery"
        if title not in known:
            installed.append({"title": title, "model": model})
    with open(out_path, "w", encoding="utf-8") as f:
        json.dump(scenario, f, indent=2)
        f.write("\n")


if __name__ == "__main__":
    main()
