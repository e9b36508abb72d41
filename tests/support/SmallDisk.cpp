#include "tests/support/SmallDisk.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

namespace trevane::test {

SmallDisk::SmallDisk() {
  mounted_ = folder_.isValid() && ::mount("tmpfs", folder_.path().toLocal8Bit().constData(), "tmpfs",
                                          MS_NOSUID | MS_NODEV, "size=64k,mode=700") == 0;
}

SmallDisk::~SmallDisk() {
  if (mounted_) {
    ::umount2(folder_.path().toLocal8Bit().constData(), MNT_DETACH);
  }
}

void SmallDisk::Fill() const {
  const QByteArray path = folder_.path().toLocal8Bit() + "/filling";
  const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  const QByteArray piece(4096, 'f');
  while (::write(fd, piece.constData(), size_t(piece.size())) > 0) {
  }
  while (::write(fd, "f", 1) > 0) {
  }
  ::close(fd);
}

}  // namespace trevane::test
