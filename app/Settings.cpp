#include "app/Settings.h"

#include "app/clsProfile.h"
#include "engine/EngineSession.h"
#include "engine/RememberController.h"
#include "engine/model/RunTimeError.h"
#include "platform/PrivateProfile.h"
#include "views/addresses/LowerCase.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <utility>

namespace trevane {

using namespace Qt::StringLiterals;

namespace {

const QString kForm = u"Form"_s;

std::shared_ptr<clsIxoCtrl> ReadController(const clsProfile& profile, const QString& section) {
  auto record = std::make_shared<clsIxoCtrl>();
  record->SetCtrlName(profile.GetString(section, u"ControllerName"_s, u""_s));
  record->SetProvName(profile.GetString(section, u"ProviderName"_s, u""_s));
  record->SetMachineName(profile.GetString(section, u"MachineName"_s, u""_s));
  record->SetCtrlOption(profile.GetString(section, u"Option"_s, u""_s));
  record->SetRoot(profile.GetString(section, u"Root"_s, u"/"_s));
  return record;
}

bool WriteController(clsProfile& profile, const QString& section, const clsIxoCtrl& record) {
  return profile.WriteString(section, u"ControllerName"_s, record.CtrlName()) &&
         profile.WriteString(section, u"ProviderName"_s, record.ProvName()) &&
         profile.WriteString(section, u"MachineName"_s, record.MachineName()) &&
         profile.WriteString(section, u"Option"_s, record.CtrlOption()) &&
         profile.WriteString(section, u"Root"_s, record.Root());
}

bool WriteSettings(clsProfile& profile, SettingsWindow& window, EngineSession& session) {
  bool written =
      profile.WriteString(kForm, u"WindowState"_s, QString::number(static_cast<int>(window.State())));
  // A maximised window keeps its restored size in the file.
  window.HideWindow();
  window.SetState(WindowState::Normal);
  written = written && profile.WriteString(kForm, u"Width"_s, QString::number(window.WidthTwips())) &&
            profile.WriteString(kForm, u"Height"_s, QString::number(window.HeightTwips()));

  int number = 0;
  for (const auto& record : session.gSavedCtrls) {
    if (number == kRememberedControllers)
      break;
    ++number;
    written = written && WriteController(profile, u"Controller"_s + QString::number(number), *record);
  }
  return written;
}

/// The content of one file for another in one step.
bool PutInPlace(const QString& source, const QString& target) {
  QFile content(source);
  if (!content.open(QIODevice::ReadOnly))
    return false;
  const QFileInfo old(target);
  constexpr auto kWritable = QFile::WriteOwner | QFile::WriteGroup | QFile::WriteOther;
  if (old.exists() && (!old.isFile() || !(old.permissions() & kWritable)))
    return false;
  QSaveFile file(target);
  if (!file.open(QIODevice::WriteOnly))
    return false;
  const QByteArray bytes = content.readAll();
  return content.error() == QFile::NoError && file.write(bytes) == bytes.size() && file.commit();
}

}  // namespace

bool LoadSettings(const QString& fileName, SettingsWindow& window, EngineSession& session) {
  // The profile calls cannot tell a file that cannot be read from one that is not there.
  if (QFile file(fileName); file.exists() && !file.open(QIODevice::ReadOnly))
    return false;
  const clsProfile profile(fileName);
  bool formRead = false;
  try {
    for (const QString& section : clsProfile::NamesInUse(profile.GetSectNames())) {
      const QString name = LowerCase(section);
      if (name == u"form") {
        // The first section of a name wins: reading it again changes nothing.
        if (std::exchange(formRead, true))
          continue;
        window.SetWidthTwips(profile.GetInt(section, u"Width"_s, window.WidthTwips()));
        window.SetHeightTwips(profile.GetInt(section, u"Height"_s, window.HeightTwips()));
        const qint32 state = profile.GetInt(section, u"WindowState"_s, static_cast<qint32>(window.State()));
        if (state >= static_cast<qint32>(WindowState::Normal) &&
            state <= static_cast<qint32>(WindowState::Maximised))
          window.SetState(static_cast<WindowState>(state));
      } else if (name.startsWith(u"controller") && session.gSavedCtrls.Count() < kRememberedControllers) {
        const auto record = ReadController(profile, section);
        session.gSavedCtrls.Add(ControllerKey(record->CtrlName()), record);
      }
    }
    return true;
  } catch (const RunTimeError&) {
    return false;
  }
}

bool SaveSettings(const QString& fileName, SettingsWindow& window, EngineSession& session,
                  const QString& currentFolder) {
  const QString prefix = u"RLX"_s;
  QString temporary = privateprofile::MakeTempFile(currentFolder, prefix);
  if (temporary.isNull())
    temporary = privateprofile::MakeTempFile(QFileInfo(fileName).absolutePath(), prefix);
  if (temporary.isNull())
    return false;

  bool saved = false;
  {
    clsProfile profile(temporary);
    saved = WriteSettings(profile, window, session);
  }
  saved = saved && PutInPlace(temporary, fileName);
  QFile::remove(temporary);
  return saved;
}

}  // namespace trevane
