#pragma once

#include "engine/controllers/EventLog.h"
#include "engine/items/FileAccess.h"
#include "engine/transfer/LeftOutItem.h"
#include "fileops/OperationHost.h"
#include "fileops/OperationState.h"
#include "fileops/SetProgress.h"
#include "prompts/UserPrompts.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace trevane {

class FileSetCopy;
class clsIxoFile;

/// The items of a delete, fixed when the command is given.
struct DeleteRequest {
  /// Which view has the focus.
  enum class Side { Neither, List, Tree };
  struct Item {
    QString text;
    qint32 tag = 0;
  };

  Side side = Side::Neither;
  /// List side: the address of the folder that the list shows, and its selected items in list order.
  QString basePath;
  std::vector<Item> items;
  /// Tree side: the current node.
  QString nodeAddress;
  qint32 nodeTag = 0;
};

/// All bulk work on files: the paste of the clipboard set, and the delete. One entry at a time, with a line
/// in the log for each that is done; small files that follow each other share their round trips where they go
/// to another controller, and the results are the same. The first failure is reported with one fixed message
/// and ends the operation; entries done before it stay done. Items that a copy between controllers left out
/// are reported in one message at the end, also after a failure. Nothing is thrown. When a routine returns
/// the main window is enabled and the gauge is closed. A call while another is running does nothing and
/// answers true.
class modIxoFile final {
 public:
  /// All of them outlive this.
  struct Parts {
    FileAccess files;
    EventLog& log;
    OperationHost& host;
    OperationState& state;
  };

  explicit modIxoFile(const Parts& parts);
  ~modIxoFile();
  modIxoFile(const modIxoFile&) = delete;
  modIxoFile& operator=(const modIxoFile&) = delete;

  /// Pastes the clipboard set into the folder `destination`: moves when nFileOpMode is kCut, otherwise
  /// copies. Works on the set as it is at the call and does not change it. True when the transfer was
  /// finished or cancelled, false after a failure, which has been reported.
  bool Transfer(const clsClipBrd& destination);

  /// Deletes what the request names, after asking. False only after a failure, which has been reported.
  bool Delete(const DeleteRequest& request);

  /// The addresses of the entries that the last Transfer or Delete removed, in order, also when it failed:
  /// files and folders that are known not to be there any more.
  [[nodiscard]] const QStringList& GoneAddresses() const noexcept { return gone_; }
  /// The number of entries that the last Transfer copied or moved, wholly or in part, without skipped ones.
  [[nodiscard]] int TransferredEntries() const noexcept { return transferred_; }
  /// All of them were moved.
  [[nodiscard]] bool HasMoved() const noexcept { return moved_ > 0 && moved_ == transferred_; }

 private:
  enum class Step {
    /// Or skipped by the user.
    Done,
    /// By the gauge's Cancel.
    Cancelled,
    /// By the Cancel of a question.
    Ended,
    Failed
  };

  [[nodiscard]] Step TransferEntry(const clsClipBrd& entry, const clsClipBrd& destination, bool move);
  [[nodiscard]] bool TransferEntries(const clsClipBrds& entries, const clsClipBrd& into, bool move);
  /// Both entries are files of one folder of another controller than the destination's.
  [[nodiscard]] static bool CanShareBatch(const clsClipBrd& entry, const clsClipBrd& other,
                                          const clsClipBrd& into);
  /// Transfers the entries from `at` on that can go in a batch, and moves `at` behind them. `failed_` is the
  /// item of a failure.
  [[nodiscard]] Step TransferBatch(const clsClipBrds& entries, qint32& at, const clsClipBrd& into, bool move);
  /// Transfers alone the entry before `next` that a batch has left, unless an entry before it has ended the
  /// transfer. `step` is how that one went.
  [[nodiscard]] Step TransferLeft(Step step, const clsClipBrds& entries, qint32 next, const clsClipBrd& into,
                                  bool move);
  /// For the set that was opened: begins `progress_` anew where the entry at `at` is not among its entries.
  void CountSet(const clsClipBrds& entries, qint32 at, const clsClipBrd& into);
  /// After the entry before `next`: the gauge advances and window events run. Done, or Cancelled.
  [[nodiscard]] Step AfterEntry(const QString& name, qint32 next);
  /// Shows what the gauge tells of the entry at `at` before it is begun.
  void ShowEntry(const QString& name, qint32 at);
  void ReportLeftOut();
  /// The entry and the destination are the same item, or one holds the other, whatever their addresses are;
  /// also true when that could not be asked. `reason_` holds which of the two. False where the file system
  /// cannot tell.
  [[nodiscard]] bool IsOntoItself(clsIxoFile& source, clsIxoFile& folder, const QString& address);
  [[nodiscard]] bool DeleteItems(const DeleteRequest& request, const std::function<void()>& beforeFirst);
  [[nodiscard]] bool DeleteNode(const DeleteRequest& request, const std::function<void()>& beforeFirst);
  /// Lets window events run. True when the program is ending.
  [[nodiscard]] bool IsClosedNow();
  [[nodiscard]] bool DeleteOne(const QString& address);
  /// There is no such item; false when that could not be asked.
  [[nodiscard]] bool IsKnownAbsent(const QString& address);
  /// There is such an item; false when that could not be asked.
  [[nodiscard]] bool IsSeen(const QString& address);
  void NoteIfGone(const QString& address);
  /// Of the last member of `file`.
  void NoteFailure(const clsIxoFile& file);

  Parts parts_;
  /// Of the current Transfer, while files of one folder follow each other.
  std::unique_ptr<FileSetCopy> set_;
  /// Of those files.
  std::optional<SetProgress> progress_;
  QString failed_;
  QStringList gone_;
  int transferred_ = 0;
  int moved_ = 0;
  /// The name of the item that a delete failed for, and the reason of the last failure.
  QString item_;
  QString reason_;
  /// A call was ended by the user or by the end of the program: the operation ends without a message.
  bool cancelled_ = false;
  /// By the current Transfer.
  LeftOutItems leftOut_;
  /// Window events run during an operation: a second one is refused.
  bool running_ = false;
};

}  // namespace trevane
