#include "app/settings/Settings.h"

#include "app/settings/clsProfile.h"
#include "base/LowerCase.h"
#include "base/RunTimeError.h"
#include "engine/controllers/EngineSession.h"
#include "engine/controllers/RememberController.h"

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

void WriteController(clsProfile& profile, const QString& section, const clsIxoCtrl& record) {
  const auto write = [&](const QString& key, const QString& value) {
    profile.WriteString(section, key, clsProfile::Quoted(value));
  };
  write(u"ControllerName"_s, record.CtrlName());
  write(u"ProviderName"_s, record.ProvName());
  write(u"MachineName"_s, record.MachineName());
  write(u"Option"_s, record.CtrlOption());
  write(u"Root"_s, record.Root());
}

void WriteSettings(clsProfile& profile, SettingsWindow& window, EngineSession& session) {
  profile.WriteString(kForm, u"WindowState"_s, QString::number(static_cast<int>(window.State())));
  // A maximised window keeps its restored size in the file.
  window.HideWindow();
  window.SetState(WindowState::Normal);
  profile.WriteString(kForm, u"Width"_s, QString::number(window.WidthTwips()));
  profile.WriteString(kForm, u"Height"_s, QString::number(window.HeightTwips()));

  int number = 0;
  for (const auto& record : session.gSavedCtrls) {
    if (number == kRememberedControllers) {
      break;
    }
    ++number;
    WriteController(profile, u"Controller"_s + QString::number(number), *record);
  }
}

}  // namespace

ownfile::Outcome LoadSettings(const QString& fileName, SettingsWindow& window, EngineSession& session) {
  clsProfile profile(fileName);
  if (const ownfile::Content file = profile.Hold(); file.state == ownfile::State::Unreadable) {
    return {.done = false, .reason = file.reason};
  }
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
    return {.done = true};
  } catch (const RunTimeError& failure) {
    return {.done = false, .reason = failure.Description()};
  }
}

ownfile::Outcome SaveSettings(const QString& fileName, SettingsWindow& window, EngineSession& session,
                              const QString& currentFolder) {
  clsProfile profile(fileName);
  // Sections that the program does not write are not carried over.
  profile.HoldAnew();
  WriteSettings(profile, window, session);
  return profile.PutInPlace({.isPrivate = true, .inPlaceInClosedFolder = true, .firstFolder = currentFolder});
}

}  // namespace trevane
