#pragma once

#include "engine/model/IxoFile.h"
#include "engine/transfer/ArrivalCheck.h"

#include <QString>

#include <memory>
#include <vector>

namespace trevane {

class OpenedObjects;

/// The items that a copy has made below its top folder, so that it can take them back.
class MadeItems final {
 public:
  /// `folder` is the path from the top to the folder that holds the item, empty for the top itself.
  void AddFolder(const QString& folder, const QString& name);
  void AddFile(const QString& folder, const ArrivedFile& file);
  void AddLink(const QString& folder, const QString& name, const QString& text);
  void Forget() noexcept { items_.clear(); }

  /// Deletes them, the last one first, and returns their number. What another program has replaced, and a
  /// folder that holds anything else, stays.
  qint64 TakeBack(const std::shared_ptr<IxoFile>& top) noexcept;

 private:
  enum class Kind { Folder, File, Link };
  struct Item {
    Kind kind;
    QString folder;
    QString name;
    /// Of a file.
    qint64 size = 0;
    Date modified = {};
    /// Of a link.
    QString text = {};
  };

  /// Null where it is not there any more.
  [[nodiscard]] static std::shared_ptr<IxoFile> Open(const std::shared_ptr<IxoFile>& top, const QString& path,
                                                     OpenedObjects& opened);
  [[nodiscard]] static bool IsStill(IxoFile& there, const Item& item);
  [[nodiscard]] static bool Remove(const std::shared_ptr<IxoFile>& folder, const Item& item);

  std::vector<Item> items_;
};

}  // namespace trevane
