#!/usr/bin/env bash
# Runs a Windows program under Wine, in a prefix of its own that has nothing of the user's in it.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=${TREVANE_WINEPREFIX:-$root/build/wine} WINEDEBUG=${WINEDEBUG:--all}
# No helpers of Wine's that would like to fetch something or to put files onto the desktop.
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml,winemenubuilder.exe=}
exec /usr/lib/wine/wine64 "$@"
