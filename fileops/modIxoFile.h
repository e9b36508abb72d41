#pragma once

#include "engine/controllers/EventLog.h"
#include "engine/items/FileAccess.h"
#include "engine/transfer/LeftOutItem.h"
#include "fileops/OperationHost.h"
#include "fileops/OperationState.h"
#include "prompts/UserPrompts.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace trevane {

class clsIxoFile;

/// What a delete acts on, fixed when the command is given.
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
/// in the log for each that is done; the first failure is told with one fixed message and ends the operation,
/// and what was done before it stays done. What a copy between controllers had to leave out is told in one
/// message at the very end, whatever the end is. Nothing is thrown. When a routine returns, on whatever way,
/// the main window is enabled and no gauge is left. A call while another is running does nothing and answers
/// true.
class modIxoFile final {
 public:
  /// All of them outlive this.
  struct Parts {
    FileAccess files;
    EventLog& log;
    OperationHost& host;
    OperationState& state;
  };

  explicit modIxoFile(const Parts& parts) : parts_(parts) {}
  modIxoFile(const modIxoFile&) = delete;
  modIxoFile& operator=(const modIxoFile&) = delete;

  /// Pastes the clipboard set into the folder `destination`: moves when nFileOpMode is kCut, otherwise
  /// copies. Works on the set as it is when this is called, and leaves it. True when it came to its end or
  /// was cancelled, false after a failure, which has been told.
  bool Transfer(const clsClipBrd& destination);

  /// Deletes what the request names, after asking. False only after a failure, which has been told.
  bool Delete(const DeleteRequest& request);

  /// The addresses of the entries that the last Transfer or Delete took away from where they were, in order,
  /// also when it failed: files and folders that are known not to be there any more.
  [[nodiscard]] const QStringList& GoneAddresses() const noexcept { return gone_; }
  /// How many entries of the clipboard set the last Transfer copied or moved, wholly or in part; those that
  /// were skipped do not count.
  [[nodiscard]] int TransferredEntries() const noexcept { return transferred_; }
  /// All of them left their old places.
  [[nodiscard]] bool HasMoved() const noexcept { return moved_ > 0 && moved_ == transferred_; }

  /// Asks whether the item may be deleted; answers like the overwrite question, and like there closing the
  /// box answers "Yes All".
  [[nodiscard]] static int AskRemove(UserPrompts& prompts, const QString& name);

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
  void TellLeftOut();
  /// Whether the entry would meet itself at the destination, whatever the addresses say; also true when that
  /// could not be asked. `reason_` tells which of the two. A file system that cannot tell makes it false.
  [[nodiscard]] bool IsOntoItself(clsIxoFile& source, clsIxoFile& folder, const QString& address);
  [[nodiscard]] bool DeleteItems(const DeleteRequest& request, const std::function<void()>& beforeFirst);
  [[nodiscard]] bool DeleteNode(const DeleteRequest& request, const std::function<void()>& beforeFirst);
  /// Lets window events run, and tells whether the program is ending.
  [[nodiscard]] bool IsClosedNow();
  [[nodiscard]] bool DeleteOne(const QString& address);
  /// Nothing stands there; false when that could not be asked.
  [[nodiscard]] bool IsKnownAbsent(const QString& address);
  /// Something stands there; false when that could not be asked.
  [[nodiscard]] bool IsSeen(const QString& address);
  void NoteIfGone(const QString& address);

  Parts parts_;
  QStringList gone_;
  int transferred_ = 0;
  int moved_ = 0;
  /// Of the entry that failed: for a delete its name, and why.
  QString item_;
  QString reason_;
  /// By the Transfer that is running.
  LeftOutItems leftOut_;
  /// Window events run while an operation does: a second one has to wait.
  bool running_ = false;
};

}  // namespace trevane
