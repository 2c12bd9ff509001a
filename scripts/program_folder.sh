#!/usr/bin/env bash
# Prepares a program folder from a build: the program, its docs folder, the
# sealed data files, the built-in simulator's scenario and the demo simulator
# installation (AI packages and the simulator's UserCfg.opt) in simulator/.
# ZEPT and the built-in simulator find the installation through UserCfg.opt
# under the local application data folder: run with
# XDG_DATA_HOME=DEST/simulator/localappdata.
#   scripts/program_folder.sh BUILD_DIR DEST
set -euo pipefail
src="$(cd "$(dirname "$0")/.." && pwd)"
build="$1"
dest="$2"
mkdir -p "$dest/docs" "$dest/input"
cp "$build/zept" "$dest/zept"
cp "$build/input/dbase.enc" "$dest/input/dbase.enc"
cp "$build/input/AIG-regcodes.enc" "$dest/input/AIG-regcodes.enc"
# The scenario without its own list of titles: the installation says what is installed.
"$src/scripts/scenario_without_titles.py" "$src/data/sim_scenario_egtk.json" "$dest/sim_scenario.json"
rm -rf "$dest/simulator"
mkdir -p "$dest/simulator"
cp -r "$src/data/ai_install_small/Packages" "$src/data/ai_install_small/localappdata" "$dest/simulator/"
packages="$(cd "$dest/simulator/Packages" && pwd)"
sed -i "s|^InstalledPackagesPath .*|InstalledPackagesPath \"$packages\"|" \
  "$dest/simulator/localappdata/Packages/Microsoft.FlightSimulator_8wekyb3d8bbwe/LocalCache/UserCfg.opt"
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
