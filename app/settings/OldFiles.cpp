#include "app/settings/OldFiles.h"

#include "platform/OwnFile.h"
#include "platform/PrivateProfile.h"

namespace trevane::oldfiles {

namespace {

constexpr int kNames = 9;

}  // namespace

bool ForEachName(const QString& file, const std::function<bool(const QString& name)>& use) {
  for (int number = 1; number <= kNames; ++number) {
    if (use(file + QStringLiteral(".old") + (number > 1 ? QString::number(number) : QString()))) {
      return true;
    }
  }
  return false;
}

bool IsInOldEncoding(const QByteArray& content) {
  return privateprofile::ToUtf8(content) != content;
}

bool IsFileInOldEncoding(const QString& name) {
  const ownfile::Content file = ownfile::Read(name);
  return file.state == ownfile::State::Read && IsInOldEncoding(file.bytes);
}

}  // namespace trevane::oldfiles
