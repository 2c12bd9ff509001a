#!/usr/bin/env bash
# Installs the Debian packages ZEPT builds with, when any is missing.
# Idempotent: with everything in place it prints nothing and touches nothing.
# Usage: scripts/setup.sh [--fuzz] [--plot] [--windows]
#   --fuzz adds clang and its libFuzzer runtime, --plot adds gnuplot for
#   scripts/plot_motion.py, --windows the MinGW-w64 cross compilers, Wine,
#   and what scripts/windows_deps.sh needs to build the libraries from
#   Debian's source packages (with deb-src entries for the configured
#   Debian mirror).
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config ccache
  libpugixml-dev libsodium-dev libcurl4-openssl-dev nlohmann-json3-dev
  libfmt-dev libzip-dev libgtest-dev libgmock-dev libbenchmark-dev
  python3  # the end-to-end checks and the demo scenario scripts
)
windows=0
for option in "$@"; do
  case "$option" in
    --fuzz) packages+=(clang libclang-rt-14-dev) ;;
    --plot) packages+=(gnuplot-nox) ;;
    --windows)
      windows=1
      packages+=(g++-mingw-w64-x86-64-posix libz-mingw-w64-dev wine64 wine dpkg-dev
                 autoconf automake libtool)
      ;;
  esac
done

sudo=""
[[ $(id -u) -ne 0 ]] && sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
need_update=0

# Source entries beside the binary ones of the configured Debian mirror
# (not the security archive, not other hosts), for apt-get source.
deb_src=/etc/apt/sources.list.d/zept-deb-src.sources
if [[ $windows = 1 && ! -f $deb_src ]]; then
  stanzas="$(awk -v RS= '/(^|\n)Types:[^\n]*deb/ && /URIs:[^\n]*debian/ && !/security/ {
      sub(/Types:[^\n]*/, "Types: deb-src"); print; print "" }' \
      /etc/apt/sources.list.d/*.sources 2>/dev/null || true)"
  if [[ -z "$stanzas" && -f /etc/apt/sources.list ]]; then
    stanzas="$(awk '$1 == "deb" && /debian/ && !/security/ {
        $1 = ""; sub(/^ /, ""); uri = $0
        if (match(uri, /^\[[^]]*\] /)) uri = substr(uri, RLENGTH + 1)
        split(uri, f, " "); comps = ""
        for (i = 3; i in f; i++) comps = comps " " f[i]
        printf "Types: deb-src\nURIs: %s\nSuites: %s\nComponents:%s\n\n", f[1], f[2], comps }' \
        /etc/apt/sources.list)"
  fi
  if [[ -z "$stanzas" ]]; then
    echo "setup: no Debian mirror configured to take source packages from" >&2
    exit 1
  fi
  echo "setup: adding deb-src entries ($deb_src)"
  printf '%s\n' "$stanzas" | $sudo tee "$deb_src" >/dev/null
  need_update=1
fi

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
[[ ${#missing[@]} -eq 0 && $need_update = 0 ]] && exit 0

$sudo apt-get update -qq
if [[ ${#missing[@]} -gt 0 ]]; then
  echo "setup: installing ${missing[*]}"
  $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
fi
echo "setup: done"
