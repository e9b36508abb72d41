#pragma once

#include "engine/files/FileSystem.h"
#include "engine/model/ConnectionHelp.h"

#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace trevane {

class CallControl;

/// Opens a file system for a controller: the machine and option texts of IxoWorkspace::AddController.
struct FileSystemRequest {
  QString machine;
  QString option;
  /// For a provider that runs on a thread of its own: what its calls must know of the window that waits for
  /// them. Null on the window's thread.
  std::shared_ptr<CallControl> control = {};
};

/// One provider: the name that AddController takes and the function that opens its file system. It throws
/// RunTimeError when it cannot connect.
struct Provider {
  using Opener = std::function<std::shared_ptr<FileSystem>(const FileSystemRequest&)>;

  QString name;
  Opener open;
  /// Its calls may take long or never return: all of them, `open` too, run on a thread of the controller's
  /// own.
  bool isSlow = false;
  /// Of a slow one: describes the type of an item by its entry alone, on the window's thread. Null for the
  /// default.
  std::function<QString(const FileEntry&)> typeName = {};
  /// Its calls are those of this computer's own system, which tells nothing of the bytes while it writes
  /// them.
  bool tellsNoWriting = false;
  /// What can be written as machine and option.
  ConnectionHelp help = {};
  /// Where the connections of one controller share something: makes, once a controller, what opens each of
  /// them. Else null, and `open` does.
  std::function<Opener()> newOpener = {};
};

using ProviderTable = std::vector<Provider>;

}  // namespace trevane
