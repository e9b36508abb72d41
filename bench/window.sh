#!/usr/bin/env bash
# The whole process on a virtual display: when the window shows its first picture and when it is complete, memory, processor
# time while idle, and how many calls of the file system a folder of 10,000 files costs.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
build=build/release

for needed in xvfb-run strace; do
  command -v "$needed" >/dev/null || { echo "This needs $needed." >&2; exit 1; }
done
for program in "$build/bin/Trevane" "$build/bench/app/first_picture" "$build/bench/app/window_bench"; do
  [ -x "$program" ] || { echo "Build the release preset first: $program is missing." >&2; exit 1; }
done

echo "Start-up, five times:"
for _ in 1 2 3 4 5; do
  xvfb-run -a "$build/bench/app/first_picture" "$build/bin/Trevane" 2>/dev/null
done

# The same run with and without showing the folder: the difference is what showing it costs.
calls() {
  local trace
  trace=$(mktemp)
  xvfb-run -a strace -f -qq -o "$trace" -e trace=%file,%desc,getdents64 \
    "$build/bench/app/window_bench" --show "$1" >/dev/null 2>&1
  grep -cE '(statx|newfstatat|openat|getdents64|access|readlink|lstat|stat|open)\(' "$trace"
  rm -f "$trace"
}
without=$(calls empty)
with=$(calls files10000)
echo "Calls of the file system to show 10,000 files: $((with - without)), $(
  awk -v calls=$((with - without)) 'BEGIN { printf "%.3f", calls / 10000 }') an entry"
