#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test: as shipped, and under AddressSanitizer and
# UndefinedBehaviorSanitizer. "./test.sh quick" leaves the sanitizers out.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
# shellcheck source=tools/setup.sh
. tools/setup.sh

need_packages "${run_packages[@]}" "${display_packages[@]}" "${test_packages[@]}"

echo "== Format"
git ls-files '*.cpp' '*.h' '*.c' | xargs -r clang-format-14 --dry-run -Werror

presets=(release asan)
[ "${1:-}" = quick ] && presets=(release)
for preset in "${presets[@]}"; do
  echo "== Build: $preset"
  need_build "$preset"
  echo "== Tests: $preset"
  ctest --preset "$preset" -j "$(nproc)"
done
