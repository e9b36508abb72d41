/* Loaded into sshd where root starts it: answers as if sshd were installed, so that nothing of the machine
   needs to be changed. Its installation makes a user "sshd" and the folder /run/sshd, to which it confines
   what has not logged on yet. Whether root's own password is locked does not matter to the tests. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <pwd.h>
#include <shadow.h>
#include <stddef.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

typedef struct passwd* GetUser(const char*);
typedef int GetStatus(const char*, struct stat*);
typedef int ChangeRoot(const char*);

static const char* Installed(const char* path) {
  return strcmp(path, "/run/sshd") == 0 ? "/" : path;
}

struct passwd* getpwnam(const char* name) {
  static struct passwd server = {"sshd", "*", 65533, 65534, "", "/", "/usr/sbin/nologin"};
  return strcmp(name, server.pw_name) == 0 ? &server : ((GetUser*)dlsym(RTLD_NEXT, "getpwnam"))(name);
}

struct spwd* getspnam(const char* name) {
  (void)name;
  return NULL;
}

int stat(const char* restrict path, struct stat* restrict status) {
  return ((GetStatus*)dlsym(RTLD_NEXT, "stat"))(Installed(path), status);
}

int chroot(const char* path) {
  return ((ChangeRoot*)dlsym(RTLD_NEXT, "chroot"))(Installed(path));
}
