#include "views/navigation/AddressNavigation.h"

#include "base/RunTimeError.h"
#include "engine/items/AddressResolver.h"
#include "engine/items/clsIxoFile.h"
#include "platform/TypedPath.h"
#include "views/addresses/Addresses.h"
#include "views/addresses/NodeTags.h"
#include "views/navigation/Navigator.h"
#include "views/tree/FolderTreeModel.h"

#include <algorithm>
#include <utility>

namespace trevane {

namespace {

// "Workspace", the machine, and on the local machine the drive.
constexpr qsizetype kControllerPieces = 2;
constexpr qsizetype kDrivePieces = 3;

QString WithoutLastSeparator(QString address) {
  if (address.endsWith(kAddressSeparator)) {
    address.chop(1);
  }
  return address;
}

bool BeginsWithDrive(const QString& path) {
  return path.size() >= 2 && path[1] == u':' && path[0].isLetter();
}

}  // namespace

QStringList AddressNavigation::Candidates(const QString& text) {
  QString address = typedpath::Unquoted(text);
  address.replace(u'/', kAddressSeparator);
  QStringList candidates = {WithoutLastSeparator(address.trimmed())};
  if (address != address.trimmed()) {
    candidates += WithoutLastSeparator(address);
  }
  return candidates;
}

QString AddressNavigation::AddressOfPath(const QString& path) const {
  if (typedpath::IsShare(path)) {
    return AddressOfShare(path);
  }
  if (BeginsWithDrive(path)) {
    return kLocalAddressPrefix.toString() + path;
  }
  if (path.startsWith(kAddressSeparator)) {
    return parts_.files.Drives().AddressOf(QString(path).replace(kAddressSeparator, u'/'));
  }
  return path.startsWith(u'/') ? parts_.files.Drives().AddressOf(path) : path;
}

QString AddressNavigation::AddressOfShare(const QString& path) const {
  if (const QString address = parts_.files.Drives().AddressOf(path); !address.isEmpty()) {
    return address;
  }
  const clsIxoCtrls& controllers = parts_.files.Session().gIxoCtrls();
  if (controllers.Count() == 0) {
    return {};
  }
  // Only a controller over the files of this machine has a root that is a path of the system.
  const QString local = controllers.Item(qint32{1})->ProvName();
  for (const auto& record : controllers) {
    const QString root = typedpath::Understand(record->Root());
    const QString rest = path.mid(root.size());
    if (EqualIgnoringCase(record->ProvName(), local) && typedpath::IsShare(root) &&
        StartsWithIgnoringCase(path, root) && (rest.isEmpty() || rest.startsWith(kAddressSeparator))) {
      return JoinAddress(kWorkspaceAddress.toString(), record->RealCtrlName()) + rest;
    }
  }
  return {};
}

QStringList AddressNavigation::AllCandidates(const QString& text, const QString& path,
                                             const QString& onDisk) const {
  if (typedpath::IsShare(path)) {
    return onDisk.isEmpty() ? QStringList() : QStringList(onDisk);
  }
  QStringList candidates = Candidates(text);
  // A folder whose name ends with a blank and that is in the tree already is meant literally.
  if (candidates.size() > 1 && parts_.tree.FindByKey(candidates.back()) != nullptr) {
    std::reverse(candidates.begin(), candidates.end());
  }
  if (!onDisk.isEmpty() && !candidates.contains(onDisk)) {
    candidates += onDisk;
  }
  return candidates;
}

std::optional<AddressNavigation::Arrival> AddressNavigation::GoToAddress(const QString& text) {
  reason_.clear();
  const QString path = typedpath::Understand(text.trimmed());
  const QString onDisk = AddressOfPath(path);
  if (typedpath::IsShare(path) && onDisk.isEmpty()) {
    NoteReason(QStringLiteral("No drive and no controller leads to this share. Connect it as a "
                              "controller's root: ") +
               path);
  }
  const QStringList candidates = AllCandidates(text, path, onDisk);
  for (const QString& address : candidates) {
    // Why a path of the system is no address is of no interest when there is another reason.
    const QString asAddress = address == onDisk ? std::exchange(reason_, {}) : QString();
    const std::optional<Target> target = TryFind(address);
    NoteReason(asAddress);
    if (target) {
      const Arrival arrival{target->node->FullPath(), target->fileName};
      parts_.navigator.DisplayNode(*target->node);
      return arrival;
    }
  }
  // On the way a node may have become another folder's, and what was displayed in it is gone.
  if (FolderNode* current = parts_.navigator.CurrentNode();
      current != nullptr && current->FullPath() != parts_.navigator.CurrentAddress()) {
    parts_.navigator.DisplayNode(*current);
  }
  return std::nullopt;
}

std::optional<AddressNavigation::Target> AddressNavigation::TryFind(const QString& address) {
  try {
    return Find(address);
  } catch (const RunTimeError& failure) {
    NoteReason(failure.Description());
    return std::nullopt;
  }
}

void AddressNavigation::NoteReason(const QString& reason) {
  if (reason_.isEmpty()) {
    reason_ = reason;
  }
}

std::optional<AddressNavigation::Target> AddressNavigation::Find(const QString& address) {
  if (IsWorkspaceAddress(address) || IsMyComputerAddress(address)) {
    FolderNode* node = parts_.tree.FindByKey(address);
    return node ? std::optional(Target{node, {}}) : std::nullopt;
  }
  clsIxoFile file = parts_.files.FileAt(address, LookUp::Navigate);
  if (file.Result() != 0) {
    NoteReason(file.ResultText());
    return std::nullopt;
  }

  QStringList pieces = file.FoundPieces();
  const qsizetype rootPieces =
      EqualIgnoringCase(pieces[1], kMyComputerName) ? kDrivePieces : kControllerPieces;
  QString fileName;
  // A machine root is displayed also when it cannot be read now: the display asks for the disk then.
  if (pieces.size() > rootPieces) {
    const qint32 attributes = file.FileAttribute();
    if (file.Result() != 0) {
      NoteReason(file.ResultText());
      return std::nullopt;
    }
    if ((attributes & kFolderBit) == 0) {
      fileName = pieces.takeLast();
    }
  }
  FolderNode* node = FindOrAddNode(file, pieces, rootPieces);
  return node ? std::optional(Target{node, fileName}) : std::nullopt;
}

FolderNode* AddressNavigation::FindOrAddNode(clsIxoFile& found, const QStringList& pieces,
                                             qsizetype rootPieces) {
  // Whole pieces are compared, so that no machine is taken for one whose name begins alike.
  FolderNode* node = parts_.tree.FindByKey(pieces.first(rootPieces).join(kAddressSeparator));
  for (qsizetype i = rootPieces; node && i < pieces.size(); ++i) {
    if (FolderNode* child = parts_.tree.FindChild(node, pieces[i]); child && child->Text() == pieces[i]) {
      node = child;
      continue;
    }
    std::optional<qint32> attributes = found.AttributeOfPiece(i);
    if (!attributes) {
      clsIxoFile folder = parts_.files.FileAt(JoinAddress(node->FullPath(), pieces[i]));
      attributes = folder.Result() == 0 ? folder.FileAttribute() : 0;
      if (folder.Result() != 0) {
        NoteReason(folder.ResultText());
        return nullptr;
      }
    }
    node = &parts_.navigator.Builder().FindOrAddFolderNode(
        *node, pieces[i], MakeFolderTag(*attributes, found.IsOnController()));
  }
  return node;
}

}  // namespace trevane
