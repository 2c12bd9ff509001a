#!/usr/bin/env bash
# Builds ZEPT and runs it from a prepared program folder (./run).
# Installs what is missing first (scripts/setup.sh).
# The data folder (parameters.xml) is $ZEPT_DATA_DIR if set, else
# $XDG_CONFIG_HOME/ZEPT, else ~/.config/ZEPT.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
cmake --preset default >/dev/null
cmake --build --preset default --target zept zept_bundled_data
mkdir -p run/docs run/input
cp build/default/zept run/zept
cp build/default/input/dbase.enc run/input/dbase.enc
cd run
exec ./zept "$@"
