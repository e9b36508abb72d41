#include "app/settings/SettingsPlace.h"

#include "platform/OwnFile.h"

#include <QFileInfo>

#include <utility>

namespace trevane {

using namespace Qt::StringLiterals;

namespace {

constexpr int kMostOld = 9;

QString OldName(const QString& file, int number) {
  return file + u".old"_s + (number > 1 ? QString::number(number) : QString());
}

}  // namespace

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
  for (int number = 1; number <= kMostOld; ++number) {
    if (ownfile::MoveOver(file, OldName(file, number))) {
      return true;
    }
  }
  const ownfile::Content content = ownfile::Read(file);
  if (own_.isEmpty() || content.state != ownfile::State::Read) {
    return false;
  }
  ownfile::MakePrivateFolder(QFileInfo(own_).path());
  return ownfile::Replace(OldName(own_, 1), content.bytes, {.isPrivate = true}).done;
}

}  // namespace trevane
