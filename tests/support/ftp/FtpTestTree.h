#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QtGlobal>

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <vector>

namespace trevane::test {

struct FtpTestItem {
  enum class Kind { File, Folder, Link };

  /// The last name of the path.
  QByteArray name = {};
  Kind kind = Kind::File;
  QByteArray content = {};
  /// Milliseconds since 1970 UTC.
  qint64 modified = 1700000000000;
  quint32 mode = 0644;
  /// Cannot be written, renamed or removed.
  bool isReadOnly = false;
  /// Listings and SIZE tell this in place of the size of the content; -1: they tell none.
  std::optional<qint64> shownSize = {};
  /// Makes the content each time it is read.
  std::function<QByteArray()> make = {};
  QByteArray target = {};
  /// Stays with the item when it is renamed.
  quint64 id = 0;

  [[nodiscard]] bool IsFolder() const { return kind == Kind::Folder; }
};

/// The files of the scripted server, for all threads. Paths are absolute, with "/" and in bytes; the top is
/// "/". No rule of names holds here: that is the server's.
class FtpTestTree final {
 public:
  FtpTestTree();

  /// Both make the folders above and overwrite what is there.
  void Add(const QByteArray& path, const FtpTestItem& item);
  void AddFile(const QByteArray& path, const QByteArray& content);
  void AddFolder(const QByteArray& path);
  void Clear();

  [[nodiscard]] std::optional<FtpTestItem> Find(const QByteArray& path) const;
  /// Without links, none of which leads to another one: what LIST, CWD, SIZE and RETR follow.
  [[nodiscard]] QByteArray Followed(const QByteArray& path) const;
  /// "<none>" where no file is.
  [[nodiscard]] QByteArray ContentOf(const QByteArray& path) const;
  /// By name.
  [[nodiscard]] std::vector<FtpTestItem> ChildrenOf(const QByteArray& folder) const;
  /// All paths, sorted; folders with "/" behind them.
  [[nodiscard]] QByteArrayList Paths() const;

  /// Changes an item that is there; false where it is not.
  bool Change(const QByteArray& path, const std::function<void(FtpTestItem& item)>& change);
  /// With all that is below; false where it is not.
  bool Remove(const QByteArray& path);
  /// With all that is below; what is at `to` is replaced. False where `from` is not.
  bool Rename(const QByteArray& from, const QByteArray& to);

  /// The folder of an absolute path.
  [[nodiscard]] static QByteArray ParentOf(const QByteArray& path);
  [[nodiscard]] static QByteArray NameOf(const QByteArray& path);
  /// Without "..", "." and needless "/".
  [[nodiscard]] static QByteArray Clean(const QByteArray& path);

 private:
  void Put(const QByteArray& path, FtpTestItem item);

  mutable std::mutex mutex_;
  std::map<QByteArray, FtpTestItem> items_;
  quint64 lastId_ = 0;
};

}  // namespace trevane::test
