#include "engine/controllers/RememberController.h"

#include <gtest/gtest.h>

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

std::shared_ptr<clsIxoCtrl> Named(const QString& name) {
  auto record = std::make_shared<clsIxoCtrl>();
  record->SetCtrlName(name);
  return record;
}

QStringList Names(const ControllerCollection& saved) {
  QStringList names;
  for (const auto& record : saved)
    names += record->CtrlName();
  return names;
}

TEST(RememberControllerTest, TheLastConnectedStandsFirst) {
  ControllerCollection saved;
  RememberController(saved, Named(u"A"_s));
  RememberController(saved, Named(u"B"_s));
  EXPECT_EQ(Names(saved), (QStringList{u"B"_s, u"A"_s}));
  EXPECT_TRUE(saved.Contains(u"@a"_s));
}

TEST(RememberControllerTest, ANinthNameLeavesEightTheNewOneFirst) {
  ControllerCollection saved;
  for (int i = 1; i <= 9; ++i)
    RememberController(saved, Named(QString::number(i)));
  EXPECT_EQ(Names(saved), (QStringList{u"9"_s, u"8"_s, u"7"_s, u"6"_s, u"5"_s, u"4"_s, u"3"_s, u"2"_s}));
}

TEST(RememberControllerTest, ANameThatIsRememberedMovesToTheFrontWithItsNewRecord) {
  ControllerCollection saved;
  for (const QString& name : {u"A"_s, u"B"_s, u"C"_s})
    RememberController(saved, Named(name));
  const auto again = Named(u"a"_s);
  RememberController(saved, again);
  EXPECT_EQ(Names(saved), (QStringList{u"a"_s, u"C"_s, u"B"_s}));
  EXPECT_EQ(saved.Item(1), again);
}

TEST(RememberControllerTest, ANamelessControllerIsNotRemembered) {
  ControllerCollection saved;
  RememberController(saved, Named(QString()));
  EXPECT_EQ(saved.Count(), 0);
}

}  // namespace
}  // namespace trevane::test
