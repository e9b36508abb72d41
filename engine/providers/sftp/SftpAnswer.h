#pragma once

#include "engine/providers/sftp/SftpPacket.h"

#include <QByteArray>
#include <QByteArrayView>

#include <optional>
#include <utility>
#include <variant>
#include <vector>

namespace trevane::sftp {

/// The codes of a status.
namespace status {
inline constexpr quint32 kOk = 0;
inline constexpr quint32 kEnd = 1;
inline constexpr quint32 kNoSuchFile = 2;
inline constexpr quint32 kPermissionDenied = 3;
inline constexpr quint32 kFailure = 4;
inline constexpr quint32 kBadMessage = 5;
inline constexpr quint32 kNoConnection = 6;
inline constexpr quint32 kConnectionLost = 7;
inline constexpr quint32 kNotSupported = 8;
}  // namespace status

struct StatusAnswer {
  quint32 code = status::kOk;
  /// As the server sent it; some send none.
  QByteArray text = {};

  [[nodiscard]] bool IsOk() const noexcept { return code == status::kOk; }
};

struct HandleAnswer {
  QByteArray handle;
};

struct DataAnswer {
  QByteArray bytes;
};

struct NameAnswer {
  struct Name {
    QByteArray name;
    /// A line as that of "ls -l", in the server's own form.
    QByteArray line;
    Attributes attributes;
  };
  std::vector<Name> names;
};

struct ExtendedAnswer {
  QByteArray bytes;
};

/// One packet of a server that belongs to a request.
struct Answer {
  quint32 id = 0;
  std::variant<StatusAnswer, HandleAnswer, DataAnswer, NameAnswer, Attributes, ExtendedAnswer> content = {};
};

/// The greeting of a server.
struct VersionAnswer {
  quint32 version = 0;
  /// Names and data.
  std::vector<std::pair<QByteArray, QByteArray>> extensions = {};
};

/// A packet without the length in front; nothing where it is no answer or is malformed. Takes no more memory
/// than the packet has bytes, some times over.
[[nodiscard]] std::optional<Answer> ParseAnswer(QByteArrayView packet);
[[nodiscard]] std::optional<VersionAnswer> ParseVersion(QByteArrayView packet);

}  // namespace trevane::sftp
