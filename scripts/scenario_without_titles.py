#!/usr/bin/env python3
"""Writes a built-in simulator scenario without its own list of installed
titles, so that the simulator finds them through UserCfg.opt, as the real one
does.  Usage: scripts/scenario_without_titles.py SOURCE DEST"""
import json
import sys

scenario = json.load(open(sys.argv[1], encoding="utf-8"))
scenario.pop("installed", None)
json.dump(scenario, open(sys.argv[2], "w", encoding="utf-8"), indent=2)
