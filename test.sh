#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test as shipped, and all but the slowest under AddressSanitizer and
# UndefinedBehaviorSanitizer. "./test.sh quick" leaves the sanitizers out, and runs clang-tidy on what differs from
# origin/main; "./test.sh windows" builds the tests for Windows and runs them under Wine.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
# shellcheck source=tools/setup.sh
. tools/setup.sh
# shellcheck source=tools/ssh-servers.sh
. tools/ssh-servers.sh
# shellcheck source=tools/ftp-servers.sh
. tools/ftp-servers.sh

need_packages "${run_packages[@]}" "${display_packages[@]}" "${test_packages[@]}"
need_ssh_servers
need_ftp_servers

if [ "${1:-}" = windows ]; then
  # shellcheck source=tools/windows.sh
  . tools/windows.sh
  # shellcheck source=tools/windows-network.sh
  . tools/windows-network.sh
  # shellcheck source=tools/loopback-servers.sh
  . tools/loopback-servers.sh
  need_packages "${windows_packages[@]}" "${windows_test_packages[@]}"
  need_qt
  need_ssh_libraries
  need_curl
  echo "== Build: windows"
  need_windows_build
  echo "== Tests: windows"
  # Wine takes many times as long to wake a thread. The tests of engine/remote run here, too. Names and trees are the
  # same over TLS, and would take longer than all the rest of it; so would the vices of servers, which are no matter of
  # the system.
  GTEST_FILTER='-*OnThreads:*FtpVicesTest.*:*ConformanceNames.*/LoopbackFtps:*ConformanceTrees.*/LoopbackFtps' test_under_wine
  exit
fi

echo "== Format"
git ls-files '*.cpp' '*.h' '*.c' | xargs -r clang-format-14 --dry-run -Werror

presets=(release asan)
[ "${1:-}" = quick ] && presets=(release)
for preset in "${presets[@]}"; do
  echo "== Build: $preset"
  # The sanitizers' preset has no benchmarks of its own.
  options=(-DTREVANE_TESTS=ON)
  [ "$preset" = release ] && options+=(-DTREVANE_BENCH=ON)
  need_build "$preset" "${options[@]}"
  echo "== Tests: $preset"
  # The failing and the lying file systems take minutes over threads, and two of the servers over TLS are those of other
  # beds with other options: they run there without the sanitizers.
  without=()
  if [ "$preset" = asan ]; then
    export GTEST_FILTER='-*TransferFaultTest.*OnThreads:*LyingProviderTest.*OnThreads:*LyingDestinationTest.*OnThreads'
    without=(-E '^providers_test\.(FtpVsftpdReuse|FtpProFtpdTls)$')
  fi
  # Many tests wait for another process most of the time.
  ctest --preset "$preset" -j $((2 * $(nproc))) "${without[@]}"
done

if [ "${1:-}" = quick ]; then
  echo "== clang-tidy"
  if base=$(git merge-base HEAD origin/main 2>/dev/null); then
    git diff --name-only --diff-filter=d "$base" -- '*.cpp' '*.h' | xargs -r tools/tidy.py build/release
  else
    echo "There is no origin/main to compare with; tools/tidy.py build/release reads everything."
  fi
fi
