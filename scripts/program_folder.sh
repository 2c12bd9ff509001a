#!/usr/bin/env bash
# Prepares a program folder from a build: the program, its docs folder, the
# sealed data files and the built-in simulator's demo scenario.
#   scripts/program_folder.sh BUILD_DIR DEST
set -euo pipefail
src="$(cd "$(dirname "$0")/.." && pwd)"
build="$1"
dest="$2"
mkdir -p "$dest/docs" "$dest/input"
cp "$build/zept" "$dest/zept"
cp "$build/input/dbase.enc" "$dest/input/dbase.enc"
cp "$build/input/AIG-regcodes.enc" "$dest/input/AIG-regcodes.enc"
cp "$src/data/sim_scenario_demo.json" "$dest/sim_scenario.json"
