#pragma once

#include "platform/HeldLock.h"

#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace trevane {

/// The folder in which one running program keeps the files that it fetched, for its user alone. Its name
/// cannot be guessed, and a lock beside it shows that it is in use. Each file is in a folder of its own, so
/// that equal names do not meet; its record stands beside that folder.
class FetchedFolder final {
 public:
  /// A new one below `place`, which is made, too. Fails with a RunTimeError.
  [[nodiscard]] static std::unique_ptr<FetchedFolder> Make(const QString& place);
  /// Those below `place` that no running program holds; they are held then.
  [[nodiscard]] static std::vector<std::unique_ptr<FetchedFolder>> TakeAbandoned(const QString& place);

  ~FetchedFolder() = default;
  FetchedFolder(const FetchedFolder&) = delete;
  FetchedFolder& operator=(const FetchedFolder&) = delete;

  [[nodiscard]] const QString& Path() const noexcept { return path_; }

  /// What is there, one id a file.
  [[nodiscard]] QStringList Items() const;
  /// An id for one more.
  [[nodiscard]] QString NewItem() const;
  /// The folder of a file.
  [[nodiscard]] QString FolderOf(const QString& item) const { return path_ + u'/' + item; }
  [[nodiscard]] QString RecordOf(const QString& item) const {
    return FolderOf(item) + QStringLiteral(".record");
  }
  /// Where its content is built.
  [[nodiscard]] QString PartOf(const QString& item) const { return FolderOf(item) + QStringLiteral(".part"); }

  /// What stands beside the file, but for the copies of an earlier content that editors make: unsaved edits,
  /// the marks of programs that have it open, other files.
  [[nodiscard]] QStringList Beside(const QString& item, const QString& name) const;

  /// Removes the file with the copies that editors have made of it, its folder and its record. False when
  /// anything stands beside it: all of it stays then.
  bool RemoveItem(const QString& item, const QString& name) const;

  /// Removes the folder when it holds nothing, and then the lock, when this ends. False when it holds
  /// anything.
  bool RemoveIfEmpty();

 private:
  FetchedFolder(QString path, std::unique_ptr<HeldLock> lock)
      : path_(std::move(path)), lock_(std::move(lock)) {}

  QString path_;
  std::unique_ptr<HeldLock> lock_;
};

}  // namespace trevane
