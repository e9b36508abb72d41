#include "platform/PrivateProfile.h"

#include "platform/OwnFile.h"
#include "platform/ProfileText.h"

namespace trevane::privateprofile {

QString GetString(const QString& section, const QString& key, const QString& fallback, int size,
                  const QString& fileName) {
  const ownfile::Content file = ownfile::Read(fileName);
  return file.state == ownfile::State::Read ? ProfileText(file.bytes).GetString(section, key, fallback, size)
                                            : ProfileText::DefaultText(fallback, size);
}

quint32 GetInt(const QString& section, const QString& key, qint32 fallback, const QString& fileName) {
  return ProfileText(ownfile::Read(fileName).bytes).GetInt(section, key, fallback);
}

bool WriteString(const QString& section, const QString& key, const QString& value, const QString& fileName) {
  if (section.isNull()) {
    // Nothing is held back, so there is nothing to flush.
    return false;
  }
  const ownfile::Content file = ownfile::Read(fileName);
  if (file.state == ownfile::State::Unreadable || !ownfile::IsWritable(fileName)) {
    return false;
  }
  ProfileText text(file.bytes);
  text.WriteString(section, key, value);
  const QByteArray bytes = text.Bytes();
  if (file.state == ownfile::State::Read && bytes == file.bytes) {
    return true;
  }
  return ownfile::Replace(fileName, bytes).done;
}

QByteArray ToUtf8(const QByteArray& bytes) {
  return bytes;
}

}  // namespace trevane::privateprofile
