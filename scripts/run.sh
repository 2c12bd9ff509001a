#!/usr/bin/env bash
# Builds ZEPT and runs its main job from a prepared program folder (./run):
# the built-in simulator (the user aircraft starts at Oxford Kidlington) with the
# stand-in RealTraffic application replaying the bundled traffic scenario on
# loopback. Installs what is missing first (scripts/setup.sh).
#
#   scripts/run.sh [--no-standin] [--sim NAME] [ZEPT WORDS ...]
#
# ZEPT's words (see README): --duration S, --status S, --record FILE,
# --rt-app, --production. By default the run takes the road "RT App" for this
# run only and records every position the simulator is sent to run/motion.csv.
# --no-standin starts no stand-in and passes only the given words, so that
# the stored choices hold, as with the real services.
# --sim NAME flies the built-in simulator's scenario data/sim_scenario_NAME.json
# (phnl: parked at a Honolulu gate; phnl_circuit: a circuit from the gate;
# phnl_phog: a flight to Kahului; bikf: parked at a Keflavik gate); there the
# stand-in answers parked requests from the week of data/parked/<ICAO>.csv.
# The data folder (parameters.xml) is $ZEPT_DATA_DIR if set, else
# $XDG_CONFIG_HOME/ZEPT, else ~/.config/ZEPT.
set -euo pipefail
cd "$(dirname "$0")/.."
standin=1
sim=""
while [[ $# -gt 0 ]]; do
  case "$1" in
    --no-standin) standin=0; shift ;;
    --sim) sim="${2:?--sim needs a scenario name}"; shift 2 ;;
    *) break ;;
  esac
done
if [[ -n "$sim" && ! -f "data/sim_scenario_$sim.json" ]]; then
  echo "run: no scenario data/sim_scenario_$sim.json" >&2
  exit 2
fi
scripts/setup.sh
cmake --preset default >/dev/null
cmake --build --preset default --target zept rt_app_standin zept_bundled_data
scripts/program_folder.sh build/default run

words=("$@")
standin_pid=""
if [[ $standin == 1 ]]; then
  # In a session of its own, so that Ctrl-C reaches ZEPT alone: ZEPT closes
  # as the user asked rather than because the application went away.
  parked=()
  [[ "$sim" == phnl* ]] && parked=(--parked data/parked/PHNL.csv)
  [[ "$sim" == bikf* ]] && parked=(--parked data/parked/BIKF.csv)
  setsid build/default/rt_app_standin --scenario data/rt_scenario_egtk.csv "${parked[@]}" \
    >run/standin.txt 2>&1 &
  standin_pid=$!
  trap '[[ -n "$standin_pid" ]] && kill "$standin_pid" 2>/dev/null; wait 2>/dev/null || true' EXIT
  words=(--rt-app --record motion.csv "$@")
  echo "run: the stand-in RealTraffic application replays data/rt_scenario_egtk.csv (run/standin.txt)"
fi
cd run
# The demo simulator installation in run/simulator (scripts/program_folder.sh).
export XDG_DATA_HOME="$PWD/simulator/localappdata"
[[ -n "$sim" ]] && export ZEPT_SIM_SCENARIO="sim_scenario_$sim.json"
status=0
./zept "${words[@]}" || status=$?
if [[ $standin == 1 && -f motion.csv ]]; then
  echo "run: positions recorded in run/motion.csv;" \
       "draw them with: scripts/plot_motion.py run/motion.csv run/plots"
fi
exit $status
