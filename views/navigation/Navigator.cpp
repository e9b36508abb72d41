#include "views/navigation/Navigator.h"

#include "engine/controllers/EngineSession.h"
#include "engine/items/clsIxoFile.h"
#include "engine/model/IxoFile.h"
#include "prompts/ShowFailure.h"
#include "prompts/UserPrompts.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/DriveTable.h"
#include "views/addresses/ImageKeys.h"
#include "views/addresses/NodeTags.h"
#include "views/list/FileListModel.h"
#include "views/list/FileTypes.h"
#include "views/navigation/NavigatorListener.h"
#include "views/tree/FolderTreeModel.h"

#include <QElapsedTimer>
#include <QScopedValueRollback>

#include <algorithm>
#include <utility>

namespace trevane {

using namespace Qt::StringLiterals;

namespace {

constexpr qint32 kHidden = 0x2;
constexpr qint32 kSystem = 0x4;

/// Rows enter the views in batches: the first soon, so that something is seen, and then ever more rarely,
/// because a view lays out all of its rows each time.
class FlushClock {
 public:
  FlushClock() { timer_.start(); }

  [[nodiscard]] bool IsDue() const { return timer_.elapsed() >= interval_; }
  void Flushed() {
    interval_ = std::min<qint64>(interval_ * 2, 1000);
    timer_.restart();
  }

 private:
  QElapsedTimer timer_;
  qint64 interval_ = 60;  // milliseconds
};

/// Takes the gauge away on every way out.
class GaugeCloser {
 public:
  explicit GaugeCloser(ProgressGauge& gauge) : gauge_(gauge) {}
  ~GaugeCloser() { gauge_.UnloadGage(); }
  GaugeCloser(const GaugeCloser&) = delete;
  GaugeCloser& operator=(const GaugeCloser&) = delete;

 private:
  ProgressGauge& gauge_;
};

/// Keeps a batch of the tree open for its own life.
class TreeBatch {
 public:
  TreeBatch(FolderTreeModel& tree, FolderNode& under) : tree_(tree) { tree_.BeginBatch(&under); }
  ~TreeBatch() { tree_.EndBatch(); }
  TreeBatch(const TreeBatch&) = delete;
  TreeBatch& operator=(const TreeBatch&) = delete;

 private:
  FolderTreeModel& tree_;
};

constexpr bool IsHiddenAndSystem(qint32 attributes) {
  return (attributes & (kHidden | kSystem)) == (kHidden | kSystem);
}

Date DateOf(const Variant& value) {
  const auto* date = std::get_if<Date>(&value);
  return date ? *date : Date{};
}

}  // namespace

Navigator::Navigator(const Parts& parts) : parts_(parts) {}
Navigator::~Navigator() = default;

void Navigator::RebuildTree() {
  current_ = nullptr;
  parts_.tree.Clear();
  FolderNode* root =
      parts_.tree.AddTreeNode(nullptr, imagekey::kWorkspace, kWorkspaceAddress.toString(), TAG_WORKSPACE);
  parts_.tree.AddTreeNode(root, imagekey::kMyCom, kMyComputerName.toString(), kMyComputerTag);
  parts_.files.Drives().RefreshDrives();
  AddDriveNodes();
}

void Navigator::AddDriveNodes() {
  for (int index = 0; index <= parts_.files.Drives().DriveCount(); ++index) {
    FolderNode* node = AddDriveNode(index);
    if (!node || parts_.files.Drives().Drive(index).DriveType != drivetype::kFixed)
      continue;
    try {
      AddFolderNodes(node->FullPath(), *node);
    } catch (const RunTimeError&) {
      // The drive says what is wrong with it when it is displayed; the others are shown all the same.
    }
  }
}

FolderNode* Navigator::AddDriveNode(int index) {
  DriveInfo& drive = parts_.files.Drives().Drive(index);
  const DriveLook look = LookOfDrive(drive.DriveType);
  drive.ImageKey = look.imageKey;
  drive.NodeIndex = 0;
  if (look.imageKey.isEmpty())
    return nullptr;
  FolderNode* node = parts_.tree.AddTreeNode(parts_.tree.FindByIndex(2), look.imageKey, drive.Text,
                                             look.kindBit | TAG_DRIVE);
  parts_.tree.SetSorted(node, true);
  drive.NodeIndex = node->Index();
  return node;
}

void Navigator::AddFolderNodes(const QString& address, FolderNode& under) {
  clsIxoFile folder = parts_.files.FileAt(address);
  if (folder.Result() != 0)
    throw RunTimeError(folder.Result(), folder.ResultText());
  const Variant value = folder.FileNames();
  if (folder.Result() != 0)
    throw RunTimeError(folder.Result(), folder.ResultText());
  const auto* names = std::get_if<QStringList>(&value);
  if (!names)
    return;
  const bool onController =
      folder.CtrlName().compare(parts_.files.Session().gLocalCtrlName, Qt::CaseInsensitive) != 0;

  const TreeBatch batch(parts_.tree, under);
  for (const QString& name : *names) {
    const std::shared_ptr<IxoFile> entry = folder.GetIxoFile(name);
    if (!entry)
      continue;
    const qint32 attributes = entry->Attribute();
    folder.ReleaseChild(entry);
    if (!IsHiddenAndSystem(attributes) && (attributes & kFolderBit) != 0)
      MeetFolder(under, name, MakeFolderTag(attributes, onController), *names);
  }
}

void Navigator::MeetFolder(FolderNode& under, const QString& name, qint32 tag, const QStringList& names) {
  FolderNode* known = parts_.tree.FindChild(&under, name);
  if (!known) {
    AddFolderNode(under, name, tag);
  } else if (known->Text() != name && !names.contains(known->Text())) {
    // The folder has got another case. Where both are there the node stays with the one it has.
    parts_.tree.RenameNode(known, name);
    NodeRenamed();
  }
}

FolderNode& Navigator::NodeOfFolder(FolderNode& under, const QString& name, qint32 tag) {
  FolderNode* known = parts_.tree.FindChild(&under, name);
  if (!known)
    return AddFolderNode(under, name, tag);
  // Where case tells nothing apart the name that the folder really has stays.
  if (known->Text() == name || (!MayHold(under.FullPath(), name) && MayHold(under.FullPath(), known->Text())))
    return *known;
  if (current_ && known->Contains(current_)) {
    CancelDisplay();
    current_ = known;
  }
  parts_.tree.RemoveChildren(known);
  parts_.tree.RenameNode(known, name);
  parts_.tree.SetTag(known, tag);
  return *known;
}

bool Navigator::MayHold(const QString& address, const QString& name) const {
  clsIxoFile folder = parts_.files.FileAt(address, LookUp::Navigate);
  const Variant value = folder.Result() == 0 ? folder.FileNames() : Variant();
  const auto* names = std::get_if<QStringList>(&value);
  return !names || names->contains(name);
}

void Navigator::SpellAsFound(FolderNode& node, QStringList found) {
  for (FolderNode* at = &node; at && IsFolderTag(at->Tag()) && !found.isEmpty(); at = at->Parent()) {
    const QString name = found.takeLast();
    if (at->Text() != name && EqualIgnoringCase(at->Text(), name))
      parts_.tree.RenameNode(at, name);
  }
}

FolderNode& Navigator::AddFolderNode(FolderNode& under, const QString& name, qint32 tag) {
  const FileTypeRecord& images = parts_.fileTypes.GetFolderImages();
  FolderNode* node = parts_.tree.AddTreeNode(&under, images.imageKey, name, tag);
  parts_.tree.SetExpandedImageKey(node, images.openImageKey);
  parts_.tree.SetSorted(node, true);
  return *node;
}

void Navigator::Refresh() {
  if (current_)
    DisplayNode(*current_);
}

bool Navigator::NodeGoes(const FolderNode& node) {
  if (!current_ || !node.Contains(current_))
    return false;
  CancelDisplay();
  current_ = node.Parent();
  return true;
}

void Navigator::CancelDisplay() {
  cancelled_ = true;
  wanted_.reset();
}

void Navigator::DisplayNode(FolderNode& node) {
  if (parts_.files.Prompts().IsEnding())
    return;
  if (displaying_) {
    cancelled_ = true;
    wanted_ = node.FullPath();
    return;
  }
  {
    const QScopedValueRollback displaying(displaying_, true);
    FolderNode* next = &node;
    while (next && !parts_.files.Prompts().IsEnding()) {
      cancelled_ = false;
      DisplayNow(*next);
      next = nullptr;
      if (const auto wanted = std::exchange(wanted_, std::nullopt)) {
        next = parts_.tree.FindByKey(*wanted);
        if (next && next->FullPath() != *wanted)
          next = nullptr;
        // What was clicked has gone meanwhile: the place that was being listed is listed again, whole.
        if (!next)
          next = current_;
      }
    }
  }
  parts_.listener.DisplayEnded();
}

void Navigator::DisplayNow(FolderNode& node) {
  current_ = &node;
  listTag_ = node.FullPath();
  shown_ = false;
  // Whatever runs during the display may take the node away.
  const qint32 tag = node.Tag();
  parts_.listener.ShowCurrentNode(node);
  parts_.listener.ShowStatus(u"Selected "_s + node.Text());
  parts_.listener.UpdateCommandStates(node.Tag(), false);
  try {
    if (IsWorkspace(tag)) {
      ShowWorkspace();
      parts_.listener.EnableDisconnect(false);
    } else if (IsMyComputer(tag)) {
      ShowDrives();
    } else {
      ShowFolder(node);
    }
    shown_ = true;
  } catch (const RunTimeError& failure) {
    FlushViews();
    ReportFailure(failure);
    // Only what is known not to be there loses its node: a time-out or a refusal says nothing of the folder.
    if (failure.Number() == error::kNotFound && current_ == &node) {
      const FolderNode* shown = &node;
      FolderNode& nearest = DropGoneFolders(node);
      if (&nearest != shown) {
        if (!wanted_ || !parts_.tree.FindByKey(*wanted_))
          wanted_ = nearest.FullPath();
        return;
      }
    }
  }
  parts_.listener.ShowAddress(listTag_);
  parts_.listener.UpdateCommandStates(tag, false);
}

bool Navigator::IsGone(const FolderNode& node) const {
  clsIxoFile folder = parts_.files.FileAt(node.FullPath(), LookUp::Navigate);
  return folder.Result() == error::kNotFound && folder.IsAbsent();
}

FolderNode& Navigator::DropGoneFolders(FolderNode& node) {
  FolderNode* nearest = &node;
  FolderNode* gone = nullptr;
  while (IsFolderTag(nearest->Tag()) && nearest->Parent() && IsGone(*nearest)) {
    gone = nearest;
    nearest = nearest->Parent();
  }
  if (gone) {
    current_ = nearest;
    parts_.tree.RemoveNode(gone);
  }
  return *nearest;
}

bool Navigator::RemoveFolders(const QStringList& addresses) {
  bool lost = false;
  for (const QString& address : addresses) {
    FolderNode* node = parts_.tree.FindByKey(address);
    // The tree knows no case, but the folder that is gone had its very name.
    if (!node || !node->Parent() || !IsFolderTag(node->Tag()) || node->FullPath() != address)
      continue;
    if (current_ && node->Contains(current_)) {
      current_ = node->Parent();
      lost = true;
    }
    parts_.tree.RemoveNode(node);
  }
  if (lost)
    DisplayNode(DropGoneFolders(*current_));
  return lost;
}

void Navigator::NodeRenamed() {
  if (!current_)
    return;
  const QString address = current_->FullPath();
  if (address == listTag_)
    return;
  listTag_ = address;
  parts_.listener.ShowAddress(address);
  parts_.listener.ShowStatus(u"Selected "_s + current_->Text());
}

void Navigator::ShowWorkspace() {
  parts_.list.Clear();
  parts_.list.AddListItem({}, kMyComputerTag, kMyComputerName.toString(), imagekey::kMyCom);
  for (const auto& controller : parts_.files.Session().gIxoCtrls()) {
    const QString& name = controller->RealCtrlName();
    if (name.compare(parts_.files.Session().gLocalCtrlName, Qt::CaseInsensitive) != 0)
      parts_.list.AddListItem({}, kControllerTag, name, imagekey::kController);
  }
  // Those that failed to connect stand in the tree only.
  for (const FolderNode* node : parts_.tree.FirstRoot()->Children()) {
    if (parts_.tree.ImageKey(node) == imagekey::kErrController &&
        parts_.list.FindByText(node->Text()) == FileListModel::kNoItem)
      parts_.list.AddListItem({}, kControllerTag, node->Text(), imagekey::kErrController);
  }
  parts_.list.FlushStaged();
}

void Navigator::ShowDrives() {
  parts_.files.Drives().RefreshDrives();
  parts_.tree.RemoveChildren(parts_.tree.FindByIndex(2));
  parts_.list.Clear();
  AddDriveNodes();
  for (const DriveInfo& drive : parts_.files.Drives().Drives())
    parts_.list.AddListItem({}, kDriveItemTag, drive.Text, drive.ImageKey);
  parts_.list.FlushStaged();
}

void Navigator::ShowFolder(FolderNode& node) {
  parts_.list.Clear();
  parts_.listener.EnableDisconnect(IsController(node.Tag()));
  clsIxoFile folder(parts_.files);
  if (const auto names = ReadNames(folder, node); names && !names->isEmpty())
    ListEntries(folder, node, *names);
}

std::optional<QStringList> Navigator::ReadNames(clsIxoFile& folder, FolderNode& node) {
  for (;;) {
    folder.SetPath(listTag_, LookUp::Navigate);
    Variant value;
    if (folder.Result() == 0)
      value = folder.FileNames();
    if (folder.Result() == 0) {
      if (current_ == &node && folder.FoundPieces().join(kAddressSeparator) != listTag_) {
        // What is done with the entries is done by exact names.
        SpellAsFound(node, folder.FoundPieces());
        NodeRenamed();
      }
      const auto* names = std::get_if<QStringList>(&value);
      return names ? *names : QStringList();
    }
    const RunTimeError failure(folder.Result(), folder.ResultText());
    if (failure.Number() != error::kDeviceNotReady)
      throw failure;
    // The file object may not have got as far as to know its name.
    QString name = folder.Name();
    if (name.isEmpty())
      name = node.Text();
    Message message = FailureMessage(u"Place a disk in your drive("_s + name + u")."_s,
                                     {.item = name, .reason = failure.Description()});
    message.buttons = PromptButtons::RetryCancel;
    const PromptAnswer answer = parts_.files.Prompts().ShowMessage(message);
    if (answer != PromptAnswer::Retry || cancelled_)
      return std::nullopt;
  }
}

void Navigator::ListEntries(clsIxoFile& folder, FolderNode& node, const QStringList& names) {
  const bool onController =
      folder.CtrlName().compare(parts_.files.Session().gLocalCtrlName, Qt::CaseInsensitive) != 0;
  ProgressGauge& gauge = parts_.files.Prompts().Gauge();
  std::optional<GaugeCloser> closer;
  if (names.size() >= kGaugeFrom) {
    closer.emplace(gauge);
    QString place = folder.Name();
    if (place.isEmpty())
      place = node.Text();
    gauge.ShowGage(u"Display Folder:"_s + place);
    gauge.SetGageMax(static_cast<qint32>(names.size()));
    gauge.CancelEnable(true);
  }

  parts_.list.Reserve(static_cast<int>(names.size()));
  const TreeBatch batch(parts_.tree, node);
  FlushClock clock;
  for (const QString& name : names) {
    ListEntry(folder, node, name, onController, names);
    if (!closer)
      continue;
    gauge.IncrementGageValue(u"Display "_s + name);
    if (clock.IsDue()) {
      FlushViews();
      clock.Flushed();
    }
    parts_.listener.LetEventsRun();
    if (cancelled_ || parts_.files.Prompts().IsCancelled())
      break;
  }
  parts_.list.FlushStaged();
}

void Navigator::ListEntry(clsIxoFile& folder, FolderNode& node, const QString& name, bool onController,
                          const QStringList& names) {
  const std::shared_ptr<IxoFile> entry = folder.GetIxoFile(name);
  if (!entry) {
    // An entry that has gone since the folder was read is no failure.
    if (folder.Result() == 0 || folder.Result() == error::kNotFound)
      return;
    throw RunTimeError(folder.Result(), folder.ResultText());
  }
  const qint32 attributes = entry->Attribute();
  const bool isFolder = (attributes & kFolderBit) != 0;
  const qint32 tag = MakeFileTag(attributes, onController);
  if (isFolder && !IsHiddenAndSystem(attributes))
    MeetFolder(node, name, tag, names);
  // The list is stricter than the tree: either attribute keeps an entry out of it.
  const bool listed = (attributes & (kHidden | kSystem)) == 0;
  if (listed && (isFolder || !parts_.listener.IsFilteredOut(name)))
    AddFileItem(*entry, name, tag);
  folder.ReleaseChild(entry);
}

void Navigator::AddFileItem(IxoFile& entry, const QString& name, qint32 tag) {
  const bool isFolder = (tag & kFolderBit) != 0;
  const FileTypeRecord& type =
      isFolder ? parts_.fileTypes.GetFolderImages() : parts_.fileTypes.GetFileType(name);
  try {
    const FileListModel::Handle item = parts_.list.AddListItem({}, tag, name, type.imageKey);
    parts_.list.SetDetails(item, {.size = isFolder ? -1 : entry.Size64(),
                                  .modified = DateOf(entry.DateLastModified()),
                                  .accessed = DateOf(entry.DateLastAccessed()),
                                  .created = DateOf(entry.DateCreated()),
                                  .fileType = type.id});
  } catch (const RunTimeError& failure) {
    if (failure.Number() != error::kKeyAlreadyThere)
      throw;
    parts_.files.Prompts().ShowMessage(
        FailureMessage(u"Can't display "_s + name + u"."_s, {.item = name, .reason = failure.Description()}));
  }
}

void Navigator::FlushViews() {
  parts_.tree.FlushBatch();
  parts_.list.FlushStaged();
}

void Navigator::ReportFailure(const RunTimeError& failure) {
  parts_.files.Prompts().MessageBox(failure.Description(), PromptIcon::Exclamation);
}

}  // namespace trevane
