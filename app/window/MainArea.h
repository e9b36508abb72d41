#pragma once

#include <QWidget>

class QComboBox;
class QStatusBar;

namespace trevane {

class ToolBar;

/// The bar between the tree and the list. It reports where the mouse drags it and decides nothing.
class SplitterBar final : public QWidget {
  Q_OBJECT

 public:
  explicit SplitterBar(QWidget* parent);

 Q_SIGNALS:
  /// The left button is down with no other key held; logical pixels from the bar's left edge to where it was
  /// taken.
  void Dragged(int offset);

 protected:
  void mouseMoveEvent(QMouseEvent* event) override;
};

/// The inner area of the main window: arranges what others own by the window's layout rules.
class MainArea final : public QWidget {
  Q_OBJECT

 public:
  static constexpr int kSplitterWidth = 5;     // logical pixels
  static constexpr int kFilterBoxWidth = 113;  // logical pixels
  static constexpr int kTreeWidth = 240;       // logical pixels, at start

  struct Parts {
    ToolBar* mainToolBar = nullptr;
    ToolBar* addressToolBar = nullptr;
    QComboBox* addressBox = nullptr;
    QComboBox* filterBox = nullptr;
    QWidget* addressLabel = nullptr;
    QWidget* tree = nullptr;
    QWidget* list = nullptr;
    QStatusBar* statusBar = nullptr;
  };

  explicit MainArea(QWidget* parent);

  /// All of them are children of this area already.
  void SetParts(const Parts& parts);

  /// A minimised window is not arranged: this catches up with it.
  void Arrange();

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void DragSplitterBy(int offset);

  Parts parts_;
  SplitterBar* splitter_;
};

}  // namespace trevane
