#pragma once

#include "engine/items/FileAccess.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace trevane {

class FolderNode;
class FolderTreeModel;
class Navigator;
class ReasonLine;
class clsIxoFile;

/// Displays the folders of addresses that the user typed or pasted.
class AddressNavigation final {
 public:
  /// All of them outlive this object.
  struct Parts {
    FileAccess files;
    FolderTreeModel& tree;
    Navigator& navigator;
    /// Shows the reason of a failure.
    ReasonLine& reasonLine;
  };

  /// The folder that is displayed after a successful call.
  struct Arrival {
    /// The address of the node, spelt as it is in the tree.
    QString address;
    /// The file that the typed address named; empty when it named a folder.
    QString fileName;
  };

  explicit AddressNavigation(const Parts& parts) : parts_(parts) {}

  /// Displays the folder that the text names, or the folder of the file that it names. Nodes that are missing
  /// on the way are added to the tree. Nothing when the address leads nowhere: the views are unchanged then,
  /// except for nodes added already. While a display is running, the folder is displayed when that has ended.
  [[nodiscard]] std::optional<Arrival> GoToAddress(const QString& text);
  /// Why the likeliest candidate of the last address led nowhere.
  [[nodiscard]] const QString& Reason() const noexcept { return reason_; }

  /// The addresses that a typed or pasted text may mean, the likeliest first: with "\" for "/", without
  /// quotes and blanks around it and a "\" at its end; a blank at the end may be part of a name, though.
  [[nodiscard]] static QStringList Candidates(const QString& text);

 private:
  /// The address of a path of the operating system, as typedpath::Understand gives it; empty when no drive
  /// holds it. A text that is no such path is returned unchanged.
  [[nodiscard]] QString AddressOfPath(const QString& path) const;
  /// The address on the network drive or the connected controller whose root is the share; empty when there
  /// is none.
  [[nodiscard]] QString AddressOfShare(const QString& path) const;

  struct Target {
    FolderNode* node = nullptr;
    QString fileName;
  };

  /// Candidates, and the address of the path on a disk, which is empty when there is none. For a share it is
  /// the only candidate.
  [[nodiscard]] QStringList AllCandidates(const QString& text, const QString& path,
                                          const QString& onDisk) const;
  /// Find, with the reason noted where it fails.
  [[nodiscard]] std::optional<Target> TryFind(const QString& address);
  [[nodiscard]] std::optional<Target> Find(const QString& address);
  /// The node of the folder at the pieces, spelt as they are there, of which the first `rootPieces` are its
  /// machine root's. `found` was resolved to it, or to a file in it.
  [[nodiscard]] FolderNode* FindOrAddNode(clsIxoFile& found, const QStringList& pieces, qsizetype rootPieces);

  /// Keeps the reason of the first candidate.
  void NoteReason(const QString& reason);

  Parts parts_;
  QString reason_;
};

}  // namespace trevane
