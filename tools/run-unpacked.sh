#!/bin/sh
# Stands in a folder of unpacked packages for a program of theirs, and starts it with the libraries that lie beside it.
# The program itself is in the folder "programs" beside "root".
root=${0%/usr/*}
name=${0##*/}
program=$root/../programs/$name
for folder in "$root"/usr/lib/*-linux-gnu "$root"/lib/*-linux-gnu; do
  if [ -d "$folder" ]; then
    LD_LIBRARY_PATH=$folder${LD_LIBRARY_PATH:+:$LD_LIBRARY_PATH}
  fi
done
export LD_LIBRARY_PATH

case $name in
  sftp) exec "$program" -S "$root/usr/bin/ssh" "$@" ;;
  sshd) [ "$(id -u)" -eq 0 ] || exec "$program" "$@" ;;
  *) exec "$program" "$@" ;;
esac

# As root sshd wants a user and a folder that its installation makes, and writes of each log-on to the machine's records.
# It sees ones of its own, and root as a user whose password lets nobody in.
PROGRAM=$program exec unshare --mount --propagation private /bin/sh -c '
  set -e
  mount -t tmpfs -o mode=755 tmpfs /run
  mount -t tmpfs -o mode=755 tmpfs /var/log
  mkdir -m 755 /run/sshd
  { grep -v ^sshd: /etc/passwd; echo "sshd:x:65533:65534::/run/sshd:/usr/sbin/nologin"; } >/run/passwd
  echo "root:*:1::::::" >/run/shadow
  chmod 600 /run/shadow
  mount --bind /run/passwd /etc/passwd
  mount --bind /run/shadow /etc/shadow
  exec "$PROGRAM" "$@"' sh "$@"
