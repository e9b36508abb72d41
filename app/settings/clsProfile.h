#pragma once

#include "platform/OwnFile.h"
#include "platform/ProfileText.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace trevane {

/// One settings-style text file: sections in square brackets and "key=value" lines. Each user makes its own
/// for the time of a call; nothing is shared, and unless the file is held nothing is held back. A store
/// raises no error: reads answer the default or an empty text, writes answer whether they succeeded.
class clsProfile final {
 public:
  /// The program's own settings file: beside the executable, of its name, with ".ini".
  clsProfile();
  explicit clsProfile(const QString& fileName);
  /// Flushes.
  ~clsProfile();
  clsProfile(const clsProfile&) = delete;
  clsProfile& operator=(const clsProfile&) = delete;

  /// The file that every operation reads or writes.
  [[nodiscard]] const QString& FileName() const { return fileName_; }
  /// Holds nothing any more.
  void SetFileName(const QString& fileName);

  /// Reads the file once and holds it: until it is put in place, reads are answered from memory and writes
  /// stay there. A file that cannot be read is held as an empty one. Returns how the reading ended, without
  /// the bytes.
  ownfile::Content Hold();
  /// Holds this text, whatever the file contains.
  void HoldText(const QByteArray& text);
  /// The text that is held; empty when nothing is held.
  [[nodiscard]] QByteArray HeldText() const;
  /// Holds an empty text, whatever the file contains.
  void HoldAnew();
  /// Replaces the file by what is held, in one write. A file in the ANSI code page of Windows stays as a copy
  /// with ".old" behind its name (".old2" to ".old9" where that is taken). A failure leaves the old one as it
  /// was.
  [[nodiscard]] ownfile::Outcome PutInPlace(const ownfile::ReplaceOptions& options);

  /// The value; `fallback` when there is no such key. A key that is present but empty has an empty value. At
  /// most 199998 bytes of it.
  [[nodiscard]] QString GetString(const QString& section, const QString& key,
                                  const QString& fallback = {}) const;

  /// The value's sign and leading digits, 0 without any; `fallback` when there is no such key.
  [[nodiscard]] qint32 GetInt(const QString& section, const QString& key, qint32 fallback = 0) const;

  /// All sections in the order of the file, also those that come twice. Callers stop at the first empty name:
  /// NamesInUse does.
  [[nodiscard]] QStringList GetSectNames() const;

  /// The names before the first empty one.
  [[nodiscard]] static QStringList NamesInUse(const QStringList& names);

  bool WriteString(const QString& section, const QString& key, const QString& value);
  bool DeleteKey(const QString& section, const QString& key);
  bool DeleteSection(const QString& section);
  void Flush();

  /// A value as it has to be written to be read back as it is: in a pair of quotes more where reading takes
  /// blanks or quotes off its ends.
  [[nodiscard]] static QString Quoted(const QString& value);

  /// Mode 0: the text before the first NUL. Below 0: without the NULs at the end. Above 0: the first
  /// `mode` - 1 characters.
  [[nodiscard]] static QString CutText(const QString& text, qint32 mode);

 private:
  /// Null texts as in privateprofile.
  [[nodiscard]] QString Ask(const QString& section, const QString& key, const QString& fallback) const;
  bool Write(const QString& section, const QString& key, const QString& value);

  QString fileName_;
  std::optional<ProfileText> held_;
};

}  // namespace trevane
