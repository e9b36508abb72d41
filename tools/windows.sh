# Sourced by build-windows.sh and test.sh, after tools/setup.sh: what the Windows build needs beyond the Linux one.

windows_packages=(
  g++-mingw-w64-x86-64-posix ninja-build librsvg2-bin icoutils         # to build
  qt6-base-dev dpkg-dev xz-utils patch perl python3 zip                # to build Debian's source packages
)
windows_test_packages=(googletest wine64 fonts-dejavu-core openssl)    # to run it

# Everything that decides what the build of Qt gives. What the program does not use is left out.
qt_options=(
  -DCMAKE_BUILD_TYPE=Release -DBUILD_SHARED_LIBS=OFF
  -DQT_BUILD_EXAMPLES=OFF -DQT_BUILD_TESTS=OFF -DINPUT_opengl=no
  -DFEATURE_sql=OFF -DFEATURE_dbus=OFF -DFEATURE_printsupport=OFF -DFEATURE_concurrent=OFF -DFEATURE_network=OFF
  -DFEATURE_xml=OFF -DFEATURE_vulkan=OFF -DFEATURE_androiddeployqt=OFF
  # Direct2D stays: DirectWrite, which draws text well at every screen scale, needs it.
  -DFEATURE_tabletevent=OFF       # the source package lacks a header of it
  -DFEATURE_jpeg=OFF -DFEATURE_gif=OFF -DFEATURE_textodfwriter=OFF
  -DFEATURE_system_zlib=OFF -DFEATURE_system_pcre2=OFF -DFEATURE_system_png=OFF -DFEATURE_system_freetype=OFF
  -DFEATURE_system_harfbuzz=OFF
)

# The source must be of the version whose moc and rcc run here.
qt_version() { dpkg-query -W -f='${source:Version}' qt6-base-dev; }

# Where the finished Qt is kept: a folder for each version of the source, compiler and set of options.
qt_folder() {
  local key
  key=$({ qt_version; x86_64-w64-mingw32-g++-posix -dumpfullversion; printf '%s\n' "${qt_options[@]}"
          cat cmake/WindowsToolchain.cmake; } | sha256sum | cut -c1-16)
  echo "$(windows_cache)/qt-$(qt_version)-$key"
}

# Where what is built once is kept.
windows_cache() { echo "${TREVANE_CACHE:-${XDG_CACHE_HOME:-${HOME:-$PWD/build}/.cache}/trevane}"; }

# list_sources FOLDER gives apt, started as source_apt FOLDER COMMAND..., source entries made from the machine's own
# binary ones, in that folder: nothing of the machine's is changed, and no rights are needed.
list_sources() {
  local folder=$1 file
  mkdir -p "$folder/apt/parts" "$folder/apt/lists/partial"
  for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    [ -f "$file" ] && sed -n 's/^deb \(.*\)$/deb-src \1/p' "$file"
  done >"$folder/apt/parts/source.list"
  for file in /etc/apt/sources.list.d/*.sources; do
    if [ -f "$file" ]; then
      sed 's/^Types:.*/Types: deb-src/' "$file" >"$folder/apt/parts/$(basename "$file")"
    fi
  done
  cat >"$folder/apt/apt.conf" <<CONF
Dir::Etc::SourceList "/dev/null";
Dir::Etc::SourceParts "$folder/apt/parts";
Dir::State::Lists "$folder/apt/lists";
APT::Sandbox::User "";
CONF
  # A third party's entry that answers nothing is no matter.
  source_apt "$folder" apt-get -qq update || true
}
source_apt() { (cd "$1" && APT_CONFIG="$1/apt/apt.conf" "${@:2}"); }

# fetch_sources FOLDER PACKAGE=VERSION...: unpacks Debian's source packages there, with Debian's patches.
fetch_sources() {
  source_apt "$1" apt-get -qq source --only-source "${@:2}" >"$1/apt.log" 2>&1 || { cat "$1/apt.log" >&2; return 1; }
}

# seal FOLDER writes the checksums that is_whole FOLDER verifies.
seal() { (cd "$1" && find . -type f ! -name SHA256SUMS -print0 | sort -z | xargs -0 sha256sum >SHA256SUMS); }
is_whole() { [ -f "$1/SHA256SUMS" ] && (cd "$1" && sha256sum --quiet --status -c SHA256SUMS); }

# need_qt: a static Qt for Windows in $qt, built when the cache has none that is whole.
need_qt() {
  qt=$(qt_folder)
  if is_whole "$qt"; then
    echo "Qt for Windows: $(basename "$qt"), kept from an earlier build."
    return 0
  fi
  echo "Building Qt for Windows ($(basename "$qt")); this is done once and takes about 20 minutes on 2 cores."
  mkdir -p "$(dirname "$qt")"
  local work source
  work=$(mktemp -d "$qt.building.XXXXXX")
  if ! { list_sources "$work" && fetch_sources "$work" "qt6-base=$(qt_version)" && source=$(echo "$work"/qt6-base-*/) &&
         cmake -S "$source" -B "$work/build" -G Ninja -DCMAKE_TOOLCHAIN_FILE="$PWD/cmake/WindowsToolchain.cmake" \
               -DCMAKE_INSTALL_PREFIX="$qt" -DQT_HOST_PATH=/usr -DQT_HOST_PATH_CMAKE_DIR="$(qt_host_cmake)" \
               "${qt_options[@]}" >"$work/log" 2>&1 &&
         cmake --build "$work/build" >>"$work/log" 2>&1 && DESTDIR="$work/stage" cmake --install "$work/build" >>"$work/log" 2>&1; }; then
    [ -f "$work/log" ] && tail -n 60 "$work/log" >&2
    rm -rf "$work"
    echo "Qt for Windows could not be built." >&2
    return 1
  fi
  keep_qt_licences "$source" "$work/stage$qt/licences"
  seal "$work/stage$qt"
  rm -rf "$qt"
  mv "$work/stage$qt" "$qt"
  rm -rf "$work"
}

# The host's Qt says by itself where its CMake files are.
qt_host_cmake() { dirname "$(dirname "$(dpkg -L qt6-base-dev | grep '/Qt6Core/Qt6CoreConfig.cmake$')")"; }

# keep_qt_licences SOURCE TARGET: Qt's own licences and those of what is bundled with it and built here.
keep_qt_licences() {
  local source=$1 target=$2 file name
  mkdir -p "$target"
  cp "$source"/LICENSES/{LGPL-3.0-only,GPL-3.0-only,GPL-2.0-only,Qt-GPL-exception-1.0,BSD-3-Clause}.txt "$target/"
  find "$source/src/3rdparty" "$source/src/corelib" "$source/src/gui" -type f \
       \( -iname '*LICENSE*' -o -iname 'LICENCE*' -o -iname 'COPYING*' -o -name FTL.TXT \) ! -name '*.html' ! -name '*.cpp' |
    grep -vE '/(android|gradle|libjpeg|forkfd|vulkan|VulkanMemoryAllocator|xcb|icc|wasm)/' | while read -r file; do
      name=${file#"$source"}
      name=${name#/}
      cp "$file" "$target/$(echo "${name#src/}" | tr / -)"
    done
}

# check_windows_program PROGRAM: fails where it holds what a program that is given away should not, or lacks what it
# should have.
check_windows_program() {
  local program=$1 header place failed=0
  header=$(LC_ALL=C TZ=UTC x86_64-w64-mingw32-objdump -p "$program")
  has() { grep -qE "$2" <<<"$header" || { echo "$(basename "$program") $1." >&2; failed=1; }; }
  has "bears the time of its link" '^Time/Date[[:space:]]+Thu Jan  1 00:00:00 1970$'
  has "is not for Windows 10 and later" '^MajorSubsystemVersion[[:space:]]+10$'
  has "has no load configuration" '^Entry a 0*[1-9a-f][0-9a-f]* 00000070 Load Configuration Directory$'
  # objdump reports "no symbols" for a stripped program.
  x86_64-w64-mingw32-objdump -t "$program" | grep -q '^no symbols$' || { echo "$(basename "$program") is not stripped." >&2; failed=1; }
  for place in "$PWD" "$qt" "$ssh_libraries" "$curl_libraries" "${HOME:-/root}/"; do
    ! grep -qaF -e "$place" "$program" || { echo "$(basename "$program") names a folder of this machine: $place" >&2; failed=1; }
  done
  return "$failed"
}

# collect_relink FOLDER: what the licence of Qt and libssh asks for: the objects that Trevane.exe is made of beside the
# libraries, and a script that links them with others.
collect_relink() {
  local folder=$1
  tools/collect-relink.py build/windows "$qt" "$ssh_libraries" "$curl_libraries" "$folder"
  cp tools/finish-windows-program.py "$folder/"
  sed -e "s/@QT_VERSION@/$(qt_version)/; s/@LIBSSH_VERSION@/$(cat "$ssh_libraries/libssh-version")/" \
      -e "s/@OPENSSL_VERSION@/$(cat "$ssh_libraries/openssl-version")/; s/\$/\r/" \
      resources/windows/relink/README.txt >"$folder/README.txt"
  printf '%s\r\n' "${qt_options[@]}" >"$folder/qt-options.txt"
  printf '%s\r\n' "${libssh_options[@]}" >"$folder/libssh-options.txt"
  printf '%s\r\n' "${openssl_options[@]}" >"$folder/openssl-options.txt"
}

# need_windows_build [TARGET...]: configures and builds in build/windows, with the tests only when no target is named.
need_windows_build() {
  local tests=OFF
  [ $# -eq 0 ] && tests=ON
  cmake --preset windows -DCMAKE_PREFIX_PATH="$qt" -DTREVANE_SSH_LIBRARIES="$ssh_libraries" \
        -DTREVANE_CURL_LIBRARIES="$curl_libraries" -DQT_HOST_PATH=/usr \
        -DQT_HOST_PATH_CMAKE_DIR="$(qt_host_cmake)" -DTREVANE_TESTS=$tests >build-windows.log 2>&1 ||
    { cat build-windows.log >&2; return 1; }
  rm -f build-windows.log
  cmake --build --preset windows ${1:+--target "$@"}
}

# test_under_wine [CTEST ARGUMENT...]: runs all tests of build/windows in a virtual display, with a Wine of their own.
test_under_wine() {
  local prefix=$PWD/build/wine disk servers result=0
  rm -rf "$prefix"
  mkdir -p "$prefix"
  export TREVANE_WINEPREFIX=$prefix
  # A volume that the tests can fill, where this user may mount one.
  disk=$(mktemp -d)
  if mount -t tmpfs -o size=256k,mode=700 trevane "$disk" 2>/dev/null; then
    export TREVANE_SMALL_DISK=Z:$disk
  fi
  # Controllers to connect to.
  servers=$(mktemp -d)
  trap stop_loopback_servers EXIT
  start_loopback_servers "$servers"
  wine_version=$(tools/run-windows.sh --version)
  echo "Under $wine_version."
  xvfb-run -a -s "-screen 0 1280x800x24" bash -c '
    tools/run-windows.sh wineboot --init >/dev/null 2>&1
    # Of Wine the shares are folders of the prefix: this machine shares its drive, as every Windows does.
    mkdir -p "$TREVANE_WINEPREFIX/dosdevices/unc/localhost"
    ln -sfn ../../c: "$TREVANE_WINEPREFIX/dosdevices/unc/localhost/C\$"
    exec ctest --preset windows -j "$(nproc)" "$@"' bash "$@" || result=$?
  WINEPREFIX=$prefix /usr/lib/wine/wineserver64 -k || true
  stop_loopback_servers
  rm -rf "$servers"
  if [ -n "${TREVANE_SMALL_DISK:-}" ]; then
    umount "$disk"
  fi
  rmdir "$disk"
  return $result
}
