#pragma once

#include "engine/controllers/EngineSession.h"
#include "engine/items/FileAccess.h"
#include "engine/transfer/OpenedObjects.h"
#include "views/addresses/DriveTable.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace trevane {

/// The pieces of an address, "/" taken for "\" and one "\" at the end dropped. Fails with error::kInvalidName
/// when the first is not "Workspace" and for a piece that is no valid name of an item.
[[nodiscard]] QStringList AddressPieces(const QString& address);

/// A controller's root that is a folder of its own and not merely the top.
[[nodiscard]] bool IsFolderRoot(const QString& root);

/// Finds the engine object of an address and remembers the objects that it opened on the way. Release, or the
/// destructor, drops them.
class AddressResolver {
 public:
  explicit AddressResolver(const FileAccess& files) : session_(files.Session()), drives_(files.Drives()) {}
  ~AddressResolver() { Release(); }
  AddressResolver(const AddressResolver&) = delete;
  AddressResolver& operator=(const AddressResolver&) = delete;

  /// Opens the item by its path, in one look-up; walks to it from the controller, with one look-up a level,
  /// where that finds nothing or the spelling of each name is to be learnt. Where an address cannot be
  /// resolved to its end everything that was opened is released and a RunTimeError is thrown; its number is 0
  /// when the engine merely yielded nothing.
  void Resolve(const QString& address, LookUp lookUp);

  [[nodiscard]] const std::shared_ptr<IxoController>& Controller() const noexcept { return controller_; }
  /// A drive, a controller's top folder, or its root folder. Nothing where the way to it was not needed.
  [[nodiscard]] const std::shared_ptr<IxoFile>& Top() const noexcept { return top_; }
  /// Nothing unless the address was resolved.
  [[nodiscard]] const std::shared_ptr<IxoFile>& File() const noexcept { return file_; }
  [[nodiscard]] bool IsOnController() const noexcept { return onController_; }
  /// The pieces of the address of what was found, below the drive or the controller as the file system spells
  /// them. Empty unless the address was resolved.
  [[nodiscard]] const QStringList& FoundPieces() const noexcept { return found_; }
  /// The item of a piece of FoundPieces, as far as it was opened on the way; else nothing.
  [[nodiscard]] std::shared_ptr<IxoFile> ItemOfPiece(qsizetype piece) const;
  /// After a failure: the item, or a folder on the way, is known not to be there.
  [[nodiscard]] bool IsAbsent() const noexcept { return absent_; }

  void Release() noexcept;

 private:
  /// These return how many pieces they used up.
  qsizetype TakeDrive(const QStringList& pieces);
  qsizetype TakeController(const QString& address, const QStringList& pieces, LookUp lookUp);
  void OpenRoot(clsIxoCtrl& record, bool mayBeKnown);
  /// False where a walk has to find out what is missing, or its spelling. `top` is the path of the drive or
  /// of the folder that the pieces from `from` on are below.
  [[nodiscard]] bool OpenByPath(const QString& top, const QStringList& pieces, qsizetype from, LookUp lookUp);
  /// Without asking anything; false where something has to be asked.
  [[nodiscard]] bool OpenShown(const QString& top, const QStringList& pieces, qsizetype from);
  [[nodiscard]] bool IsFolderThere(const QString& top, const QStringList& names);
  void Walk(const QStringList& pieces, qsizetype from, LookUp lookUp);
  [[nodiscard]] std::shared_ptr<IxoFile> OpenIgnoringCase(IxoFile& folder, const QString& name);

  EngineSession& session_;
  const DriveTable& drives_;
  std::shared_ptr<IxoController> controller_;
  std::shared_ptr<IxoFile> top_;
  std::shared_ptr<IxoFile> file_;
  QStringList found_;
  /// The items of the last pieces.
  std::vector<std::shared_ptr<IxoFile>> way_;
  bool onController_ = false;
  bool absent_ = false;
  OpenedObjects opened_;
};

}  // namespace trevane
