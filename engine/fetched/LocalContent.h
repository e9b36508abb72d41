#pragma once

#include <QByteArray>
#include <QCryptographicHash>
#include <QFile>
#include <QString>

#include <optional>

namespace trevane {

/// What shows for nothing that a file was written to.
struct LocalStamp {
  bool exists = false;
  qint64 size = -1;
  /// Milliseconds since 1970.
  qint64 modified = 0;
  /// Of its content or its properties, where the system tells.
  qint64 changed = 0;

  friend bool operator==(const LocalStamp&, const LocalStamp&) = default;
};

[[nodiscard]] LocalStamp StampOf(const QString& path);

/// The SHA-256 of a file, in pieces: a long file is read while the window lives on.
class LocalHash final {
 public:
  enum class Progress { More, Done, Failed };

  static constexpr qint64 kPiece = 4 * 1024 * 1024;  // bytes

  explicit LocalHash(const QString& path);
  LocalHash(const LocalHash&) = delete;
  LocalHash& operator=(const LocalHash&) = delete;

  /// Reads one piece.
  [[nodiscard]] Progress Step();
  /// When it is done.
  [[nodiscard]] QByteArray Result() const { return hash_.result(); }

 private:
  QFile file_;
  QCryptographicHash hash_{QCryptographicHash::Sha256};
};

/// Of the whole file at once; nothing where it cannot be read.
[[nodiscard]] std::optional<QByteArray> LocalHashOf(const QString& path);

}  // namespace trevane
