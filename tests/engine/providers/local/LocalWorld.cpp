#include "tests/engine/providers/local/LocalWorld.h"

#include "base/RunTimeError.h"
#include "engine/files/WholeFile.h"
#include "tests/support/Wine.h"

#include <QDir>
#include <QFile>

#ifdef Q_OS_WIN
#include "platform/windows/WindowsText.h"

#include <windows.h>
#undef CreateFile
#else
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace trevane::test {

LocalWorld::LocalWorld(const QString& parent)
    : folder_(parent.isEmpty() ? QDir::tempPath() + QStringLiteral("/trevane-test-XXXXXX")
                               : parent + QStringLiteral("/trevane-test-XXXXXX")),
      volumes_({{QStringLiteral("C:"), folder_.path() + u'/', drivetype::kFixed}}),
      files_(volumes_) {}

LocalWorld::~LocalWorld() {
  // QTemporaryDir cannot remove names that are no text and very deep trees.
  try {
    for (const FileEntry& entry : files_.List(QStringLiteral("C:"))) {
      files_.Remove(QStringLiteral("C:\\") + entry.name);
    }
  } catch (const RunTimeError&) {
    // QTemporaryDir tries to remove the rest.
  }
}

QByteArray LocalWorld::Native(const char* below) const {
  return QFile::encodeName(Root()) + below;
}

bool LocalWorld::AddOtherVolume() {
  const QString drive = QStringLiteral("D:");
#ifdef Q_OS_WIN
  // Wine shows the memory disk of the host as another volume. Windows has no second volume that always
  // exists.
  const QString memory = QStringLiteral("Z:/dev/shm");
  if (!RunsUnderWine() || !QDir(memory).exists()) {
    return false;
  }
  other_ = std::make_unique<LocalWorld>(memory);
#else
  const QString memory = QStringLiteral("/dev/shm");
  if (!QDir(memory).exists()) {
    return false;
  }
  other_ = std::make_unique<LocalWorld>(memory);
  struct stat own {};
  struct stat other {};
  if (::stat(Native("").constData(), &own) != 0 || ::stat(other_->Native("").constData(), &other) != 0 ||
      own.st_dev == other.st_dev) {
    return false;
  }
#endif
  volumes_.Set(
      {{QStringLiteral("C:"), Root(), drivetype::kFixed}, {drive, other_->Root(), drivetype::kRamDisk}});
  return true;
}

bool LocalWorld::MakeLink(const char* below, const char* target) {
#ifdef Q_OS_WIN
  const QString link = windowstext::LiteralPath(Root() + QString::fromUtf8(below));
  const QString leadsTo = windowstext::LiteralPath(Root() + QString::fromUtf8(target));
  const DWORD attributes = GetFileAttributesW(windowstext::Wide(leadsTo));
  const bool toFolder = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  // 2: without a privilege, in developer mode. Wine reports success and creates nothing.
  return CreateSymbolicLinkW(windowstext::Wide(link), windowstext::Wide(leadsTo),
                             (toFolder ? 1U : 0U) | 2U) != FALSE &&
         GetFileAttributesW(windowstext::Wide(link)) != INVALID_FILE_ATTRIBUTES;
#else
  return ::symlink(Native(target).constData(), Native(below).constData()) == 0;
#endif
}

bool LocalWorld::MakeHardLink(const char* below, const char* target) {
#ifdef Q_OS_WIN
  const QString link = windowstext::LiteralPath(Root() + QString::fromUtf8(below));
  const QString file = windowstext::LiteralPath(Root() + QString::fromUtf8(target));
  return CreateHardLinkW(windowstext::Wide(link), windowstext::Wide(file), nullptr) != FALSE;
#else
  return ::link(Native(target).constData(), Native(below).constData()) == 0;
#endif
}

void LocalWorld::MakeTree(const QString& top) {
  files_.CreateFolder(top);
  WriteFile(files_, top + QStringLiteral("\\a"), "content of a");
  files_.CreateFolder(top + QStringLiteral("\\sub"));
  WriteFile(files_, top + QStringLiteral("\\sub\\b"), QByteArray(300000, 'b'));
  files_.CreateFolder(top + QStringLiteral("\\sub\\empty"));
}

bool LocalWorld::IsWholeTree(const QString& top) {
  try {
    return ReadFile(files_, top + QStringLiteral("\\a")) == "content of a" &&
           ReadFile(files_, top + QStringLiteral("\\sub\\b")) == QByteArray(300000, 'b') &&
           files_.List(top + QStringLiteral("\\sub\\empty")).empty();
  } catch (const RunTimeError&) {
    return false;
  }
}

}  // namespace trevane::test
