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
cp "$src/data/sim_scenario_demo.json" "$dest/sim_scenario.json"
for name in airports wktraffic archives; do
  cp "$build/input/$name.enc" "$dest/input/$name.enc"
done
# The archive's airport files, served locally until the download exists, and
# the handmade files that ship with the program (a user's own are kept).
rm -rf "$dest/server"
cp -r "$build/server" "$dest/server"
mkdir -p "$dest/airports/learned/stock"
for f in "$src"/data/airports/learned/stock/*.xml; do
  [[ -e "$dest/airports/learned/stock/$(basename "$f")" ]] || cp "$f" "$dest/airports/learned/stock/"
done
