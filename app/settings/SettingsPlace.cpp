#include "app/settings/SettingsPlace.h"

#include "app/settings/OldFiles.h"
#include "platform/OwnFile.h"

#include <QFileInfo>

#include <utility>

namespace trevane {

SettingsPlace::SettingsPlace(QString beside, QString own)
    : beside_(std::move(beside)), own_(std::move(own)) {}

bool SettingsPlace::IsBesideWritable() const {
  return ownfile::IsWritable(beside_, {.inPlaceInClosedFolder = true});
}

QString SettingsPlace::ToWrite() const {
  return own_.isEmpty() || IsBesideWritable() ? beside_ : own_;
}

QString SettingsPlace::ToRead() const {
  const QString file = ToWrite();
  return file == own_ && !ownfile::Exists(own_) ? beside_ : file;
}

bool SettingsPlace::PutAway(const QString& file) const {
  if (!ownfile::Exists(file)) {
    return true;
  }
  const auto mayTake = [](const QString& name) { return !oldfiles::IsFileInOldEncoding(name); };
  if (oldfiles::ForEachName(
          file, [&](const QString& name) { return mayTake(name) && ownfile::MoveOver(file, name); })) {
    return true;
  }
  const ownfile::Content content = ownfile::Read(file);
  if (own_.isEmpty() || content.state != ownfile::State::Read) {
    return false;
  }
  ownfile::MakePrivateFolder(QFileInfo(own_).path());
  return oldfiles::ForEachName(own_, [&](const QString& name) {
    return mayTake(name) && ownfile::Replace(name, content.bytes, {.isPrivate = true}).done;
  });
}

}  // namespace trevane
