#!/usr/bin/env bash
# Assembles the Windows release folder of a cross build:
#   BUILD_DIR/release/  zept.exe, the DLLs it needs (the MinGW runtime among
#                       them), docs/, input/ and the built-in simulator's
#                       demo scenario.
# The DLLs are found by following the import tables from zept.exe; the
# system's own DLLs (KERNEL32, WS2_32, ...) are not in the search folders and
# stay behind.
#   scripts/windows_release.sh BUILD_DIR
set -euo pipefail
src="$(cd "$(dirname "$0")/.." && pwd)"
build="$(cd "$1" && pwd)"
release="$build/release"
triplet=x86_64-w64-mingw32
deps="$(sed -n 's/^ZEPT_WINDOWS_DEPS:PATH=//p' "$build/CMakeCache.txt" 2>/dev/null || true)"
search=("/usr/lib/gcc/$triplet/12-posix" "/usr/$triplet/lib" ${deps:+"$deps/bin"})

rm -rf "$release"
mkdir -p "$release/docs" "$release/input"
cp "$build/zept.exe" "$release/"
cp "$build"/input/*.enc "$release/input/"
cp "$src/README.md" "$release/docs/"
# The built-in simulator's demo scenario, without its own list of titles:
# like the real simulator it finds the installed ones through UserCfg.opt.
"$src/scripts/scenario_without_titles.py" "$src/data/sim_scenario_egtk.json" "$release/sim_scenario.json"

declare -A copied
pending=("$release/zept.exe")
while [[ ${#pending[@]} -gt 0 ]]; do
  file="${pending[0]}"
  pending=("${pending[@]:1}")
  while read -r dll; do
    key="${dll,,}"
    [[ -n "${copied[$key]:-}" ]] && continue
    copied[$key]=1
    for dir in "${search[@]}"; do
      found="$(find "$dir" -maxdepth 1 -iname "$dll" -print -quit 2>/dev/null)"
      if [[ -n "$found" ]]; then
        cp "$found" "$release/"
        pending+=("$release/$(basename "$found")")
        break
      fi
    done
  done < <("$triplet-objdump" -p "$file" | sed -n 's/^\s*DLL Name: //p')
done
