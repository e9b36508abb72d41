#pragma once

#include <QString>
#include <QStringList>

#include <memory>

namespace trevane {

class IxoFile;
class IxoFiles;

class IxoController {
 public:
  virtual ~IxoController() = default;

  /// The collection whose item at the 32-bit integer 0 is the top folder. The local-file controller's holds
  /// one item a drive instead, in the order of the drive table.
  [[nodiscard]] virtual std::shared_ptr<IxoFiles> Files() = 0;

  /// Identifies the controller within IxoControllers for as long as it is open; counts from 1 and is never
  /// used again.
  [[nodiscard]] virtual qint32 Index() = 0;

  /// Names that differ only in case are different items. The default does not know.
  [[nodiscard]] virtual bool IsCaseSensitive() { return false; }

  /// The name that the engine gave the controller.
  [[nodiscard]] virtual QString Name() = 0;

  /// What the user must know of the connection all the time; mostly empty. Known from the start.
  [[nodiscard]] virtual QString Notice() { return {}; }

  /// What else is known of the connection, for people, a line each. May cost a round trip.
  [[nodiscard]] virtual QStringList Details() { return {}; }

  /// Opens a file or folder of this controller. With an empty option `name` is a path from the controller's
  /// top; with "Path=" followed by a folder, a single name inside that folder. May yield nothing.
  [[nodiscard]] virtual std::shared_ptr<IxoFile> OpenFile(const QString& name, const QString& option) = 0;

  /// As OpenFile with "Path=", for a folder that was there a moment ago: it need not be looked for, and what
  /// is done with it fails when it is gone. The default looks.
  [[nodiscard]] virtual std::shared_ptr<IxoFile> OpenKnownFolder(const QString& name, const QString& folder) {
    return OpenFile(name, QStringLiteral("Path=") + folder);
  }
};

}  // namespace trevane
