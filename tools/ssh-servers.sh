# Sourced by test.sh, after tools/setup.sh: the SSH servers and clients that tests start.

# shellcheck source=tools/unpacked-servers.sh
. tools/unpacked-servers.sh

ssh_server_packages=(openssh-server openssh-sftp-server openssh-client)
ssh_server_programs=(usr/sbin/sshd usr/bin/ssh usr/bin/sftp usr/bin/ssh-keygen usr/bin/ssh-agent usr/bin/ssh-add)
ssh_server_sources=(tools/ssh-servers.sh tools/sshd-as-root.c)

ssh_servers_finish() {
  gcc -shared -fPIC -O1 -Wall -Wextra -o "$1/programs/sshd-as-root.so" tools/sshd-as-root.c
}

# need_ssh_servers: exports TREVANE_SSH_SERVERS, a folder with usr/sbin/sshd, usr/lib/openssh/sftp-server, usr/bin/ssh,
# sftp, ssh-keygen, ssh-agent and ssh-add.
need_ssh_servers() {
  TREVANE_SSH_SERVERS=$(need_servers ssh) || return 1
  export TREVANE_SSH_SERVERS
}
