# Sourced by tools/ssh-servers.sh and tools/ftp-servers.sh: servers and clients that tests start. They are unpacked from
# Debian's packages into the cache and never installed, so that no server runs on this machine when no test does.
#
# Of each KIND there are three arrays: KIND_server_packages, the first of which gives the folder its version;
# KIND_server_programs, those that want libraries beside the C library's, and are started by tools/run-unpacked.sh;
# KIND_server_sources, the files that say what the folder holds. KIND_servers_finish FOLDER does the rest.

# unpacked_candidate PACKAGE: the version that apt would fetch.
unpacked_candidate() { apt-cache policy "$1" | sed -n 's/^ *Candidate: \([0-9]*:\)\{0,1\}//p' | grep -v none; }

# unpacked_folder KIND
unpacked_folder() {
  local -n of_packages=$1_server_packages of_sources=$1_server_sources
  local version key
  version=$(unpacked_candidate "${of_packages[0]}") || return 1
  key=$(cat tools/unpacked-servers.sh tools/run-unpacked.sh "${of_sources[@]}" | sha256sum | cut -c1-8)
  echo "${TREVANE_CACHE:-${XDG_CACHE_HOME:-${HOME:-$PWD/build}/.cache}/trevane}/$1-servers-$version-$key"
}

# unpacked_missing PACKAGE...: what else of Debian they need and this machine has not. Each is asked for alone: servers
# of one kind exclude each other, though their files do not.
unpacked_missing() {
  local package
  for package in "$@"; do
    apt-get -s install --no-install-recommends "$package" | sed -n 's/^Inst \([^ ]*\) .*/\1/p'
  done
}

# unpack_servers KIND FOLDER: needs no rights, only apt's lists.
unpack_servers() {
  local -n in_packages=$1_server_packages in_programs=$1_server_programs
  local kind=$1 folder=$2 package program
  mkdir -p "$folder/packages" "$folder/root" "$folder/programs"
  (cd "$folder/packages" && { printf '%s\n' "${in_packages[@]}"; unpacked_missing "${in_packages[@]}"; } | sort -u |
    xargs apt-get -qq -o APT::Sandbox::User= download) || return 1
  for package in "$folder"/packages/*.deb; do
    dpkg -x "$package" "$folder/root" || return 1
  done
  rm -rf "$folder/packages"
  for program in "${in_programs[@]}"; do
    mv "$folder/root/$program" "$folder/programs/" && cp tools/run-unpacked.sh "$folder/root/$program" || return 1
  done
  "${kind}_servers_finish" "$folder"
}

# need_servers KIND: prints the folder of the unpacked files, fetched when the cache has none that is whole.
need_servers() {
  local kind=$1 folder work sudo=()
  local -n of_packages=$1_server_packages
  folder=$(unpacked_folder "$kind") || folder=""
  if [ -z "$folder" ] || ! (cd "$folder" 2>/dev/null && sha256sum --quiet --status -c SHA256SUMS 2>/dev/null); then
    # Lists that are older than the newest package name files that are gone.
    [ "$(id -u)" -eq 0 ] || ! command -v sudo >/dev/null || sudo=(sudo)
    "${sudo[@]}" apt-get -qq update >&2 || true
    folder=$(unpacked_folder "$kind") || { echo "apt knows no package ${of_packages[0]}." >&2; return 1; }
    echo "Unpacking servers for the tests ($(basename "$folder")); this is done once." >&2
    mkdir -p "$(dirname "$folder")"
    work=$(mktemp -d "$folder.unpacking.XXXXXX")
    if ! unpack_servers "$kind" "$work" >&2; then
      rm -rf "$work"
      echo "The servers for the tests could not be unpacked ($kind)." >&2
      return 1
    fi
    (cd "$work" && find . -type f ! -name SHA256SUMS -print0 | sort -z | xargs -0 sha256sum >SHA256SUMS)
    chmod 755 "$work"
    rm -rf "$folder"
    mv "$work" "$folder"
  fi
  echo "$folder/root"
}
