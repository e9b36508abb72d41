#include "engine/controllers/RememberController.h"

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

std::shared_ptr<clsIxoCtrl> Named(const QString& name) {
  auto record = std::make_shared<clsIxoCtrl>();
  record->SetCtrlName(name);
  return record;
}

QStringList Names(const ControllerCollection& saved) {
  QStringList names;
  for (const auto& record : saved) {
    names += record->CtrlName();
  }
  return names;
}

TEST(RememberControllerTest, TheLastConnectedIsFirst) {
  ControllerCollection saved;
  RememberController(saved, Named(QStringLiteral("A")));
  RememberController(saved, Named(QStringLiteral("B")));
  EXPECT_EQ(Names(saved), (QStringList{QStringLiteral("B"), QStringLiteral("A")}));
  EXPECT_TRUE(saved.Contains(QStringLiteral("@a")));
}

TEST(RememberControllerTest, ANinthNameDropsTheOldest) {
  ControllerCollection saved;
  for (int i = 1; i <= 9; ++i) {
    RememberController(saved, Named(QString::number(i)));
  }
  EXPECT_EQ(Names(saved), (QStringList{QStringLiteral("9"), QStringLiteral("8"), QStringLiteral("7"),
                                       QStringLiteral("6"), QStringLiteral("5"), QStringLiteral("4"),
                                       QStringLiteral("3"), QStringLiteral("2")}));
}

TEST(RememberControllerTest, ARememberedNameMovesToTheFront) {
  ControllerCollection saved;
  for (const QString& name : {QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")}) {
    RememberController(saved, Named(name));
  }
  const auto again = Named(QStringLiteral("a"));
  RememberController(saved, again);
  EXPECT_EQ(Names(saved), (QStringList{QStringLiteral("a"), QStringLiteral("C"), QStringLiteral("B")}));
  EXPECT_EQ(saved.Item(1), again);
}

TEST(RememberControllerTest, ANamelessControllerIsNotRemembered) {
  ControllerCollection saved;
  RememberController(saved, Named(QString()));
  EXPECT_EQ(saved.Count(), 0);
}

}  // namespace
}  // namespace trevane::test
