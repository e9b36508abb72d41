# Sourced by run.sh and test.sh: installs the Debian packages that are missing, or says what to install.
# What each is for stands in the README.

run_packages=(
  g++ cmake ninja-build qt6-base-dev librsvg2-bin                      # to build
  libssh-dev libcurl4-openssl-dev libssl-dev qtkeychain-qt6-dev
  libsecret-1-0                                                        # to keep passwords
  libqt6svg6 qt6-qpa-plugins shared-mime-info adwaita-icon-theme       # to look right
  hicolor-icon-theme fonts-dejavu-core xdg-utils
)
display_packages=(xvfb xauth xdotool imagemagick)                      # a virtual display and its picture
test_packages=(libgtest-dev libgmock-dev libbenchmark-dev clang-format-14 clang-tidy-14 python3 strace dbus-daemon)

need_packages() {
  local missing=() package
  for package in "$@"; do
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q '^install ok installed' || missing+=("$package")
  done
  [ ${#missing[@]} -eq 0 ] && return 0

  local sudo=()
  if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
      echo "Missing packages: ${missing[*]}" >&2
      echo "Install them as root (apt-get install ...) or install sudo, then start again." >&2
      return 1
    fi
    sudo=(sudo)
  fi
  echo "Installing: ${missing[*]}"
  "${sudo[@]}" apt-get update -qq &&
    "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
      "${missing[@]}" >/dev/null
}

# need_build PRESET [OPTION...] [-- TARGET...]: configures with the options and builds.
need_build() {
  local preset=$1 options=()
  shift
  while [ $# -gt 0 ] && [ "$1" != -- ]; do
    options+=("$1")
    shift
  done
  [ $# -eq 0 ] || shift
  cmake --preset "$preset" "${options[@]}" >"build-$preset.log" 2>&1 || { cat "build-$preset.log" >&2; return 1; }
  rm -f "build-$preset.log"
  cmake --build --preset "$preset" ${1:+--target "$@"}
}

# program_only PRESET: the options that leave out what only tests need, unless an earlier test.sh has built the tests
# in that folder: leaving them out then would delete them.
program_only() {
  local cache=build/$1/CMakeCache.txt
  if [ -f "$cache" ] && grep -q '^TREVANE_TESTS:BOOL=ON' "$cache" &&
     dpkg-query -W -f='${Status}' libgtest-dev 2>/dev/null | grep -q '^install ok installed'; then
    return 0
  fi
  echo -DTREVANE_TESTS=OFF -DTREVANE_BENCH=OFF
}
