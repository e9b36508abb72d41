#pragma once

#include "engine/model/FileEntry.h"
#include "engine/remote/LearntClock.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <map>
#include <memory>
#include <optional>

namespace trevane {

/// What listings and look-ups of one file system told, folder by folder, as long as the clock lets it hold.
/// The window's thread's alone.
class LearntMemory final {
 public:
  /// What is known of an item.
  struct Known {
    /// Nothing: it is missing.
    std::optional<FileEntry> entry;
  };

  LearntMemory(std::shared_ptr<LearntClock> clock, bool caseSensitive)
      : clock_(std::move(clock)), caseSensitive_(caseSensitive) {}
  LearntMemory(const LearntMemory&) = delete;
  LearntMemory& operator=(const LearntMemory&) = delete;

  void LearnListing(const QString& folder, const Listing& entries);
  void LearnDetails(const QString& path, const QStringList& lines);
  void LearnItem(const QString& path, const std::optional<FileEntry>& entry);

  /// Null when the folder must be listed. Valid until the next call that is not const.
  [[nodiscard]] const Listing* ListingOf(const QString& folder) const;
  /// Nothing when the item must be asked for. That a name is in no listing proves nothing where the file
  /// system may have other spellings of it, and a listing does not always tell where a link leads.
  [[nodiscard]] std::optional<Known> ItemAt(const QString& path) const;

  [[nodiscard]] std::optional<QStringList> DetailsOf(const QString& path) const;

  /// An item was made, changed or removed: forgets its folder, and what is below the item. Once a link has
  /// been seen, other paths may lead to them, and all is forgotten.
  void ForgetAround(const QString& path);
  void ForgetAll();

 private:
  struct Listed {
    Listing entries;
    /// By key; -1 where two have the same, or the item has changed since.
    QHash<QString, qsizetype> positions;
    LearntClock::Moment moment;
  };
  struct Found {
    std::optional<FileEntry> entry;
    LearntClock::Moment moment;
  };
  /// Those of one item: they are asked for one at a time.
  struct Details {
    QString path;
    QStringList lines;
    LearntClock::Moment moment;
  };
  struct Folder {
    std::optional<Listed> listed;
    QHash<QString, Found> found;
  };

  [[nodiscard]] QString Key(const QString& text) const;
  [[nodiscard]] const Folder* FolderAt(const QString& key) const;
  /// Another date of the item may hold by now. The listing that names it still tells the names.
  void ForgetItem(const QString& path);
  /// Keeps the memory from growing without end in a long command.
  void MakeRoom(qsizetype entries);

  const std::shared_ptr<LearntClock> clock_;
  const bool caseSensitive_;
  std::map<QString, Folder> folders_;
  qsizetype entries_ = 0;
  std::optional<Details> details_;
  bool sawLink_ = false;
};

}  // namespace trevane
