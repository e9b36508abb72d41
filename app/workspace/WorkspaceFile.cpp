#include "app/workspace/WorkspaceFile.h"

#include "app/settings/clsProfile.h"
#include "app/workspace/ShowFileDialog.h"
#include "base/RunTimeError.h"
#include "engine/items/clsIxoFile.h"
#include "fileops/ConnectCommands.h"
#include "fileops/OperationHost.h"
#include "platform/Volumes.h"
#include "prompts/ShowFailure.h"
#include "prompts/UserPrompts.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/LocalFileAddress.h"
#include "views/addresses/NodeTags.h"
#include "views/navigation/Navigator.h"
#include "views/tree/FolderTreeModel.h"

#include <QDir>
#include <QFileInfo>
#include <QScopedValueRollback>

#include <utility>

namespace trevane {

using namespace Qt::StringLiterals;

namespace {

const QString kFilter = u"FileMgr File (*.fmg)|*.fmg|All Files (*.*)|*.*"_s;

QString AbsoluteFile(const QString& fileName) {
  return fileName.isEmpty()
             ? QString()
             : QDir::toNativeSeparators(QDir::cleanPath(QDir::current().absoluteFilePath(fileName)));
}

/// The hourglass, a disabled window and the gauge, on whatever way the opening ends.
class OpeningState {
 public:
  OpeningState(OperationHost& host, ProgressGauge& gauge) : host_(host), gauge_(gauge) {
    host_.SetBusyPointer(true);
  }
  ~OpeningState() {
    if (disabled_) {
      gauge_.UnloadGage();
      host_.SetMainWindowEnabled(true);
    }
    host_.SetBusyPointer(false);
  }
  OpeningState(const OpeningState&) = delete;
  OpeningState& operator=(const OpeningState&) = delete;

  void TakeInputAway() {
    disabled_ = true;
    host_.SetMainWindowEnabled(false);
  }

 private:
  OperationHost& host_;
  ProgressGauge& gauge_;
  bool disabled_ = false;
};

}  // namespace

bool WorkspaceFile::OpenWorkspace(const QString& fileName) {
  if (opening_)
    return false;
  const QScopedValueRollback<bool> opening(opening_, true);
  OpeningState state(parts_.host, parts_.files.Prompts().Gauge());
  const QString file = AbsoluteFile(fileName);

  bool opened = false;
  try {
    clsProfile profile(file);
    const ownfile::Content content = profile.Hold();
    reason_ = (content.state == ownfile::State::Missing ? u"There is no such file"_s : content.reason) +
              u": "_s + file;
    if (content.state == ownfile::State::Read) {
      if (parts_.connector.Session().gIxoCtrls().Count() > 1 && !ConfirmDisconnectAll(parts_.files.Prompts()))
        return true;
      parts_.navigator.CancelDisplay();
      state.TakeInputAway();
      opened = OpenFile(profile);
    }
  } catch (const RunTimeError& failure) {
    reason_ = failure.Description();
  }
  if (FolderNode* workspace = parts_.tree.FirstRoot())
    parts_.navigator.DisplayNode(*workspace);
  return opened;
}

bool WorkspaceFile::OpenFile(const clsProfile& profile) {
  if (const ConnectOutcome gone = parts_.connector.DisconnectAllControllers(); !gone) {
    reason_ = gone.reason;
    return false;
  }
  // The list may show controllers that are gone, or a place that has gone with its controller.
  if (FolderNode* workspace = parts_.tree.FirstRoot(); workspace && IsWorkspaceShown())
    parts_.navigator.DisplayNode(*workspace);
  ConnectSections(profile);
  SetWorkspaceCaption(profile.FileName());
  return true;
}

void WorkspaceFile::ConnectSections(const clsProfile& profile) {
  const QStringList sections = profile.GetSectNames();
  ProgressGauge& gauge = parts_.files.Prompts().Gauge();
  gauge.ShowGage(u"Open Controllers"_s);
  gauge.SetGageMax(static_cast<qint32>(sections.size()));
  gauge.CancelEnable(true);
  for (const QString& section : clsProfile::NamesInUse(sections)) {
    ConnectSection(profile, section);
    parts_.host.LetEventsRun();
    gauge.IncrementGageValue({});
    if (parts_.files.Prompts().IsCancelled())
      break;
  }
}

void WorkspaceFile::ConnectSection(const clsProfile& profile, const QString& section) {
  const auto ctrl = std::make_shared<clsIxoCtrl>();
  ctrl->SetProvName(profile.GetString(section, u"Provider"_s, u""_s));
  ctrl->SetCtrlName(profile.GetString(section, u"CtrlName"_s, u""_s));
  ctrl->SetMachineName(profile.GetString(section, u"Machine"_s, u""_s));
  ctrl->SetCtrlOption(profile.GetString(section, u"Option"_s, u""_s));
  ctrl->SetRoot(profile.GetString(section, u"Root"_s, u"/"_s));
  parts_.files.Prompts().Gauge().SetGageLabel(u"Connect Controller("_s + ctrl->CtrlName() + u")."_s);
  // Connecting blocks: the name is to be read while it does.
  parts_.files.Prompts().Gauge().PaintGage();
  parts_.host.LetPaintingRun();
  const ConnectOutcome result = parts_.connector.ConnectController(ctrl);
  if (result) {
    if (IsWorkspaceShown())
      static_cast<void>(parts_.connector.Display().AddControllerItem(*ctrl, false));
    return;
  }
  ShowFailed(*ctrl, section);
  ShowFailure(parts_.files.Prompts(), parts_.host,
              u"Failed in connecting to the controller( "_s + ctrl->CtrlName() + u" )."_s,
              {.item = ctrl->CtrlName().isEmpty() ? section : ctrl->CtrlName(), .reason = result.reason});
}

void WorkspaceFile::ShowFailed(const clsIxoCtrl& ctrl, const QString& section) {
  clsIxoCtrl shown = ctrl;
  if (shown.RealCtrlName().isEmpty())
    shown.SetRealCtrlName(ctrl.CtrlName().isEmpty() ? section : ctrl.CtrlName());
  if (parts_.connector.Display().AddControllerNode(shown, true) && IsWorkspaceShown())
    static_cast<void>(parts_.connector.Display().AddControllerItem(shown, true));
}

bool WorkspaceFile::IsWorkspaceShown() const {
  const FolderNode* current = parts_.navigator.CurrentNode();
  return current && IsWorkspace(current->Tag());
}

bool WorkspaceFile::IsReplaceable(const QString& file) {
  const QString address = AddressOfLocalFile(parts_.volumes.Current(), file);
  if (address.isEmpty()) {
    reason_ = u"It is on no drive: "_s + file;
    return false;
  }
  reason_ = u"It is no file that can be replaced: "_s + file;
  {
    clsIxoFile existing = parts_.files.FileAt(address);
    if (existing.Result() == 0) {
      const qint32 attributes = existing.FileAttribute();
      if (existing.Result() != 0)
        reason_ = existing.ResultText();
      if (existing.Result() != 0 || (attributes & kFolderBit) != 0)
        return false;
    } else if (existing.Result() != error::kNotFound) {
      reason_ = existing.ResultText();
      return false;
    }
  }
  return true;
}

void WorkspaceFile::WriteSections(clsProfile& profile) {
  const clsIxoCtrls& controllers = parts_.connector.Session().gIxoCtrls();
  for (qint32 position = 2; position <= controllers.Count(); ++position) {
    const std::shared_ptr<clsIxoCtrl> ctrl = controllers.Item(position);
    const auto write = [&](const QString& key, const QString& value) {
      profile.WriteString(ctrl->RealCtrlName(), key, clsProfile::Quoted(value));
    };
    write(u"CtrlName"_s, ctrl->CtrlName());
    write(u"Provider"_s, ctrl->ProvName());
    write(u"Machine"_s, ctrl->MachineName());
    write(u"Option"_s, ctrl->CtrlOption());
    write(u"Root"_s, ctrl->Root());
  }
}

bool WorkspaceFile::SaveWorkspace(const QString& fileName) {
  try {
    const QString file = AbsoluteFile(fileName);
    reason_.clear();
    if (file.isEmpty() || !IsReplaceable(file)) {
      return false;
    }
    clsProfile profile(file);
    // No section of an older workspace survives, and one without controllers is an empty file.
    profile.HoldAnew();
    WriteSections(profile);
    if (const ownfile::Outcome written = profile.PutInPlace({}); !written) {
      reason_ = written.reason + u": "_s + file;
      return false;
    }
    SetWorkspaceCaption(file);
    return true;
  } catch (const RunTimeError& failure) {
    reason_ = failure.Description();
    return false;
  }
}

void WorkspaceFile::SetWorkspaceCaption(const QString& fileName) {
  currentFile_ = fileName;
  parts_.setCaption(u"Trevane - ("_s + fileName + u')');
}

void WorkspaceFile::Open() {
  const QString file =
      ShowFileDialog(parts_.files.Prompts(), kFilter, FileQuestion::Mode::Open, {}, parts_.programFolder);
  if (!file.isEmpty() && !OpenWorkspace(file))
    Warn(u"Couldn't open the file."_s, file);
}

bool WorkspaceFile::HasControllers() {
  if (parts_.connector.Session().gIxoCtrls().Count() >= 2)
    return true;
  parts_.files.Prompts().MessageBox(u"No controller is connecting."_s, PromptIcon::Exclamation);
  return false;
}

void WorkspaceFile::Save() {
  if (!HasControllers())
    return;
  if (currentFile_.isEmpty())
    SaveUnderNewName();
  else if (!SaveWorkspace(currentFile_))
    Warn(u"Can't overwrite the file."_s, currentFile_);
}

void WorkspaceFile::SaveAs() {
  if (HasControllers())
    SaveUnderNewName();
}

void WorkspaceFile::SaveUnderNewName() {
  const QString file = ShowFileDialog(parts_.files.Prompts(), kFilter, FileQuestion::Mode::Save, currentFile_,
                                      parts_.programFolder);
  if (file.isEmpty())
    return;
  if (SaveWorkspace(file))
    parts_.resetSaveImage();
  else
    Warn(u"Couldn't save the file."_s, file);
}

void WorkspaceFile::Warn(const QString& text, const QString& file) {
  ShowFailure(parts_.files.Prompts(), parts_.host, text,
              {.item = QFileInfo(file).fileName(), .reason = reason_});
}

}  // namespace trevane
