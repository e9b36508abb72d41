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

using namespace Qt::StringLiterals;

namespace {

// "Workspace", the machine, and on the local machine the drive.
constexpr qsizetype kControllerPieces = 2;
constexpr qsizetype kDrivePieces = 3;

QString WithoutLastSeparator(QString address) {
  if (address.endsWith(kAddressSeparator))
    address.chop(1);
  return address;
}

bool BeginsWithDrive(const QString& path) {
  return path.size() >= 2 && path[1] == u':' && path[0].isLetter();
}

}  // namespace

QStringList AddressNavigation::Readings(const QString& text) {
  QString address = typedpath::Unquoted(text);
  address.replace(u'/', kAddressSeparator);
  QStringList readings = {WithoutLastSeparator(address.trimmed())};
  if (address != address.trimmed())
    readings += WithoutLastSeparator(address);
  return readings;
}

QString AddressNavigation::AddressOfPath(const QString& path) const {
  if (typedpath::IsShare(path))
    return AddressOfShare(path);
  if (BeginsWithDrive(path))
    return kLocalAddressPrefix.toString() + path;
  if (path.startsWith(kAddressSeparator))
    return parts_.files.Drives().AddressOf(QString(path).replace(kAddressSeparator, u'/'));
  return path.startsWith(u'/') ? parts_.files.Drives().AddressOf(path) : path;
}

QString AddressNavigation::AddressOfShare(const QString& path) const {
  if (const QString address = parts_.files.Drives().AddressOf(path); !address.isEmpty())
    return address;
  const clsIxoCtrls& controllers = parts_.files.Session().gIxoCtrls();
  if (controllers.Count() == 0)
    return {};
  // Only a controller over the files of this machine has a root that is a path of the system.
  const QString local = controllers.Item(qint32{1})->ProvName();
  for (const auto& record : controllers) {
    const QString root = typedpath::Understand(record->Root());
    const QString rest = path.mid(root.size());
    if (EqualIgnoringCase(record->ProvName(), local) && typedpath::IsShare(root) &&
        StartsWithIgnoringCase(path, root) && (rest.isEmpty() || rest.startsWith(kAddressSeparator)))
      return JoinAddress(kWorkspaceAddress.toString(), record->RealCtrlName()) + rest;
  }
  return {};
}

std::optional<AddressNavigation::Arrival> AddressNavigation::GoToAddress(const QString& text) {
  reason_.clear();
  QStringList readings = Readings(text);
  // A place with a blank at the end of its name that is in the tree already is meant as it stands.
  if (readings.size() > 1 && parts_.tree.FindByKey(readings.back()))
    std::reverse(readings.begin(), readings.end());
  const QString path = typedpath::Understand(text.trimmed());
  const QString onDisk = AddressOfPath(path);
  if (typedpath::IsShare(path)) {
    readings = onDisk.isEmpty() ? QStringList() : QStringList(onDisk);
    if (onDisk.isEmpty())
      NoteReason(u"No drive and no controller stands for this share. Connect it as a controller's root: "_s +
                 path);
  } else if (!onDisk.isEmpty() && !readings.contains(onDisk)) {
    readings += onDisk;
  }
  for (const QString& address : readings) {
    // Of a path of the system it tells nothing that it is no address.
    const QString asAddress = address == onDisk ? std::exchange(reason_, {}) : QString();
    std::optional<Place> place;
    try {
      place = Find(address);
    } catch (const RunTimeError& failure) {
      NoteReason(failure.Description());
    }
    NoteReason(asAddress);
    if (!place)
      continue;
    const Arrival arrival{place->node->FullPath(), place->fileName};
    parts_.navigator.DisplayNode(*place->node);
    return arrival;
  }
  // A node on the way that has become another folder's, with what was displayed in it.
  if (FolderNode* current = parts_.navigator.CurrentNode();
      current && current->FullPath() != parts_.navigator.ListTag())
    parts_.navigator.DisplayNode(*current);
  return std::nullopt;
}

void AddressNavigation::NoteReason(const QString& reason) {
  if (reason_.isEmpty())
    reason_ = reason;
}

std::optional<AddressNavigation::Place> AddressNavigation::Find(const QString& address) {
  if (IsWorkspaceAddress(address) || IsMyComputerAddress(address)) {
    FolderNode* node = parts_.tree.FindByKey(address);
    return node ? std::optional(Place{node, {}}) : std::nullopt;
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
  FolderNode* node = FindOrAddNode(pieces, rootPieces);
  return node ? std::optional(Place{node, fileName}) : std::nullopt;
}

FolderNode* AddressNavigation::FindOrAddNode(const QStringList& pieces, qsizetype rootPieces) {
  // Whole pieces are compared, so that no machine is taken for one whose name begins alike.
  FolderNode* node = parts_.tree.FindByKey(pieces.first(rootPieces).join(kAddressSeparator));
  for (qsizetype i = rootPieces; node && i < pieces.size(); ++i) {
    if (FolderNode* child = parts_.tree.FindChild(node, pieces[i]); child && child->Text() == pieces[i]) {
      node = child;
      continue;
    }
    clsIxoFile folder = parts_.files.FileAt(JoinAddress(node->FullPath(), pieces[i]));
    const qint32 attributes = folder.Result() == 0 ? folder.FileAttribute() : 0;
    if (folder.Result() != 0) {
      NoteReason(folder.ResultText());
      return nullptr;
    }
    node =
        &parts_.navigator.NodeOfFolder(*node, pieces[i], MakeFolderTag(attributes, folder.IsOnController()));
  }
  return node;
}

}  // namespace trevane
