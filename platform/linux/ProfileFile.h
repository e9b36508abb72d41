#pragma once

#include <QByteArray>
#include <QString>

namespace trevane::privateprofile {

/// The bytes of a settings-style file, read whole and put back in one step.
class ProfileFile {
 public:
  enum class State {
    /// Read; Content() is what it holds.
    Open,
    /// No file of that name.
    Missing,
    /// It is there but is no file, is too large, or cannot be read.
    Unreadable,
  };

  /// Reads `fileName`, an empty name being unreadable. Never blocks on a pipe or a device.
  explicit ProfileFile(const QString& fileName);

  [[nodiscard]] State GetState() const { return state_; }

  /// In UTF-8 or whatever else stands in the file. A file that begins with the mark of UTF-16, little endian,
  /// is converted, the mark left out.
  [[nodiscard]] const QByteArray& Content() const { return content_; }

  /// True when the file begins with that mark.
  [[nodiscard]] bool IsUtf16() const { return utf16_; }

  /// Whether this user may change the file, or make it when it is missing. A file or a folder without any
  /// write permission is read-only for everybody, the superuser included.
  [[nodiscard]] bool IsWritable() const;

  /// Builds the new file beside the old one, with its permissions, and renames it over the old one. A
  /// symbolic link stays, and its target is what is replaced. On failure nothing has changed.
  [[nodiscard]] bool Replace(const QByteArray& content) const;

 private:
  void Read();

  /// The file's path with its last links resolved; empty when they lead nowhere.
  QByteArray path_;
  State state_ = State::Unreadable;
  QByteArray content_;
  bool utf16_ = false;
  /// The odd last byte of a UTF-16 file.
  QByteArray oddByte_;
};

}  // namespace trevane::privateprofile
