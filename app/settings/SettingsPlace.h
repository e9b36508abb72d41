#pragma once

#include <QString>

namespace trevane {

/// The settings file: beside the program wherever it can be written there, also in place in a folder that is
/// closed, and in the user's own folder only where it cannot. Asked anew each time, for it may change.
class SettingsPlace {
 public:
  /// Two full paths; an empty `own` is none.
  SettingsPlace(QString beside, QString own);

  [[nodiscard]] QString ToWrite() const;
  /// The one to write, but as long as the user has no file the one beside the program.
  [[nodiscard]] QString ToRead() const;

  /// Gives a file that could not be read another name, with ".old" behind its own (".old2" to ".old9" where
  /// that is a folder, or a file that was kept for its older encoding); what had that name is replaced. Where
  /// names cannot be changed its content is kept beside the user's own file. False when neither could be
  /// done.
  [[nodiscard]] bool PutAway(const QString& file) const;

 private:
  [[nodiscard]] bool IsBesideWritable() const;

  QString beside_;
  QString own_;
};

}  // namespace trevane
