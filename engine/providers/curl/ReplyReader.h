#pragma once

#include "engine/providers/ftp/FtpReply.h"

#include <QByteArray>
#include <QByteArrayView>

#include <vector>

namespace trevane::curl {

/// Makes replies of the lines that a server sends.
class ReplyReader final {
 public:
  /// A line with its end.
  void Add(QByteArrayView line);
  void Clear();
  /// Lines of a reply have come, but not its last one.
  [[nodiscard]] bool HasPart() const noexcept { return isOpen_; }
  /// All since Clear, in the order of the server.
  [[nodiscard]] const std::vector<ftp::Reply>& Replies() const noexcept { return replies_; }
  /// A reply with no code where there was none.
  [[nodiscard]] ftp::Reply Last() const;
  /// The first one of that code; null where there is none.
  [[nodiscard]] const ftp::Reply* Find(int code) const noexcept;
  /// One of them tells that the server begins a transfer.
  [[nodiscard]] bool TellsOfBegin() const noexcept;

  /// Whether bytes of a server end with a whole reply.
  [[nodiscard]] static bool EndsWithReply(QByteArrayView bytes);

 private:
  std::vector<ftp::Reply> replies_;
  /// Lines of a reply whose last one has not come.
  QByteArray open_;
  bool isOpen_ = false;
};

}  // namespace trevane::curl
