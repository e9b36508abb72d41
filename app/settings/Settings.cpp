#include "app/settings/Settings.h"

#include "app/settings/StoredControllers.h"
#include "app/settings/StoredValues.h"
#include "app/settings/clsProfile.h"
#include "base/LowerCase.h"
#include "base/RunTimeError.h"
#include "engine/controllers/EngineSession.h"
#include "engine/controllers/RememberController.h"

#include <utility>

namespace trevane {

namespace {

void WriteNumber(clsProfile& profile, StoredValue id, qint32 number) {
  profile.WriteString(RowOf(id).section, RowOf(id).key, QString::number(number));
}

qint32 ReadNumber(const clsProfile& profile, const QString& section, StoredValue id, qint32 fallback) {
  return profile.GetInt(section, RowOf(id).key, fallback);
}

void WriteSettings(clsProfile& profile, SettingsWindow& window, EngineSession& session) {
  WriteNumber(profile, StoredValue::WindowState, static_cast<qint32>(window.State()));
  // A maximised window keeps its restored size in the file.
  window.HideWindow();
  window.SetState(WindowState::Normal);
  WriteNumber(profile, StoredValue::WindowWidth, window.WidthTwips());
  WriteNumber(profile, StoredValue::WindowHeight, window.HeightTwips());

  int number = 0;
  for (const auto& record : session.gSavedCtrls) {
    if (number == kRememberedControllers) {
      break;
    }
    ++number;
    WriteController(profile, RowOf(StoredValue::RememberedName).section + QString::number(number),
                    ControllerFile::Settings, *record);
  }
}

void ReadWindow(const clsProfile& profile, const QString& section, SettingsWindow& window) {
  window.SetWidthTwips(ReadNumber(profile, section, StoredValue::WindowWidth, window.WidthTwips()));
  window.SetHeightTwips(ReadNumber(profile, section, StoredValue::WindowHeight, window.HeightTwips()));
  const qint32 state =
      ReadNumber(profile, section, StoredValue::WindowState, static_cast<qint32>(window.State()));
  if (state >= static_cast<qint32>(WindowState::Normal) &&
      state <= static_cast<qint32>(WindowState::Maximised)) {
    window.SetState(static_cast<WindowState>(state));
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
      if (EqualIgnoringCase(section, QString(RowOf(StoredValue::WindowState).section))) {
        // The first section of a name wins: reading it again changes nothing.
        if (!std::exchange(formRead, true)) {
          ReadWindow(profile, section, window);
        }
      } else if (StartsWithIgnoringCase(section, QString(RowOf(StoredValue::RememberedName).section)) &&
                 session.gSavedCtrls.Count() < kRememberedControllers) {
        const auto record =
            std::make_shared<clsIxoCtrl>(ReadController(profile, section, ControllerFile::Settings));
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
  // Sections that the program does not write are not kept.
  profile.HoldAnew();
  WriteSettings(profile, window, session);
  return profile.PutInPlace({.isPrivate = true, .inPlaceInClosedFolder = true, .firstFolder = currentFolder});
}

}  // namespace trevane
