# Sourced by run.sh and test.sh: installs the Debian packages that are missing, or says what to install.
# What each is for stands in the README.

run_packages=(
  g++ cmake ninja-build qt6-base-dev librsvg2-bin                      # to build
  libqt6svg6 qt6-qpa-plugins shared-mime-info adwaita-icon-theme       # to look right
  hicolor-icon-theme fonts-dejavu-core xdg-utils
)
display_packages=(xvfb xauth xdotool imagemagick)                      # a virtual display and its picture
test_packages=(libgtest-dev libgmock-dev libbenchmark-dev clang-format-14 strace)

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

# need_build PRESET [TARGET...]: configures once and builds.
need_build() {
  local preset=$1
  shift
  cmake --preset "$preset" >"build-$preset.log" 2>&1 || { cat "build-$preset.log" >&2; return 1; }
  rm -f "build-$preset.log"
  cmake --build --preset "$preset" ${1:+--target "$@"}
}
