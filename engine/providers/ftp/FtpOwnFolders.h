#pragma once

#include <QByteArray>
#include <QHash>

namespace trevane::ftp {

/// Folders of a server that were seen to be no links, by path. The fact "unique" of each shows later that
/// nothing has taken its place: one question instead of a listing. Where the server tells none, its path is
/// all there is.
class OwnFolders {
 public:
  /// `unique` is empty where it is not told.
  void Add(const QByteArray& path, const QByteArray& unique) { folders_.insert(path, unique); }
  /// A folder that was just made here: the next look tells what it is known by.
  void AddMade(const QByteArray& path) { folders_.insert(path, {}); }
  void Remove(const QByteArray& path) { folders_.remove(path); }
  void Clear() { folders_.clear(); }
  /// After a rename.
  void Move(const QByteArray& from, const QByteArray& to);

  [[nodiscard]] bool Knows(const QByteArray& path) const { return folders_.contains(path); }
  /// Whether what is now told of a path is the folder that was seen there.
  [[nodiscard]] bool Has(const QByteArray& path, const QByteArray& unique);
  /// Whether `folder` or one above it is known by that fact: what has it as well leads there.
  [[nodiscard]] bool IsAt(QByteArray folder, const QByteArray& unique, char separator) const;

 private:
  QHash<QByteArray, QByteArray> folders_;
};

}  // namespace trevane::ftp
