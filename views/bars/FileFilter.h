#pragma once

#include "base/Wildcard.h"

#include <QString>

#include <vector>

namespace trevane {

/// Which of the files that match are shown.
enum class FilterMode { Include, Exclude };

/// Decides which files the list shows. Patterns are separated by ";" and are not trimmed: a blank after a ";"
/// belongs to the next pattern. Letter case does not count.
class FileFilter final {
 public:
  /// The switch: released, nothing is filtered.
  void SetOn(bool on) noexcept { on_ = on; }
  [[nodiscard]] bool IsOn() const noexcept { return on_; }
  void SetMode(FilterMode mode) noexcept { mode_ = mode; }
  [[nodiscard]] FilterMode Mode() const noexcept { return mode_; }

  /// Reads the patterns. The same text again costs nothing.
  void SetText(const QString& text);
  [[nodiscard]] const QString& Text() const noexcept { return text_; }

  /// True when the list must not show the file. `currentTag` is that of the current node: in the workspace
  /// and on the local machine nothing is filtered. An empty text is one empty pattern, which matches an empty
  /// name only.
  [[nodiscard]] bool IsFilteredOut(const QString& fileName, qint32 currentTag) const;

  /// The error of the first malformed pattern, as text for the user; empty when there is none. A malformed
  /// pattern matches nothing; the others are not affected.
  [[nodiscard]] const QString& Problem() const noexcept { return problem_; }

 private:
  bool on_ = false;
  FilterMode mode_ = FilterMode::Include;
  QString text_;
  std::vector<Wildcard> patterns_ = {Wildcard(QString())};
  QString problem_;
};

}  // namespace trevane
