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
  sftp) set -- -S "$root/usr/bin/ssh" "$@" ;;
  sshd) [ "$(id -u)" -ne 0 ] || export LD_PRELOAD="$root/../programs/sshd-as-root.so" ;;
esac
exec "$program" "$@"
