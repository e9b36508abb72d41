#pragma once

#include <QComboBox>

class QAction;

namespace trevane {

/// An editable box whose drop-down list is the history of the texts used in it, newest first. Choosing an
/// entry puts its text into the box; Enter uses it. Nothing is completed while the user types.
class HistoryBox final : public QComboBox {
  Q_OBJECT

 public:
  explicit HistoryBox(QWidget* parent = nullptr);

  /// The accessible name of the box and of its text field, which are two objects to a screen reader.
  void SetSpokenName(const QString& name);

  /// Records the current text at the top of the history. The text and the cursor stay.
  void AddToHistory() { AddToHistory(currentText()); }
  /// The same for another text.
  void AddToHistory(const QString& used);
  [[nodiscard]] QStringList History() const;
  /// The key edits the text of a box, chooses from its history or enters it: it opens nothing, and does
  /// nothing outside of the box.
  [[nodiscard]] static bool IsTyping(const QKeyEvent& key);

  /// Marks the box as wrong and shows why, in its tooltip and to screen readers; an empty text removes the
  /// mark.
  void ShowProblem(const QString& problem);
  [[nodiscard]] const QString& Problem() const noexcept { return problem_; }

 Q_SIGNALS:
  /// Enter was pressed, without Shift, Ctrl or Alt.
  void Entered();
  /// Esc.
  void EscapePressed();
  /// Alt+Up.
  void ParentKeyPressed();

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  /// Ignored, so that turning the wheel over the box changes no entry.
  void wheelEvent(QWheelEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void UpdateLook();

  QString problem_;
  /// Of the box while nothing is wrong.
  QString usualToolTip_;
  QAction* warning_ = nullptr;
};

}  // namespace trevane
