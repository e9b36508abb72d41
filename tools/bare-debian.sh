#!/usr/bin/env bash
# Runs a command of the project on a Debian 12 that has nothing installed, in a folder: bare-debian.sh ROOT PROJECT COMMAND
# ROOT is made with debootstrap when it is not there; the command runs in a fresh clone of PROJECT in its /srv/project.
# The new system gets this machine's Debian entries of apt and its apt settings, nothing else. Needs root.
set -euo pipefail
root=$1 project=$2 command=$3
release=bookworm

fail() { echo "bare-debian.sh: $1" >&2; exit 1; }
[ "$(id -u)" -eq 0 ] || fail "this needs root: it makes a system in a folder and changes its root there."
command -v debootstrap >/dev/null || fail "debootstrap is not installed."

# The entries of apt that name this release, in both of its forms; a third party's entry is not a bare machine's.
one_line_entries() {
  local file
  for file in /etc/apt/sources.list /etc/apt/sources.list.d/*.list; do
    if [ -f "$file" ]; then
      grep -E "^deb[[:space:]]+(\[[^]]*\][[:space:]]+)?[^[:space:]]+[[:space:]]+$release(-[a-z-]+)?[[:space:]/]" "$file" || true
    fi
  done
}
stanza_entries() {
  local file
  for file in /etc/apt/sources.list.d/*.sources; do
    [ ! -f "$file" ] || awk -v RS= -v ORS='\n\n' -v release="$release" \
      '$0 ~ "(^|\n)Suites:[^\n]*[ \t]" release "([ \t-]|\n|$)" && $0 !~ /(^|\n)Enabled:[ \t]*no/' "$file"
  done
}
archive() {
  local found
  found=$(stanza_entries | awk '/^URIs:/ { print $2; exit }')
  [ -n "$found" ] || found=$(one_line_entries | sed -E 's/^deb[[:space:]]+(\[[^]]*\][[:space:]]+)?//' | awk '{ print $1; exit }')
  echo "$found"
}

make_root() {
  local uri key
  uri=$(archive)
  [ -n "$uri" ] || fail "no entry of apt names $release."
  mkdir -p "$(dirname "$root")"
  debootstrap --variant=minbase --include=ca-certificates,git "$release" "$root.new" "$uri" >"$root.log" 2>&1 ||
    { tail -n 20 "$root.log" >&2; fail "debootstrap failed."; }
  rm -f "$root.new/etc/apt/sources.list"
  one_line_entries >"$root.new/etc/apt/sources.list.d/machine.list"
  stanza_entries >"$root.new/etc/apt/sources.list.d/machine.sources"
  cp -a /etc/apt/apt.conf.d/. "$root.new/etc/apt/apt.conf.d/"
  [ ! -f /etc/apt/apt.conf ] || cp -a /etc/apt/apt.conf "$root.new/etc/apt/"
  cp -a /etc/apt/auth.conf.d /etc/apt/keyrings /etc/apt/trusted.gpg.d "$root.new/etc/apt/" 2>/dev/null || true
  # An entry may name a key of its own.
  { stanza_entries | sed -n 's/^Signed-By:[[:space:]]*//p'
    one_line_entries | sed -n 's/.*signed-by=\([^] ]*\).*/\1/p'; } | sort -u | while read -r key; do
    if [ -f "$key" ] && [ ! -e "$root.new$key" ]; then
      mkdir -p "$root.new$(dirname "$key")"
      cp "$key" "$root.new$key"
    fi
  done
  # No service starts in a system that is only a folder.
  printf '#!/bin/sh\nexit 101\n' >"$root.new/usr/sbin/policy-rc.d"
  chmod +x "$root.new/usr/sbin/policy-rc.d"
  mv "$root.new" "$root"
  rm -f "$root.log"
}

leave() {
  local place
  for place in dev sys proc; do
    umount -lR "$root/$place" 2>/dev/null || true
  done
}

[ -d "$root/usr" ] || make_root
cp /etc/resolv.conf /etc/hosts "$root/etc/" 2>/dev/null || true
rm -rf "$root/srv/project"
git clone -q "$project" "$root/srv/project"

trap leave EXIT
for place in proc sys dev; do
  mountpoint -q "$root/$place" ||
    { mount --rbind "/$place" "$root/$place" && mount --make-rslave "$root/$place"; } ||
    fail "/$place cannot be mounted in $root; a container without the right to mount cannot run this."
done
env -i HOME=/root PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 TERM=dumb \
  chroot "$root" /bin/bash -c "cd /srv/project && $command"
