#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>
#include <vector>

namespace trevane {

/// A settings-style text in memory: sections in square brackets and "key=value" lines, read and changed as
/// the calls of platform/PrivateProfile.h are documented to do it with a file, but parsed once for all reads.
class ProfileText {
 public:
  /// Of the bytes of a file: UTF-8 or anything else, or UTF-16, little endian, behind its mark.
  explicit ProfileText(const QByteArray& bytes = {});

  /// The bytes of a file of this text, in the encoding of the one that it was read from.
  [[nodiscard]] QByteArray Bytes() const;

  /// As privateprofile::GetString does it with a file that is there.
  [[nodiscard]] QString GetString(const QString& section, const QString& key, const QString& fallback,
                                  int size) const;

  /// As privateprofile::GetInt.
  [[nodiscard]] quint32 GetInt(const QString& section, const QString& key, qint32 fallback) const;

  /// As privateprofile::WriteString, for a section that is not null.
  void WriteString(const QString& section, const QString& key, const QString& value);

  /// `fallback` as GetString answers it.
  [[nodiscard]] static QString DefaultText(const QString& fallback, int size);

 private:
  /// Positions in the content. Small: a hostile file has millions of lines.
  struct Span {
    quint32 begin;
    quint32 end;
  };
  struct Key {
    Span name;
    Span value;
  };
  struct Section {
    Span name;
    quint32 firstKey;
    quint32 endKey;
  };
  struct Index {
    std::vector<Section> sections;
    std::vector<Key> keys;
  };

  [[nodiscard]] const Index& Indexed() const;
  [[nodiscard]] QByteArrayView At(Span span) const;
  /// The first of that name; null when there is none.
  [[nodiscard]] const Section* FindSection(const QString& section) const;
  [[nodiscard]] std::optional<QByteArrayView> FindValue(const QString& section, const QString& key) const;
  /// The section's keys, or of a null section all sections, each followed by a NUL.
  [[nodiscard]] std::optional<QByteArray> ListNames(const QString& section) const;

  /// In UTF-8, or as the bytes are in the file.
  QByteArray content_;
  bool utf16_ = false;
  /// The odd last byte of a UTF-16 file.
  QByteArray oddByte_;
  mutable std::optional<Index> index_;
};

}  // namespace trevane
