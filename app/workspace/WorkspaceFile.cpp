#include "app/workspace/WorkspaceFile.h"

#include "app/settings/clsProfile.h"
#include "base/RunTimeError.h"
#include "engine/items/clsIxoFile.h"
#include "fileops/ConnectCommands.h"
#include "fileops/OperationHost.h"
#include "platform/OwnFile.h"
#include "platform/Volumes.h"
#include "prompts/UserPrompts.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/LocalFileAddress.h"
#include "views/addresses/NodeTags.h"
#include "views/navigation/Navigator.h"
#include "views/tree/FolderTreeModel.h"

#include <QDir>
#include <QScopedValueRollback>

#include <utility>

namespace trevane {

namespace {

QString AbsoluteFile(const QString& fileName) {
  return fileName.isEmpty()
             ? QString()
             : QDir::toNativeSeparators(QDir::cleanPath(QDir::current().absoluteFilePath(fileName)));
}

/// Removes the hourglass and the gauge and enables the window again, on every way out.
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

WorkspaceFile::WorkspaceFile(Parts parts)
    : parts_(std::move(parts)),
      title_(parts_.setCaption),
      dialogs_(parts_.files.Prompts(), parts_.host, parts_.programFolder),
      connector_({.connector = parts_.connector,
                  .prompts = parts_.files.Prompts(),
                  .navigator = parts_.navigator,
                  .host = parts_.host}) {}

bool WorkspaceFile::OpenWorkspace(const QString& fileName) {
  if (opening_ || parts_.host.IsWaiting()) {
    return false;
  }
  const QScopedValueRollback<bool> opening(opening_, true);
  OpeningState state(parts_.host, parts_.files.Prompts().Gauge());
  const QString file = AbsoluteFile(fileName);

  bool opened = false;
  try {
    const ownfile::Content content = ownfile::Read(file);
    reason_ = (content.state == ownfile::State::Missing ? QStringLiteral("There is no such file")
                                                        : content.reason) +
              QStringLiteral(": ") + file;
    if (content.state == ownfile::State::Read) {
      if (parts_.connector.Session().gIxoCtrls().Count() > 1 &&
          !ConfirmDisconnectAll(parts_.files.Prompts())) {
        return true;
      }
      parts_.navigator.CancelDisplay();
      state.TakeInputAway();
      opened = Replace(ReadWorkspace(content.bytes));
      if (opened) {
        title_.SetFile(file);
      }
    }
  } catch (const RunTimeError& failure) {
    reason_ = failure.Description();
  }
  if (FolderNode* workspace = parts_.tree.FirstRoot()) {
    parts_.navigator.DisplayNode(*workspace);
  }
  return opened;
}

bool WorkspaceFile::Replace(const WorkspaceContent& content) {
  if (const ConnectOutcome gone = parts_.connector.DisconnectAllControllers(); !gone) {
    reason_ = gone.reason;
    return false;
  }
  // The list may show controllers that are gone, or a place that has gone with its controller.
  FolderNode* workspace = parts_.tree.FirstRoot();
  const FolderNode* current = parts_.navigator.CurrentNode();
  if (workspace != nullptr && current != nullptr && IsWorkspace(current->Tag())) {
    parts_.navigator.DisplayNode(*workspace);
  }
  connector_.Connect(content);
  return true;
}

bool WorkspaceFile::IsReplaceable(const QString& file) {
  const QString address = AddressOfLocalFile(parts_.volumes.Current(), file);
  if (address.isEmpty()) {
    reason_ = QStringLiteral("No drive contains this file: ") + file;
    return false;
  }
  reason_ = QStringLiteral("The file cannot be replaced: ") + file;
  {
    clsIxoFile existing = parts_.files.FileAt(address);
    if (existing.Result() == 0) {
      const qint32 attributes = existing.FileAttribute();
      if (existing.Result() != 0) {
        reason_ = existing.ResultText();
      }
      if (existing.Result() != 0 || (attributes & kFolderBit) != 0) {
        return false;
      }
    } else if (existing.Result() != error::kNotFound) {
      reason_ = existing.ResultText();
      return false;
    }
  }
  return true;
}

std::vector<WorkspaceSection> WorkspaceFile::ConnectedSections() const {
  std::vector<WorkspaceSection> sections;
  const clsIxoCtrls& controllers = parts_.connector.Session().gIxoCtrls();
  for (qint32 position = 2; position <= controllers.Count(); ++position) {
    const std::shared_ptr<clsIxoCtrl> controller = controllers.Item(position);
    sections.push_back({controller->RealCtrlName(), *controller});
  }
  return sections;
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
    profile.HoldText(WriteWorkspace(ConnectedSections()));
    if (const ownfile::Outcome written = profile.PutInPlace({}); !written) {
      reason_ = written.reason + QStringLiteral(": ") + file;
      return false;
    }
    title_.SetFile(file);
    return true;
  } catch (const RunTimeError& failure) {
    reason_ = failure.Description();
    return false;
  }
}

void WorkspaceFile::Open() {
  const QString file = dialogs_.AskFileToOpen();
  if (!file.isEmpty() && !OpenWorkspace(file)) {
    dialogs_.ShowNotOpened(file, reason_);
  }
}

bool WorkspaceFile::HasControllers() {
  if (parts_.connector.Session().gIxoCtrls().Count() >= 2) {
    return true;
  }
  dialogs_.ShowNoController();
  return false;
}

void WorkspaceFile::Save() {
  if (!HasControllers()) {
    return;
  }
  if (CurrentFile().isEmpty()) {
    SaveUnderNewName();
  } else if (!SaveWorkspace(CurrentFile())) {
    dialogs_.ShowNotOverwritten(CurrentFile(), reason_);
  }
}

void WorkspaceFile::SaveAs() {
  if (HasControllers()) {
    SaveUnderNewName();
  }
}

void WorkspaceFile::SaveUnderNewName() {
  const QString file = dialogs_.AskFileToSave(CurrentFile());
  if (file.isEmpty()) {
    return;
  }
  if (SaveWorkspace(file)) {
    parts_.resetSaveImage();
  } else {
    dialogs_.ShowNotSaved(file, reason_);
  }
}

}  // namespace trevane
