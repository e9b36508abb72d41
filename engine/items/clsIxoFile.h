#pragma once

#include "base/DateFormatter.h"
#include "base/Variant.h"
#include "engine/items/AddressResolver.h"
#include "engine/items/FileAccess.h"
#include "engine/model/IxoFile.h"
#include "engine/transfer/CrossControllerCopy.h"
#include "engine/transfer/HeldItem.h"
#include "engine/transfer/MoveRecord.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace trevane {

/// What is known of a child that was looked for.
struct FoundChild {
  enum class Presence { Absent, There, Unknown };
  Presence presence = Presence::Unknown;
  /// Of a child that is there, as far as the file system can tell.
  std::optional<QString> identity = {};
};

/// One file or folder somewhere in the workspace, named by its address. Made per use: pointed at an address,
/// used and destroyed, which releases every engine object it opened.
///
/// No member raises an error. Each sets `Result` to 0 first and to the error's number when it fails (-1 when
/// that number is 0), and answers an empty value then; `ResultText` is the engine's text for it. Before
/// SetPath, and after one that failed, every member fails with the reason why there is no item.
///
/// Long members call an observer with the name of each item within a folder. False ends the call:
/// CopyDiffCtrl as cancelled, the others with error::kCancelled.
class clsIxoFile {
 public:
  using DateToText = std::function<QString(Date)>;

  explicit clsIxoFile(const FileAccess& files, DateToText dateText = FormatDate);
  /// As FileAccess::FileAt gives it.
  clsIxoFile(const FileAccess& files, const QString& address, LookUp lookUp);
  ~clsIxoFile() = default;
  clsIxoFile(const clsIxoFile&) = delete;
  clsIxoFile& operator=(const clsIxoFile&) = delete;

  /// Of the last member that was called, 0 after success.
  [[nodiscard]] qint32 Result() const noexcept { return result_; }
  /// Empty after success.
  [[nodiscard]] const QString& ResultText() const noexcept { return resultText_; }
  /// The last SetPath failed because the item, or a folder on the way to it, is known not to be there.
  [[nodiscard]] bool IsAbsent() const noexcept { return absent_; }
  /// The address last given to SetPath, without a "\" at the end.
  [[nodiscard]] const QString& Address() const noexcept { return path_; }
  /// The pieces of the address of what SetPath found, below the drive or the controller as the file system
  /// spells them: LookUp::Navigate may have found what is written otherwise. Empty after a failure.
  [[nodiscard]] const QStringList& FoundPieces() const noexcept { return resolver_.FoundPieces(); }
  /// The attributes of the item of a piece of FoundPieces, as FileAttribute gives them, where SetPath has met
  /// it on its way. Nothing otherwise; Result is not touched then.
  [[nodiscard]] std::optional<qint32> AttributeOfPiece(qsizetype piece);
  [[nodiscard]] bool IsOnController() const noexcept { return resolver_.IsOnController(); }

  /// The engine object, nothing if unresolved.
  [[nodiscard]] const std::shared_ptr<trevane::IxoFile>& IxoFile() const noexcept { return resolver_.File(); }

  [[nodiscard]] QString CtrlName();
  [[nodiscard]] QString Name();
  /// Ends with the separator: followed by `Name` it is the full path on the controller.
  [[nodiscard]] QString Path();
  [[nodiscard]] QString FullPath();
  [[nodiscard]] QString FileType();
  /// What else is known of the item, for people, a line each.
  [[nodiscard]] QStringList Details();
  /// Bytes, in decimal; 0 where the file system does not know.
  [[nodiscard]] QString FileSize();
  [[nodiscard]] qint64 Size64();
  /// The engine's attributes, with TAG_CONTROLLER for an item on a controller.
  [[nodiscard]] qint32 FileAttribute();
  [[nodiscard]] QString DateCreated();
  [[nodiscard]] QString DateLastAccessed();
  [[nodiscard]] QString DateLastModified();
  /// Absent where the file system does not know the date, and after a failure.
  [[nodiscard]] Date CreatedDate();
  [[nodiscard]] Date AccessedDate();
  [[nodiscard]] Date ModifiedDate();
  /// What was learnt of this item's controller is asked anew from here on.
  void ForgetLearnt();
  /// The names of a folder's children, an array of texts.
  [[nodiscard]] Variant FileNames();
  /// A folder's children with all that is known of them.
  [[nodiscard]] Listing List();
  /// The same in batches as they are read, of which none is empty. The receiver calls nothing of the engine.
  /// It may let events run, and returns false to end the listing, which is no failure. An error that it
  /// raises ends the listing and is this member's failure.
  void ListInBatches(const ListingReceiver& receive);
  /// Temporary items that interrupted programs left in folders of this controller that were written to. Each
  /// is reported once.
  [[nodiscard]] std::vector<Leftover> TakeLeftovers();
  /// Equal for two addresses of one item where both are comparable; nothing when the file system cannot tell.
  [[nodiscard]] std::optional<QString> Identity();
  /// The identities of the folder that this leads to and of all that hold it, from the inside out; empty when
  /// the file system cannot tell.
  [[nodiscard]] QStringList FolderIdentities();
  /// Whether equal identities of both are one item, and different ones are two.
  [[nodiscard]] bool HasComparableIdentity(clsIxoFile& other);

  [[nodiscard]] Variant Value();
  void PutValue(const Variant& value);
  /// Execute opens a file with its program. Without, it has to be fetched first.
  [[nodiscard]] bool CanRun();
  Variant Execute(const QString& command);
  void Run();

  /// Resolves an address, whatever the object was resolved to before.
  void SetPath(const QString& address, LookUp lookUp = LookUp::Exact);

  /// To a full path on the same controller.
  void Move(const QString& destination, bool overwrite);
  /// Gives the item another name in its folder, replacing an item that has it.
  void Rename(const QString& newName);
  void Delete(const ItemObserver& observer = {});

  /// Copies into the folder `destinationAddress` of the same controller under `newName`, or under the own
  /// name when that is empty. Answers Result.
  qint32 Copy(const QString& destinationAddress, const QString& newName, bool overwrite,
              const ItemObserver& observer = {});

  /// Copies into a folder of another controller, asking for each item that exists. Answers Result, which is 0
  /// also when something was skipped; `Arrived` tells. With an address of fewer than two pieces nothing is
  /// done and the answer is -1.
  qint32 CopyDiffCtrl(const QString& destinationAddress, const QString& newName,
                      const ItemObserver& observer = {});
  /// The same into a folder that is open already.
  qint32 CopyDiffCtrl(clsIxoFile& folder, const QString& newName, const ItemObserver& observer = {});
  /// Of the last CopyDiffCtrl.
  [[nodiscard]] Arrival Arrived() const noexcept { return arrived_; }
  [[nodiscard]] qint64 ArrivedItems() const noexcept { return arrivedItems_; }
  [[nodiscard]] const LeftOutItems& LeftOut() const noexcept { return leftOut_; }

  /// Before a copy that is to become a move: remembers the item and everything below it.
  void RecordSource(const ItemObserver& observer = {});
  /// After it: deletes the item if it is as it was recorded and all of it is in `folder` under `newName` (the
  /// own name when that is empty). `replaced` means that something was there before, so that more proof is
  /// needed. What is not known to have arrived stays.
  void DeleteMoved(clsIxoFile& folder, const QString& newName, bool replaced,
                   const ItemObserver& observer = {});

  /// Looks for a child of this folder once, without a walk.
  [[nodiscard]] FoundChild FindChild(const QString& name);

  /// Opens `name` inside `folder`, a path on the controller, or inside this item when it is empty. `options`
  /// is left holding the option text that was composed from `folder` and it. Nothing on failure.
  [[nodiscard]] std::shared_ptr<trevane::IxoFile> AddIxoFile(const QString& name, const QString& folder,
                                                             QString& options);

  /// The child of that name, from the item's `Files`. Nothing on failure.
  [[nodiscard]] std::shared_ptr<trevane::IxoFile> GetIxoFile(const QString& name);
  /// Lets the engine drop a child that GetIxoFile gave. Leaves `Result` as it is.
  void ReleaseChild(const std::shared_ptr<trevane::IxoFile>& child) noexcept;

 private:
  /// The one exit of every member: runs `work` and turns what it raises into Result.
  template <class Work>
  auto Guarded(const Work& work) -> decltype(work());
  void SetFailure(const RunTimeError& failure);

  [[nodiscard]] trevane::IxoFile& File() const;
  /// Refuses a drive and a controller's top or root folder: they are never moved or deleted.
  [[nodiscard]] trevane::IxoFile& FileBelowTop() const;
  void BeginCopy();
  /// The end of a move.
  void LetGo() noexcept;
  void CopyAcross(const std::shared_ptr<trevane::IxoFile>& folder, const QString& newName,
                  const ItemObserver& observer);
  [[nodiscard]] QString CopyTarget(const QString& destinationAddress, const QString& newName);
  /// A share that is mounted twice has two identities for one item: a copy of an item onto itself looks like
  /// one that has replaced another item. Fails then, and where nothing shows it.
  void RequireTwoPlaces(const std::shared_ptr<trevane::IxoFile>& into, const QString& name) const;

  FileAccess files_;
  DateToText dateText_;
  std::optional<MoveRecord> record_;

  qint32 result_ = 0;
  QString resultText_;
  AddressResolver resolver_;
  QString path_;
  bool absent_ = false;
  /// Why there is no item.
  RunTimeError unresolved_;
  Arrival arrived_ = Arrival::Failed;
  qint64 arrivedItems_ = 0;
  LeftOutItems leftOut_;
  /// From RecordSource to the end of the move where a path is all that is known of a folder: holding it once
  /// more would only look for it once more.
  std::unique_ptr<HeldItem> heldSource_;
  std::unique_ptr<HeldItem> heldTarget_;
};

}  // namespace trevane
