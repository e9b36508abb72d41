#pragma once

#include "engine/model/Content.h"
#include "engine/providers/sftp/SftpServer.h"

#include <deque>
#include <memory>
#include <optional>

namespace trevane::sftp {

/// Reads a file with many blocks under way.
class Source final : public ContentSource {
 public:
  /// Folders and devices are refused without being opened.
  Source(Server& server, const Place& place, qint64 offset);

  [[nodiscard]] QByteArray Read(qint64 most) override;
  [[nodiscard]] std::optional<FileTraits> Traits() override;

 private:
  struct Block {
    quint64 offset = 0;
    quint32 length = 0;
    Request request;
  };

  void Ask();
  /// The next bytes; none at the end.
  [[nodiscard]] QByteArray TakeBlock();

  std::shared_ptr<Session> line_;
  QString text_;
  Attributes item_;
  OpenHandle handle_;
  std::deque<Block> blocks_;
  /// The first byte that was not asked for.
  quint64 next_ = 0;
  QByteArray rest_;
  bool isAtEnd_ = false;
};

/// Fails unless a source may be opened for an item of that kind.
void RequireContent(const Attributes& item, const QString& text);

/// As FileSystem::ReadMany: many files are open at once.
[[nodiscard]] std::vector<ReadResult> ReadFiles(Server& server, const QStringList& paths);

}  // namespace trevane::sftp
