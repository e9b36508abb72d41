#include "app/window/WindowSettings.h"

#include "app/session/AppServices.h"
#include "app/settings/Settings.h"
#include "app/settings/SettingsPlace.h"
#include "platform/AppInfo.h"
#include "platform/OwnFile.h"
#include "prompts/ShowFailure.h"
#include "prompts/UserPrompts.h"

#include <QDir>
#include <QFileInfo>

namespace trevane {

void WindowSettings::Load() {
  loaded_ = true;
  file_ = Place().ToRead();
  const ownfile::Outcome read = LoadSettings(file_, window_, session_);
  isRead_ = read.done;
  if (!isRead_) {
    services_.prompts.ShowMessage(FailureOf(QStringLiteral("Failed Read Ini File."), file_, read.reason));
  }
}

void WindowSettings::Save() {
  // A window that was not loaded to its end has no settings.
  if (!loaded_) {
    return;
  }
  const SettingsPlace place = Place();
  // A file that could not be read is not lost with the one that replaces it.
  const bool isFree = isRead_ || place.PutAway(file_);
  const QString file = place.ToWrite();
  ownfile::MakePrivateFolder(QFileInfo(file).path());
  ownfile::Outcome written;
  if (isFree || file != file_) {
    written = SaveSettings(file, window_, session_, QDir::currentPath());
  } else {
    written.reason = QStringLiteral("The old file could be neither read nor renamed");
  }
  if (!written) {
    Message message = FailureOf(QStringLiteral("Failed Save Ini File."), file, written.reason);
    message.isLastWord = true;
    services_.prompts.ShowMessage(message);
  }
}

SettingsPlace WindowSettings::Place() const {
  const QString name = services_.baseName + QStringLiteral(".ini");
  const QString& own = services_.userSettingsFolder;
  return {services_.programFolder + appinfo::PathSeparator() + name,
          own.isEmpty() ? QString() : own + appinfo::PathSeparator() + name};
}

Message WindowSettings::FailureOf(const QString& text, const QString& file, const QString& reason) {
  return FailureMessage(text,
                        {.item = QFileInfo(file).fileName(), .reason = reason + QStringLiteral(": ") + file});
}

}  // namespace trevane
