#pragma once

#include "engine/model/Content.h"
#include "engine/providers/sftp/SftpServer.h"

#include <deque>
#include <memory>
#include <optional>
#include <utility>

namespace trevane::sftp {

/// Reads an open file from front to back with many blocks under way. Handle and session must outlive it.
class BlockReader {
 public:
  /// `size` is the size that the file had; it may have another one by now. At most `atOnce` blocks are under
  /// way.
  BlockReader(Session& line, QByteArray handle, quint64 offset, quint64 size, std::size_t atOnce)
      : line_(line), handle_(std::move(handle)), size_(size), next_(offset), atOnce_(atOnce) {}

  /// Sends what can be under way now.
  void Ask();
  /// The next bytes; none at the end.
  [[nodiscard]] QByteArray Take(const QString& text);
  /// The next bytes are there already.
  [[nodiscard]] bool IsAnswered() const noexcept {
    return blocks_.empty() || blocks_.front().request.IsAnswered();
  }
  [[nodiscard]] bool IsAtEnd() const noexcept { return isAtEnd_; }

 private:
  struct Block {
    quint64 offset = 0;
    quint32 length = 0;
    Request request;
  };

  Session& line_;
  const QByteArray handle_;
  const quint64 size_;
  /// The first byte that was not asked for.
  quint64 next_;
  const std::size_t atOnce_;
  std::deque<Block> blocks_;
  bool isAtEnd_ = false;
};

/// A file that is read from front to back.
class Source final : public ContentSource {
 public:
  /// Folders and devices are refused without being opened.
  Source(Server& server, const Place& place, qint64 offset);

  [[nodiscard]] QByteArray Read(qint64 most) override;
  [[nodiscard]] std::optional<FileTraits> Traits() override;

 private:
  std::shared_ptr<Session> line_;
  QString text_;
  Attributes item_;
  OpenHandle handle_;
  std::optional<BlockReader> blocks_;
  QByteArray rest_;
};

/// Fails unless a source may be opened for an item of that kind.
void RequireContent(const Attributes& item, const QString& text);

}  // namespace trevane::sftp
