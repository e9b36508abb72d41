#include "app/window/ViewEvents.h"

#include "app/window/ActiveView.h"
#include "app/window/CommandBars.h"
#include "app/window/CommandStates.h"
#include "fileops/CommandHost.h"
#include "fileops/FileCommands.h"
#include "prompts/UserPrompts.h"
#include "views/addresses/NodeTags.h"
#include "views/list/FileListView.h"
#include "views/navigation/Navigator.h"
#include "views/tree/FolderNode.h"
#include "views/tree/FolderTreeView.h"

#include <QItemSelectionModel>
#include <QMenu>

#include <utility>

namespace trevane {

ViewEvents::ViewEvents(Parts parts)
    : parts_(std::move(parts)), rightDrag_(parts_.views.treeView, parts_.views.listView, parts_.files) {
  ConnectTree();
  ConnectList();
  connect(&rightDrag_, &RightDrag::Dropped, this,
          [this](const QPoint& position) { PopUp(CommandPlace::DragPopup, position); });
}

void ViewEvents::ConnectTree() {
  FolderTreeView& tree = parts_.views.treeView;
  tree.SetLabelEditHandler(&parts_.files.Labels());
  connect(&tree, &FolderTreeView::NodeClicked, this, [this](FolderNode* node) { DisplayNode(*node); });
  connect(&tree, &FolderTreeView::ContextMenuRequested, this,
          [this](FolderNode* /*node*/, const QPoint& position) { PopUpTreeMenu(position); });
  connect(&tree, &FolderTreeView::GotFocus, this, [this] { ViewGotFocus(ActiveSide::Tree); });
  connect(&tree, &FolderTreeView::ParentKeyPressed, this, [this] { parts_.execute(CommandId::Parent); });
  connect(&tree, &FolderTreeView::PropertiesKeyPressed, this,
          [this] { parts_.execute(CommandId::Properties); });
}

void ViewEvents::ConnectList() {
  FileListView& list = parts_.views.listView;
  list.SetLabelEditHandler(&parts_.files.Labels());
  connect(&list, &FileListView::GotFocus, this, [this] { ViewGotFocus(ActiveSide::List); });
  connect(&list, &FileListView::ItemActivated, this, &ViewEvents::OpenItem);
  connect(&list, &FileListView::ContextMenuRequested, this, &ViewEvents::PopUpListMenu);
  connect(&list, &FileListView::EmptySpaceReleased, this, &ViewEvents::ListSpaceReleased);
  connect(&list, &FileListView::SelectionChanged, this, &ViewEvents::ListSelectionChanged);
  connect(&parts_.views.list, &FileListModel::dataChanged, this,
          [this](const QModelIndex& first, const QModelIndex& /*last*/, const QList<int>& roles) {
            // Another name, and not only another look.
            if (roles.isEmpty() && parts_.activeView.Last() == ActiveSide::List &&
                parts_.views.listView.selectionModel()->isRowSelected(first.row(), QModelIndex())) {
              ShowListSelection();
            }
          });
  connect(&list, &FileListView::CopyKeyPressed, this, [this] { parts_.execute(CommandId::Copy); });
  connect(&list, &FileListView::CutKeyPressed, this, [this] { parts_.execute(CommandId::Cut); });
  connect(&list, &FileListView::PasteKeyPressed, this, &ViewEvents::PasteByKey);
  connect(&list, &FileListView::ParentKeyPressed, this, [this] { parts_.execute(CommandId::Parent); });
  connect(&list, &FileListView::PropertiesKeyPressed, this,
          [this] { parts_.execute(CommandId::Properties); });
}

void ViewEvents::DisplayNode(FolderNode& node) {
  if (parts_.views.files.Prompts().IsEnding()) {
    return;
  }
  Navigator& navigator = parts_.views.navigator;
  if (IsWaiting()) {
    // Only a place that is chosen instead of the one that is being displayed.
    if (navigator.IsDisplaying()) {
      navigator.DisplayNode(node);
    }
    return;
  }
  const std::shared_ptr<void> command = parts_.beginCommand();
  navigator.DisplayNode(node);
  // The display alone enables what the folder allows; the node itself was clicked.
  if (const FolderNode* current = navigator.CurrentNode(); current && !navigator.IsDisplaying()) {
    parts_.states.Update(current->Tag(), true);
  }
}

void ViewEvents::OpenItem(FileListModel::Handle item) {
  if (IsWaiting()) {
    if (parts_.views.navigator.IsDisplaying()) {
      parts_.files.OpenItem(item);
    }
    return;
  }
  const std::shared_ptr<void> command = parts_.beginCommand();
  const qint32 tag = parts_.views.list.Tag(item);
  parts_.files.OpenItem(item);
  if (!parts_.views.navigator.IsDisplaying() && !parts_.views.files.Prompts().IsEnding()) {
    parts_.states.Update(tag, true);
  }
}

void ViewEvents::PopUp(CommandPlace menu, const QPoint& position) {
  // The release of a button that was pressed before the wait.
  if (!IsWaiting()) {
    parts_.bars.PopupMenu(menu).popup(position);
  }
}

void ViewEvents::PopUpTreeMenu(const QPoint& position) {
  const FolderNode* current = parts_.views.navigator.CurrentNode();
  if (!current) {
    return;
  }
  if (IsWorkspace(current->Tag())) {
    PopUp(CommandPlace::WorkspacePopup, position);
    return;
  }
  parts_.states.Update(current->Tag(), true);
  PopUp(CommandPlace::EntryPopup, position);
}

void ViewEvents::PopUpListMenu(FileListModel::Handle item, const QPoint& position) {
  parts_.states.Update(parts_.views.list.Tag(item), true);
  PopUp(CommandPlace::EntryPopup, position);
}

void ViewEvents::ListSpaceReleased(Qt::MouseButton button, const QPoint& position) {
  parts_.host.ShowStatus(QString::number(parts_.views.list.Count()) + QStringLiteral(" Objects."));
  if (const FolderNode* current = parts_.views.navigator.CurrentNode()) {
    parts_.states.Update(current->Tag(), false);
  }
  if (button == Qt::RightButton) {
    PopUp(CommandPlace::EntryPopup, position);
  }
}

void ViewEvents::ListSelectionChanged() {
  ShowListSelection();
  parts_.states.UpdateBySelection();
}

void ViewEvents::ShowListSelection() {
  const auto selected = parts_.views.listView.SelectedItems();
  if (selected.empty()) {
    parts_.host.ShowStatus(QString::number(parts_.views.list.Count()) + QStringLiteral(" Objects."));
  } else if (selected.size() == 1) {
    parts_.host.ShowStatus(QStringLiteral("Selected ") + parts_.views.list.Text(selected.front()));
  } else {
    parts_.host.ShowStatus(QString::number(selected.size()) + QStringLiteral(" objects selected"));
  }
}

void ViewEvents::PasteByKey() {
  // A Copy leaves the state of the menu's item as it was.
  parts_.states.UpdateBySelection();
  if (parts_.bars.IsEnabled(CommandPlace::EditMenu, CommandId::Paste)) {
    parts_.execute(CommandId::Paste);
  }
}

void ViewEvents::ViewGotFocus(ActiveSide side) {
  // The text of the first display stays.
  const bool changed = parts_.activeView.GotFocus(side);
  if (side == ActiveSide::Tree) {
    parts_.states.UpdateDisconnectByFolder();
    if (const FolderNode* current = parts_.views.navigator.CurrentNode(); changed && current) {
      parts_.host.ShowStatus(QStringLiteral("Selected ") + current->Text());
    }
  } else if (changed && parts_.views.listView.selectionModel()->hasSelection()) {
    ShowListSelection();
  }
}

}  // namespace trevane
