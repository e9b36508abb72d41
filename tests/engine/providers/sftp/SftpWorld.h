#pragma once

#include "engine/files/FileSystem.h"
#include "tests/engine/providers/sftp/PipeChannel.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace trevane::test {

/// A folder of this computer, and a file system of it through a server at the other end of a pipe.
class SftpWorld {
 public:
  SftpWorld() = default;

  /// `wrap` stands around each pipe.
  [[nodiscard]] std::shared_ptr<FileSystem> Open(const PipeConnector::Wrap& wrap = {},
                                                 const std::shared_ptr<CallControl>& control = {});
  /// The path of an item of the folder for such a file system.
  [[nodiscard]] QString At(const QString& name) const;

  // What stands there, past the server.
  [[nodiscard]] QString OnDisk(const QString& name) const { return folder_.filePath(name); }
  void Write(const QString& name, const QByteArray& content);
  void MakeFolder(const QString& name);
  /// The whole tree, "folder/file=content" and "folder/", sorted.
  [[nodiscard]] QStringList Tree() const;
  /// Removes all of it.
  void Clear();

 private:
  QTemporaryDir folder_;
};

/// Skips a test where there is no server.
class SftpTest : public ::testing::Test {
 protected:
  void SetUp() override;
  SftpWorld world_;
};

}  // namespace trevane::test
