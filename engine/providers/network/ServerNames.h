#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace trevane {

/// Names as text, and as a server's bytes. Every name of the server survives the way to text and back: a byte
/// that is no text becomes a lone surrogate (see DecodeBytes), a backslash becomes U+F05C, as on this
/// computer's own disks.
class ServerNames {
 public:
  /// An encoding as QStringDecoder knows it; empty for UTF-8. Fails with error::kInvalidParameter for one
  /// that is not known here.
  explicit ServerNames(const QString& encoding);

  /// Without any "/".
  [[nodiscard]] QString FromServer(QByteArrayView name) const;
  /// Fails with error::kInvalidName for a text that the encoding cannot hold; `path` is for its text.
  [[nodiscard]] QByteArray ToServer(const QString& name, const QString& path) const;

  /// A path of the server ("/home/joe") as FileSystem has paths.
  [[nodiscard]] QString PathFromServer(const QByteArray& path) const;

  /// Whether a listing may hold the name: it is not empty, "." or "..", and holds no "/" and no NUL.
  [[nodiscard]] static bool IsName(const QByteArray& name) noexcept;

 private:
  [[nodiscard]] QString Decode(QByteArrayView name) const;
  [[nodiscard]] bool Encode(QStringView text, QByteArray& bytes) const;

  /// Empty for UTF-8.
  QByteArray encoding_;
};

}  // namespace trevane
