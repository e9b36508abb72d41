# Sourced by test.sh, after tools/setup.sh: the FTP servers that tests start, and the clients that benchmarks compare with.

# shellcheck source=tools/unpacked-servers.sh
. tools/unpacked-servers.sh

ftp_server_packages=(vsftpd proftpd-core proftpd-mod-crypto python3-pyftpdlib python3-openssl lftp curl)
ftp_server_programs=(usr/sbin/vsftpd usr/sbin/proftpd usr/bin/lftp usr/bin/curl)
ftp_server_sources=(tools/ftp-servers.sh)

# Python finds its own by the path that the tests give it.
ftp_servers_finish() { [ -d "$1/root/usr/lib/python3/dist-packages/pyftpdlib" ]; }

# need_ftp_servers: exports TREVANE_FTP_SERVERS, a folder with usr/sbin/vsftpd, usr/sbin/proftpd and its modules in
# usr/lib/proftpd, pyftpdlib in usr/lib/python3/dist-packages, and usr/bin/lftp and curl.
need_ftp_servers() {
  TREVANE_FTP_SERVERS=$(need_servers ftp) || return 1
  export TREVANE_FTP_SERVERS
}
