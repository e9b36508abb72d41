#pragma once

#include "engine/files/FileSystem.h"
#include "engine/providers/ftp/FtpDialogue.h"
#include "engine/providers/ftp/FtpSettings.h"
#include "tests/support/ftp/FtpTestServer.h"

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace trevane::test {

/// Longer than a block of the server, so that half of it can arrive.
[[nodiscard]] QByteArray LongContent(char letter);

/// Whether the work reports a failure. One without words fails the test.
[[nodiscard]] bool Fails(const std::function<void()>& work);

/// The scripted controller, with a folder "W" for the test.
class FtpServerWorld final {
 public:
  explicit FtpServerWorld(const FtpVices& vices) : server_(vices) { Clear(); }

  [[nodiscard]] FtpTestServer& Server() { return server_; }
  /// A new connection. `timeout` in seconds.
  [[nodiscard]] std::shared_ptr<FileSystem> Open(int timeout = 20);
  [[nodiscard]] std::shared_ptr<FileSystem> OpenWith(const std::function<void(FtpSettings&)>& change);
  void Clear();
  void Write(const QByteArray& name, const QByteArray& content);
  /// "<none>" where the file is missing.
  [[nodiscard]] QByteArray Content(const QByteArray& name);
  /// Some file has it, under its own name or another one.
  [[nodiscard]] bool Has(const QByteArray& content);
  [[nodiscard]] static QString At(const char* name) { return QStringLiteral("W\\") + QLatin1String(name); }
  /// Waits until no client is there: what it has sent is done then.
  void AwaitQuiet();
  /// Ends the line of the file system that was opened last, and waits until that can be seen there.
  void Cut();

 private:
  FtpTestServer server_;
  /// Of the last file system.
  FtpDialogue* last_ = nullptr;
};

/// One operation, and what must be true after it, whether it has failed or not.
struct FtpWork {
  const char* name;
  std::function<void(FtpServerWorld& world)> prepare;
  std::function<void(FileSystem& files)> run;
  std::function<void(FtpServerWorld& world, bool failed)> check;
};

/// Upload, replace, download, rename, remove, list.
[[nodiscard]] const std::vector<FtpWork>& FtpWorks();

}  // namespace trevane::test
