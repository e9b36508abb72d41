#pragma once

#include <QWidget>

class QComboBox;
class QStatusBar;

namespace trevane {

class ToolBar;

/// The bar between the tree and the list. It only reports where the mouse drags it.
class SplitterBar final : public QWidget {
  Q_OBJECT

 public:
  explicit SplitterBar(QWidget* parent);

 Q_SIGNALS:
  /// The mouse moved with the left button down and no key held. `offset` is the mouse's distance from the
  /// bar's left edge in logical pixels.
  void Dragged(int offset);

 protected:
  void mouseMoveEvent(QMouseEvent* event) override;
};

/// The inner area of the main window. It arranges the window's parts by the layout rules.
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

  /// All parts are children of this area already.
  void SetParts(const Parts& parts);

  /// Arranges the parts. A minimised window is not arranged; call this when it is restored.
  void Arrange();

 protected:
  void resizeEvent(QResizeEvent* event) override;

 private:
  void DragSplitterBy(int offset);

  Parts parts_;
  SplitterBar* splitter_;
};

}  // namespace trevane
