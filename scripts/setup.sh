#!/usr/bin/env bash
# Installs the Debian packages ZEPT builds with, when any is missing.
# Idempotent: with everything in place it prints nothing and touches nothing.
# Usage: scripts/setup.sh [--fuzz] [--plot]
#   --fuzz adds clang and its libFuzzer runtime, --plot adds gnuplot for
#   scripts/plot_motion.py.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config ccache
  libpugixml-dev libsodium-dev libcurl4-openssl-dev nlohmann-json3-dev
  libfmt-dev libzip-dev libgtest-dev libgmock-dev libbenchmark-dev
  python3  # the end-to-end checks and the demo scenario scripts
)
for option in "$@"; do
  case "$option" in
    --fuzz) packages+=(clang libclang-rt-14-dev) ;;
    --plot) packages+=(gnuplot-nox) ;;
  esac
done

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

echo "setup: installing ${missing[*]}"
sudo=""
[[ $(id -u) -ne 0 ]] && sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
echo "setup: done"
