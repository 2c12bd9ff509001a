#!/usr/bin/env bash
# Runs the Windows release folder under Wine, as a user would run it.
#   tests/e2e/run_wine.sh production WINDOWS_BUILD_DIR
#     zept.exe --production: reads the sealed data and ends with exit code 0;
#     its settings land in the roaming application data folder of Windows.
#   tests/e2e/run_wine.sh main-job WINDOWS_BUILD_DIR [LINUX_BUILD_DIR]
#     zept.exe on the road "RT App" with the built-in simulator, fed by the
#     Linux stand-in application on loopback for a minute. The demo AI
#     installation stands where the simulator's Store edition has it, found
#     through its UserCfg.opt under the local application data folder.
#     Aircraft are created, status lines are printed, the recording lands
#     under its non-ASCII name, a second instance is refused, and Ctrl-C
#     closes it cleanly.
#   tests/e2e/run_wine.sh simconnect WINDOWS_BUILD_DIR [LINUX_BUILD_DIR]
#     The same job without --demo, with the built-in simulator's facade
#     library copied beside zept.exe as SimConnect.dll: the program finds it
#     there as it finds the simulator's own on a user's machine, and talks to
#     the simulator through its C functions only.
set -euo pipefail
mode="$1"

# The main job listens on the fixed ports of the RealTraffic application,
# which other runs on this machine may hold: it runs in a network namespace
# of its own (loopback only) when one can be made. Wine's sockets live in
# its wineserver, so the prefix's server must start inside the namespace.
if [ "$mode" != production ] && [ -z "${ZEPT_WINE_NETNS:-}" ] &&
   unshare --net true 2>/dev/null; then
  "$(dirname "$0")/../../cmake/wine_run.sh" --wait-server
  exec env ZEPT_WINE_NETNS=1 unshare --net "$0" "$@"
fi
if [ -n "${ZEPT_WINE_NETNS:-}" ]; then
  ip link set lo up
fi
src="$(cd "$(dirname "$0")/../.." && pwd)"
build="$(cd "$2" && pwd)"
linux_build="${3:-$src/build/default}"
wine_run="$src/cmake/wine_run.sh"
work="$(mktemp -d /tmp/zept_wine.XXXXXX)"
standin_pid=""
zept_pid=""
failures=0

cleanup() {
  [ -n "$zept_pid" ] && kill -KILL "$zept_pid" 2>/dev/null || true
  [ -n "$standin_pid" ] && kill -TERM "$standin_pid" 2>/dev/null || true
  wait 2>/dev/null || true
  if [ "${keep:-0}" = 1 ]; then echo "outputs kept in $work"; else rm -rf "$work"; fi
}
trap cleanup EXIT

check() {  # condition text, then the command that must succeed
  local text="$1"
  shift
  if "$@"; then
    echo "ok    $text"
  else
    echo "FAIL  $text"
    failures=$((failures + 1))
  fi
}

has() { grep -qF -- "$2" "$1"; }

if [ ! -x "$build/release/zept.exe" ]; then
  echo "no release folder in $build (cmake --build --preset windows)"
  exit 1
fi
cp -r "$build/release" "$work/program"

# The Windows data folder of the private Wine prefix, emptied so that every
# run starts from the default parameters.
"$wine_run" cmd /c exit >/dev/null 2>&1 || true
prefix="${ZEPT_WINEPREFIX:-$HOME/.cache/zept-windows-deps/wine}"
app_data="$(find "$prefix/drive_c/users" -maxdepth 3 -type d -path '*/AppData/Roaming' | head -1)"
data_folder="$app_data/ZEPT"
rm -rf "$data_folder"
# Where the simulator's Store edition keeps its settings and packages; no
# other test of the prefix may find them.
store_cache="$(dirname "$app_data")/Local/Packages/Microsoft.FlightSimulator_8wekyb3d8bbwe/LocalCache"
rm -rf "$(dirname "$store_cache")"
trap 'rm -rf "$(dirname "$store_cache")"; cleanup' EXIT

cd "$work/program"

if [ "$mode" = production ]; then
  status=0
  timeout 300 "$wine_run" zept.exe --production >"$work/console.txt" 2>&1 || status=$?
  check "zept.exe --production ends with exit code 0 (was $status)" test "$status" = 0
  check "the log names the command line job" has Log.txt "Command line job:"
  check "the log's head line names the program" has Log.txt "ZEPT version"
  check "the working folders were made" test -d output/errors
  check "the settings are in the roaming application data folder" test -f "$data_folder/parameters.xml"
  check "no plain form of the sealed data is left" test ! -e input/dbase.xml
  if [ $failures -gt 0 ]; then
    keep=1
    cat "$work/console.txt" Log.txt 2>/dev/null | tail -40
    exit 1
  fi
  exit 0
fi

case "$mode" in
  main-job | simconnect) ;;
  *) echo "unknown mode $mode"; exit 2 ;;
esac
standin="$linux_build/rt_app_standin"
if [ ! -x "$standin" ]; then
  echo "the Linux stand-in application is missing: $standin (cmake --build --preset default)"
  exit 1
fi

# The demo installation, laid out as the simulator lays out its own.
mkdir -p "$store_cache"
cp -r "$src/data/ai_install_small/Packages" "$store_cache/"
windows_user="$(basename "$(dirname "$(dirname "$app_data")")")"
printf 'Version 63\r\nInstalledPackagesPath "C:\\users\\%s\\AppData\\Local\\Packages\\%s\\LocalCache\\Packages"\r\n' \
  "$windows_user" Microsoft.FlightSimulator_8wekyb3d8bbwe >"$store_cache/UserCfg.opt"

if [ "$mode" = simconnect ]; then
  facade="$build/facade/SimConnect.dll"
  if [ ! -f "$facade" ]; then
    echo "no facade library $facade (cmake --build --preset windows)"
    exit 1
  fi
  cp "$facade" .
  # The simulator behind the library writes its own recording and log.
  recording=motion.csv
  export ZEPT_SIM_RECORD="$recording" ZEPT_SIM_LOG=SimLog.txt
  words=(--rt-app --status 2 --duration 240)
else
  # A file name outside any single code page: the command line must reach
  # the program as it was typed.
  recording="motion Jörg ✈ Ωμέγα.csv"
  words=(--rt-app --demo --status 2 --duration 240 --record "$recording")
fi

# The scenario's last minute and a half: live reports, then silence.
"$standin" --scenario "$src/data/rt_scenario_egtk.csv" --start 190 --no-loop \
  >"$work/standin.txt" 2>&1 &
standin_pid=$!

"$wine_run" zept.exe "${words[@]}" >"$work/console.txt" 2>&1 &
zept_pid=$!

if [ "$mode" = main-job ]; then
  # A second copy of the program is refused at once by the named mutex.
  sleep 15
  status=0
  timeout 60 "$wine_run" zept.exe --production >"$work/second.txt" 2>&1 || status=$?
  check "a second zept.exe is refused with exit code -1 (was $status)" test "$status" = 255
  sleep 45
else
  sleep 60
fi
check "zept.exe still runs after a minute" kill -0 "$zept_pid"

# Ctrl-C, as a user at the console would: Wine hands it to the console
# control handler.
kill -INT "$zept_pid" 2>/dev/null || true
for _ in $(seq 1 30); do
  kill -0 "$zept_pid" 2>/dev/null || break
  sleep 1
done
if kill -0 "$zept_pid" 2>/dev/null; then
  check "zept.exe ends within 30 s of Ctrl-C" false
else
  status=0
  wait "$zept_pid" || status=$?
  zept_pid=""
  check "zept.exe ends with exit code 0 after Ctrl-C (was $status)" test "$status" = 0
fi

statuses="$(grep -c ' | created ' "$work/console.txt" || true)"
check "status lines were printed ($statuses)" test "$statuses" -ge 10
created=0
if [[ "$(grep ' | created ' "$work/console.txt" | tail -1)" =~ created\ ([0-9]+) ]]; then
  created="${BASH_REMATCH[1]}"
fi
check "aircraft were created in the built-in simulator ($created)" test "$created" -gt 0
check "the RealTraffic application was connected" has Log.txt "RealTraffic connected"
check "the installation was found through UserCfg.opt" has Log.txt "LocalCache\\Packages"
check "the recording is under its own name" test -s "$recording"
if [ "$mode" = simconnect ]; then
  check "the log names SimConnect.dll beside zept.exe as the library loaded" \
    grep -qE 'SimConnect library loaded: .*\\program\\SimConnect\.dll' Log.txt
  check "the simulator behind the library kept its own log" test -s SimLog.txt
fi
for line in "stop requested from the console" "Exiting: USER CLOSED SIM" \
            "Shutdown cleanup completed; posting MSG_EXIT"; do
  check "the log has \"$line\"" has Log.txt "$line"
done

if [ $failures -gt 0 ]; then
  keep=1
  tail -20 "$work/console.txt"
  exit 1
fi
