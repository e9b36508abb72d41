#pragma once

#include "engine/controllers/clsIxoCtrls.h"

#include <QString>

namespace trevane {

/// One entry of the clipboard: the address that a file or folder had when it was copied or cut. The
/// destination of a paste is described by one, too.
class clsClipBrd {
 public:
  /// The origin of an entry.
  static constexpr qint32 kFromNode = 1;
  static constexpr qint32 kFromItem = 2;
  /// `CtrlIdx` of an entry whose controller is not connected.
  static constexpr qint32 kNoController = -1;

  /// Address of the entry's folder; for a folder, its own address.
  [[nodiscard]] const QString& PastePath() const noexcept { return pastePath_; }
  void SetPastePath(const QString& path) { pastePath_ = path; }

  /// The file's name in `PastePath`; empty for a folder and for an entry made from a tree node.
  [[nodiscard]] const QString& PasteName() const noexcept { return pasteName_; }
  void SetPasteName(const QString& name) { pasteName_ = name; }

  /// The tag of the node or item.
  [[nodiscard]] qint32 Attributes() const noexcept { return attributes_; }
  void SetAttributes(qint32 attributes) noexcept { attributes_ = attributes; }

  /// Index of the controller that holds the entry: 0 for the local file system, kNoController when the
  /// controller in the address was not connected.
  [[nodiscard]] qint32 CtrlIdx() const noexcept { return ctrlIdx_; }
  void SetCtrlIdx(qint32 index) noexcept { ctrlIdx_ = index; }

  /// kFromNode or kFromItem.
  [[nodiscard]] qint32 Origin() const noexcept { return origin_; }
  void SetOrigin(qint32 origin) noexcept { origin_ = origin; }

 private:
  QString pastePath_;
  QString pasteName_;
  qint32 attributes_ = 0;
  qint32 ctrlIdx_ = 0;
  qint32 origin_ = 0;
};

/// The entry of the list item `text` with the tag `tag`, in the folder at `currentAddress`.
[[nodiscard]] clsClipBrd ClipBrdOfItem(const clsIxoCtrls& registry, const QString& currentAddress,
                                       const QString& text, qint32 tag);

/// The entry of the tree node at `address` with the tag `tag`.
[[nodiscard]] clsClipBrd ClipBrdOfNode(const clsIxoCtrls& registry, const QString& address, qint32 tag);

/// The address of the file or folder of the entry.
[[nodiscard]] QString AddressOf(const clsClipBrd& entry);

}  // namespace trevane
