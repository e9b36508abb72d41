#pragma once

#include "engine/model/Content.h"
#include "engine/providers/local/linux/FileContent.h"
#include "platform/linux/FileDescriptor.h"

#include <QByteArray>

#include <functional>

namespace trevane::local {

/// Builds the content of a file under a temporary name beside it. Only the item that was seen before is
/// replaced, not one that appeared meanwhile.
class FileSink final : public ContentSink {
 public:
  struct Parts {
    const Credentials& user;
    /// For failures.
    TextOf text;
    /// Called before the content is put in place; fails when it must not be any more. May be empty.
    std::function<void()> check = {};
  };

  /// `place` keeps its folder open. A file that is there must be writable (RequireWritable).
  FileSink(FilePlace place, const SinkRequest& request, Parts parts);
  ~FileSink() override;

  [[nodiscard]] std::optional<QString> TemporaryName() const override;
  void Write(const QByteArray& piece) override;
  [[nodiscard]] SeenItem Commit() override;

 private:
  void MakeTemporary();
  /// What is set before the file has its name.
  void GiveTraits();
  /// False when it is missing. Fails when another item has taken its place.
  [[nodiscard]] bool IsOldStillThere() const;
  [[nodiscard]] SeenItem RequirePlaced(const struct statx& made);
  [[noreturn]] void FailCode(int code) const;

  FilePlace place_;
  SinkRequest request_;
  Parts parts_;
  FileDescriptor file_;
  /// Empty when nothing is left to be removed.
  QByteArray temporary_;
  qint64 written_ = 0;
  bool reserved_ = false;
};

}  // namespace trevane::local
