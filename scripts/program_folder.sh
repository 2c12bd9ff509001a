#!/usr/bin/env bash
# Prepares a program folder from a build: the program, its docs folder, the
# sealed data files, the built-in simulator's scenarios and the demo simulator
# installation (AI packages and the simulator's UserCfg.opt, the scenery's
# airport files and the scripted user flights) in simulator/.
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
rm -rf "$dest/simulator"
mkdir -p "$dest/simulator/scenery" "$dest/simulator/user_paths"
# The simulator's own scenery (the stands it knows) and the scripted user flights.
cp "$src"/data/airports/archive/stock/*.xml "$dest/simulator/scenery/"
cp "$src"/data/user_paths/*.json "$dest/simulator/user_paths/"
# The scenarios without their own list of titles (the installation says what
# is installed), their files found in simulator/: sim_scenario.json is the
# EGTK one, sim_scenario_<name>.json each of data/sim_scenario_<name>.json.
python3 - "$src/data" "$dest" <<'PY'
import glob, json, os, sys
data, dest = sys.argv[1], sys.argv[2]
for path in sorted(glob.glob(os.path.join(data, "sim_scenario_*.json"))):
    scenario = json.load(open(path, encoding="utf-8"))
    scenario.pop("installed", None)
    if "scenery" in scenario:
        scenario["scenery"] = "simulator/scenery"
    user = scenario.get("user", {})
    if "path_file" in user:
        user["path_file"] = "simulator/user_paths/" + os.path.basename(user["path_file"])
    name = os.path.basename(path)
    for target in [name] + (["sim_scenario.json"] if name == "sim_scenario_egtk.json" else []):
        json.dump(scenario, open(os.path.join(dest, target), "w", encoding="utf-8"), indent=2)
PY
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
