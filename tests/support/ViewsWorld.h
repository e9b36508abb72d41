#pragma once

#include "base/DateFormatter.h"
#include "tests/support/FakeShellIcons.h"
#include "tests/support/SessionWorld.h"
#include "views/ImageList.h"
#include "views/list/FileListModel.h"
#include "views/list/FileTypes.h"
#include "views/navigation/Navigator.h"
#include "views/navigation/NavigatorListener.h"
#include "views/tree/FolderNode.h"
#include "views/tree/FolderTreeModel.h"

#include <QStringList>

namespace trevane::test {

/// The models of tree and list and the navigator over a session, without a window.
struct ViewsWorld {
  ViewsWorld(SessionWorld& world, NavigatorListener& listener);
  ViewsWorld(const ViewsWorld&) = delete;
  ViewsWorld& operator=(const ViewsWorld&) = delete;

  /// Displays the node of an address; a missing one fails the test.
  void Display(const QString& address);
  /// The texts of the list's rows, from the top.
  [[nodiscard]] QStringList ListTexts() const;

  FakeShellIcons shellIcons;
  ImageList images;
  FileTypes fileTypes{shellIcons, images};
  DateFormatter dates;
  FolderTreeModel tree{&images};
  FileListModel list{&images, &fileTypes, &dates};
  Navigator navigator;
};

}  // namespace trevane::test
