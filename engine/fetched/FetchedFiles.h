#pragma once

#include "engine/fetched/FetchSteps.h"
#include "engine/fetched/FetchedFile.h"
#include "engine/fetched/FetchedFolder.h"
#include "engine/items/FileAccess.h"
#include "platform/OpenWithProgram.h"

#include <QFileSystemWatcher>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <functional>
#include <memory>
#include <vector>

namespace trevane {

class clsIxoCtrl;
class clsIxoFile;

/// The files of controllers without programs of their own: they are fetched to a private folder of this
/// computer, opened with their programs there, and watched until the program ends. What was changed can be
/// put back. A file that was never changed is removed at the end, or by the next start; one that was changed
/// and not put back never is.
class FetchedFiles final : public QObject {
  Q_OBJECT

 public:
  struct Parts {
    FileAccess files;
    /// The folder below which each running program has one of its own; need not exist.
    QString place;
    std::function<OpenOutcome(const QString& path)> open;
    /// Milliseconds of a clock that never goes back.
    std::function<qint64()> now;
  };
  using File = std::shared_ptr<FetchedFile>;

  explicit FetchedFiles(Parts parts);
  ~FetchedFiles() override;

  /// Takes over what programs that have ended without order have left.
  void Recover();

  /// The copy of that file that was fetched last; null where there is none. Fails with a RunTimeError.
  [[nodiscard]] File CopyOf(clsIxoFile& file) const;

  /// Fetches the file, unless a copy shows that it is still the same, and opens it. A copy that was or may
  /// have been changed is left alone: there is one more then. Fails with a RunTimeError.
  void Run(clsIxoFile& file);
  /// Opens a copy as it is. Fails with a RunTimeError.
  void Open(FetchedFile& file) const;

  /// A file about which the user is to be asked; null where there is none.
  [[nodiscard]] File NextToAsk() const;
  /// The address of the file on its controller; empty where that is not connected.
  [[nodiscard]] QString AddressOf(const FetchedRecord& record) const;
  /// The name under which its controller is connected, or was.
  [[nodiscard]] QString ControllerOf(const FetchedRecord& record) const;
  /// Another machine answers there now than the one that it was fetched from. Asks the controller; false
  /// where that fails or nothing tells machines apart.
  [[nodiscard]] bool IsOfAnotherMachine(const FetchedRecord& record) const;
  /// The user allows that a file on the controller that is not the fetched one any more is replaced.
  using MayReplace = std::function<bool()>;
  enum class PutBackResult {
    Done,
    /// The user does not.
    Refused,
    /// It is being written to once more: it will be asked about again.
    ChangedAgain
  };
  /// Puts the content back for which `content` is the hash, never on another machine. Fails with a
  /// RunTimeError; the copy stays then.
  [[nodiscard]] PutBackResult PutBack(FetchedFile& file, const QByteArray& content,
                                      const MayReplace& mayReplace);

  struct Kept {
    enum class Why {
      Changed,
      /// A program seems to have it open, or has left something beside it.
      InUse,
      /// Its record cannot be read: nobody knows where it belongs.
      Unknown
    };
    QString name;
    /// Empty where it is not known.
    QString controller;
    /// The folder that holds it.
    QString folder;
    Why why = Why::Changed;
    /// FetchedFile::Beside
    QStringList beside = {};
  };
  /// The end of the program: removes every copy that was not changed and is not open. Returns the others.
  [[nodiscard]] std::vector<Kept> End();

  /// Looks for changes; a timer calls it as long as there are files.
  void Look();

 Q_SIGNALS:
  /// NextToAsk gives a file. Repeated until it gives none.
  void ToBeAsked();

 private:
  [[nodiscard]] FetchedRecord RecordOf(clsIxoFile& file) const;
  [[nodiscard]] std::shared_ptr<clsIxoCtrl> ConnectedFor(const FetchedRecord& record) const;
  [[nodiscard]] std::shared_ptr<FetchedFolder> OwnFolder();
  [[nodiscard]] File Fetch(clsIxoFile& file, const File& old);
  void Watch(const FetchedFile& file);
  void Unwatch(const FetchedFile& file);
  [[nodiscard]] static Kept KeptOf(const FetchedFile& file);
  void AddUnknown(std::vector<Kept>& kept) const;
  void RecoverFrom(const std::shared_ptr<FetchedFolder>& folder);
  void RemoveUnchangedRecovered();
  void OfferToNewConnections();
  void NoteWrite(const QString& path);
  void NoteWriteBeside(const QString& folder);
  void SetPace(bool isReading);

  Parts parts_;
  QFileSystemWatcher watcher_;
  QTimer timer_;
  /// This program's own, once it was needed, and those that were recovered.
  std::vector<std::shared_ptr<FetchedFolder>> folders_;
  std::shared_ptr<FetchedFolder> own_;
  std::vector<File> files_;
  /// Folders of files without a record that can be read.
  QStringList unknown_;
  /// The controllers that were connected when it was looked last.
  std::vector<std::weak_ptr<clsIxoCtrl>> connected_;
};

}  // namespace trevane
