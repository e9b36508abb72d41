# Sourced by tools/windows.sh's users, after tools/ssh-servers.sh: an sshd for programs that cannot start one, which are
# those of Windows under Wine.

# start_loopback_sshd FOLDER: starts it on a free port of 127.0.0.1, with keys and settings of its own in FOLDER, and
# exports TREVANE_SSHD_PORT, _USER, _KEY (the private key's file, without a passphrase), _KNOWN_HOSTS (the file) and
# _FOLDER (empty, for the tests to work in, as the server names it).
start_loopback_sshd() {
  local folder=$1 programs=$TREVANE_SSH_SERVERS/usr
  mkdir "$folder/work"
  "$programs/bin/ssh-keygen" -q -t ed25519 -N '' -C '' -f "$folder/host"
  "$programs/bin/ssh-keygen" -q -t ed25519 -N '' -C '' -f "$folder/key"
  for _ in 1 2 3 4 5; do
    : >"$folder/log"
    TREVANE_SSHD_PORT=$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
    write_sshd_config "$folder" >"$folder/config"
    "$programs/sbin/sshd" -D -e -f "$folder/config" 2>"$folder/log" &
    loopback_sshd=$!
    if sshd_listens "$folder/log" && only_on_loopback "$TREVANE_SSHD_PORT"; then
      echo "[127.0.0.1]:$TREVANE_SSHD_PORT $(cat "$folder/host.pub")" >"$folder/known_hosts"
      TREVANE_SSHD_USER=$(id -un)
      export TREVANE_SSHD_PORT TREVANE_SSHD_USER TREVANE_SSHD_KEY=$folder/key \
        TREVANE_SSHD_KNOWN_HOSTS=$folder/known_hosts TREVANE_SSHD_FOLDER=$folder/work
      return 0
    fi
    # Somebody else may have taken the port meanwhile.
    stop_loopback_sshd
  done
  cat "$folder/log" >&2
  return 1
}

stop_loopback_sshd() {
  [ -n "${loopback_sshd:-}" ] || return 0
  kill "$loopback_sshd" 2>/dev/null || true
  wait "$loopback_sshd" 2>/dev/null || true
  loopback_sshd=
}

write_sshd_config() {
  cat <<CONFIG
AddressFamily inet
ListenAddress 127.0.0.1
Port $TREVANE_SSHD_PORT
HostKey $1/host
AuthorizedKeysFile $1/key.pub
StrictModes no
PasswordAuthentication no
KbdInteractiveAuthentication no
AllowTcpForwarding no
AllowAgentForwarding no
X11Forwarding no
PermitUserRC no
PidFile none
# The tests of several programs connect at once.
MaxStartups 200
Subsystem sftp $TREVANE_SSH_SERVERS/usr/lib/openssh/sftp-server
CONFIG
}

# sshd_listens LOG: waits until it says so, or has ended.
sshd_listens() {
  for _ in $(seq 100); do
    ! grep -q '^Server listening' "$1" || return 0
    kill -0 "$loopback_sshd" 2>/dev/null || return 1
    sleep 0.1
  done
  return 1
}

only_on_loopback() {
  awk -v port="$(printf %04X "$1")" '
    $4 == "0A" { split($2, at, ":"); if (at[2] == port && at[1] != "0100007F") elsewhere = 1 }
    END { exit elsewhere }' /proc/net/tcp /proc/net/tcp6 ||
    { echo "sshd listens on another address than 127.0.0.1." >&2; return 1; }
}
