#!/usr/bin/env bash
# Runs a Windows program of the cross build under Wine, headless: a private
# Wine prefix (made on first use), no Wine debug chatter, and the MinGW
# runtime DLLs on the search path.
set -euo pipefail

export WINEPREFIX="${ZEPT_WINEPREFIX:-$HOME/.cache/zept-windows-deps/wine}"
export WINEDEBUG="${WINEDEBUG:--all}"
# No Mono or Gecko install prompts: console programs need neither.
export WINEDLLOVERRIDES="${WINEDLLOVERRIDES:-mscoree,mshtml=}"
export WINEPATH="/usr/lib/gcc/x86_64-w64-mingw32/12-posix;/usr/x86_64-w64-mingw32/lib"
unset DISPLAY WAYLAND_DISPLAY

wine=$(command -v wine64 || command -v wine || true)
[[ -x /usr/lib/wine/wine64 ]] && wine=/usr/lib/wine/wine64
if [[ -z "$wine" ]]; then
  echo "wine_run: Wine is not installed (scripts/setup.sh --windows)" >&2
  exit 127
fi

if [[ ! -f "$WINEPREFIX/system.reg" ]]; then
  mkdir -p "$(dirname "$WINEPREFIX")"
  (
    flock 9
    if [[ ! -f "$WINEPREFIX/system.reg" ]]; then
      "$wine" wineboot --init >/dev/null 2>&1 || true
      wineserver_bin=$(command -v wineserver || echo /usr/lib/wine/wineserver)
      "$wineserver_bin" -w 2>/dev/null || true
    fi
  ) 9>"$WINEPREFIX.lock"
fi

# --wait-server: wait until the prefix's Wine server has ended.
if [[ "${1:-}" = --wait-server ]]; then
  wineserver_bin=$(command -v wineserver || echo /usr/lib/wine/wineserver)
  "$wineserver_bin" -w 2>/dev/null || true
  exit 0
fi

exec "$wine" "$@"
