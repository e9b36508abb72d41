# Sourced by test.sh, after tools/setup.sh: the SSH servers and clients that tests start. They are unpacked from Debian's
# packages into the cache and never installed, so that no server runs on this machine when no test does.

ssh_server_packages=(openssh-server openssh-sftp-server openssh-client)
# Those of them that want libraries beside the C library's.
ssh_server_programs=(usr/sbin/sshd usr/bin/ssh usr/bin/sftp usr/bin/ssh-keygen usr/bin/ssh-agent usr/bin/ssh-add)

ssh_servers_version() { apt-cache policy openssh-server | sed -n 's/^ *Candidate: \([0-9]*:\)\{0,1\}//p' | grep -v none; }

ssh_servers_folder() {
  local version key
  version=$(ssh_servers_version) || return 1
  key=$(cat tools/ssh-servers.sh tools/run-unpacked.sh tools/sshd-as-root.c | sha256sum | cut -c1-8)
  echo "${TREVANE_CACHE:-${XDG_CACHE_HOME:-${HOME:-$PWD/build}/.cache}/trevane}/ssh-servers-$version-$key"
}

# What else of Debian the servers need and this machine has not.
ssh_servers_missing() {
  apt-get -s install --no-install-recommends "${ssh_server_packages[@]}" | sed -n 's/^Inst \([^ ]*\) .*/\1/p'
}

# unpack_ssh_servers FOLDER: needs no rights, only apt's lists.
unpack_ssh_servers() {
  local folder=$1 package program
  mkdir -p "$folder/packages" "$folder/root" "$folder/programs"
  (cd "$folder/packages" && { printf '%s\n' "${ssh_server_packages[@]}"; ssh_servers_missing; } | sort -u |
    xargs apt-get -qq -o APT::Sandbox::User= download) || return 1
  for package in "$folder"/packages/*.deb; do
    dpkg -x "$package" "$folder/root" || return 1
  done
  rm -rf "$folder/packages"
  for program in "${ssh_server_programs[@]}"; do
    mv "$folder/root/$program" "$folder/programs/" && cp tools/run-unpacked.sh "$folder/root/$program" || return 1
  done
  gcc -shared -fPIC -O1 -Wall -Wextra -o "$folder/programs/sshd-as-root.so" tools/sshd-as-root.c
}

# need_ssh_servers: exports TREVANE_SSH_SERVERS, a folder with usr/sbin/sshd, usr/lib/openssh/sftp-server, usr/bin/ssh,
# sftp, ssh-keygen, ssh-agent and ssh-add, fetched when the cache has none that is whole.
need_ssh_servers() {
  local folder work sudo=()
  folder=$(ssh_servers_folder) || folder=""
  if [ -z "$folder" ] || ! (cd "$folder" 2>/dev/null && sha256sum --quiet --status -c SHA256SUMS 2>/dev/null); then
    # Lists that are older than the newest package name files that are gone.
    [ "$(id -u)" -eq 0 ] || ! command -v sudo >/dev/null || sudo=(sudo)
    "${sudo[@]}" apt-get -qq update || true
    folder=$(ssh_servers_folder) || { echo "apt knows no package openssh-server." >&2; return 1; }
    echo "Unpacking SSH servers for the tests ($(basename "$folder")); this is done once."
    mkdir -p "$(dirname "$folder")"
    work=$(mktemp -d "$folder.unpacking.XXXXXX")
    if ! unpack_ssh_servers "$work"; then
      rm -rf "$work"
      echo "The SSH servers for the tests could not be unpacked." >&2
      return 1
    fi
    (cd "$work" && find . -type f ! -name SHA256SUMS -print0 | sort -z | xargs -0 sha256sum >SHA256SUMS)
    chmod 755 "$work"
    rm -rf "$folder"
    mv "$work" "$folder"
  fi
  export TREVANE_SSH_SERVERS=$folder/root
}
