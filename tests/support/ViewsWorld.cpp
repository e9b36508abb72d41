#include "tests/support/ViewsWorld.h"

#include <gtest/gtest.h>

namespace trevane::test {

ViewsWorld::ViewsWorld(SessionWorld& world, NavigatorListener& listener)
    : navigator(
          {.files = world.files, .fileTypes = fileTypes, .tree = tree, .list = list, .listener = listener}) {}

void ViewsWorld::Display(const QString& address) {
  FolderNode* node = tree.FindByKey(address);
  ASSERT_NE(node, nullptr) << address.toStdString();
  navigator.DisplayNode(*node);
}

QStringList ViewsWorld::ListTexts() const {
  QStringList texts;
  for (int row = 0; row < list.rowCount(); ++row) {
    texts += list.Text(list.HandleAt(row));
  }
  return texts;
}

}  // namespace trevane::test
