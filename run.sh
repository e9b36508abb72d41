#!/usr/bin/env bash
# Installs what is missing, builds Trevane and starts it. An argument is a workspace file to open.
# Without a display it starts a virtual one and writes a picture of the window to build/trevane.png.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
arguments=()
for argument in "$@"; do arguments+=("$(realpath -ms "$argument")"); done
cd "$root"
# shellcheck source=tools/setup.sh
. tools/setup.sh

need_packages "${run_packages[@]}"
# shellcheck disable=SC2046
need_build release $(program_only release) -- Trevane
program=build/release/bin/Trevane

if [ -n "${DISPLAY:-}" ] || [ -n "${WAYLAND_DISPLAY:-}" ]; then
  exec "$program" "${arguments[@]}"
fi

echo "No display here: starting the program in a virtual one."
need_packages "${display_packages[@]}"
picture=build/trevane.png
displayFile=$(mktemp)
Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp 3>"$displayFile" >/dev/null 2>&1 &
display=$!
trap 'kill "${running:-}" "$display" 2>/dev/null || true; rm -f "$displayFile"' EXIT
for _ in $(seq 100); do [ -s "$displayFile" ] && break; sleep 0.1; done
[ -s "$displayFile" ] || { echo "The virtual display did not start." >&2; exit 1; }
DISPLAY=:$(cat "$displayFile")
export DISPLAY

"$program" "${arguments[@]}" &
running=$!
window=$(timeout 30 xdotool search --sync --onlyvisible --class trevane | head -n 1) ||
  { echo "The window did not open within 30 seconds." >&2; exit 1; }
sleep 1  # the first complete picture
import -window "$window" "$picture"
echo "A picture of the window is in $picture."

if [ -t 0 ]; then
  echo "The program runs on display $DISPLAY until you press Ctrl+C."
  wait "$running"
else
  kill -TERM "$running"
  wait "$running" || true
fi
