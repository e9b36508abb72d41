#include "app/window/ActiveView.h"

#include "app/window/CommandBars.h"
#include "app/window/ToolBar.h"
#include "views/list/FileListView.h"
#include "views/tree/FolderTreeView.h"

#include <utility>

namespace trevane {

ActiveSide ActiveView::Active() const {
  const QWidget* control = window_.focusWidget();
  // A button of a toolbar acts on the view that was used last, pressed by mouse or by key.
  const bool isOnBar =
      control && (bars_.MainToolBar().isAncestorOf(control) || bars_.AddressToolBar().isAncestorOf(control));
  if (!control || isOnBar) {
    return last_;
  }
  // The editor of a label is a child of its view.
  if (control == &tree_ || tree_.isAncestorOf(control)) {
    return ActiveSide::Tree;
  }
  return control == &list_ || list_.isAncestorOf(control) ? ActiveSide::List : ActiveSide::Neither;
}

bool ActiveView::GotFocus(ActiveSide side) {
  const ActiveSide before = std::exchange(last_, side);
  return before != ActiveSide::Neither && before != side;
}

void ActiveView::Focus() {
  if (last_ == ActiveSide::List) {
    list_.setFocus();
  } else {
    tree_.setFocus();
  }
}

}  // namespace trevane
