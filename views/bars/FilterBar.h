#pragma once

#include "views/bars/FileFilter.h"

#include <QObject>

#include <functional>

namespace trevane {

class HistoryBox;
class Navigator;

/// The behaviour of the filter box and its two buttons.
class FilterBar final : public QObject {
  Q_OBJECT

 public:
  /// `redisplay` displays the current node again. Both references outlive this object.
  FilterBar(HistoryBox& cmbFilter, const Navigator& navigator, std::function<void()> redisplay);

  /// The filter switch was clicked, and is `down` now: displays the current node again and records the
  /// filter in its history, unless that node is the workspace or the local machine.
  void SwitchClicked(bool down);
  /// The same for the mode button; `down` excludes what matches. Nothing is displayed again while the switch
  /// is up.
  void ModeClicked(bool down);

  /// A display begins: the box's text holds for all of it, whatever is typed meanwhile.
  void BeginDisplay();
  /// True when the list must not show the file.
  [[nodiscard]] bool IsFilteredOut(const QString& fileName) const;

  [[nodiscard]] const FileFilter& Filter() const noexcept { return filter_; }

 Q_SIGNALS:
  /// Enter in the box: the switch is to be pressed, and handled as if it had been clicked.
  void SwitchWanted();

 private:
  [[nodiscard]] qint32 CurrentTag() const;
  void Apply();
  void CheckText();

  HistoryBox& cmbFilter_;
  const Navigator& navigator_;
  std::function<void()> redisplay_;
  FileFilter filter_;
};

}  // namespace trevane
