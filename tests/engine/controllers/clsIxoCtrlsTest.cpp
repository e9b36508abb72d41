#include "engine/controllers/EngineSession.h"
#include "engine/controllers/clsIxoCtrls.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

template <class Work>
qint32 ErrorOf(const Work& work) {
  try {
    work();
  } catch (const RunTimeError& failure) {
    return failure.Number();
  }
  return 0;
}

std::shared_ptr<clsIxoCtrl> Record(const QString& realName, const QString& name = {}) {
  auto record = std::make_shared<clsIxoCtrl>();
  record->SetRealCtrlName(realName);
  record->SetCtrlName(name);
  return record;
}

TEST(clsIxoCtrlTest, StartsEmptyAndKeepsWhatIsStored) {
  clsIxoCtrl record;
  EXPECT_TRUE(record.CtrlName().isEmpty() && record.RealCtrlName().isEmpty() && record.ProvName().isEmpty() &&
              record.MachineName().isEmpty() && record.CtrlOption().isEmpty() && record.Root().isEmpty());
  EXPECT_EQ(record.CtrlIdx(), 0);
  record.SetCtrlName(QStringLiteral("a"));
  record.SetRealCtrlName(QStringLiteral("b"));
  record.SetProvName(QStringLiteral("c"));
  record.SetMachineName(QStringLiteral("d"));
  record.SetCtrlOption(QStringLiteral("e"));
  record.SetCtrlIdx(7);
  record.SetRoot(QStringLiteral("f"));
  EXPECT_EQ(record.CtrlName() + record.RealCtrlName() + record.ProvName() + record.MachineName() +
                record.CtrlOption() + record.Root(),
            QStringLiteral("abcdef"));
  EXPECT_EQ(record.CtrlIdx(), 7);
}

TEST(clsIxoCtrlsTest, ANameOfDigitsIsFoundByTextAndNeverByNumber) {
  clsIxoCtrls registry;
  for (int i = 1; i <= 12; ++i) {
    registry.Add(Record(QStringLiteral("ctrl%1").arg(i)));
  }
  registry.Add(Record(QStringLiteral("12")));
  EXPECT_EQ(registry.Item(QStringLiteral("12"))->RealCtrlName(), QStringLiteral("12"));
  EXPECT_EQ(registry.Item(qint32(12))->RealCtrlName(), QStringLiteral("ctrl12"));
  EXPECT_EQ(registry.Item(qint16(12))->RealCtrlName(), QStringLiteral("ctrl12"));
}

TEST(clsIxoCtrlsTest, RecordsAreRegisteredUnderTheirRealNames) {
  clsIxoCtrls registry;
  registry.Add(Record(QStringLiteral("a"), QStringLiteral("same")));
  registry.Add(Record(QStringLiteral("b"), QStringLiteral("same")));
  EXPECT_EQ(registry.Count(), 2);
}

TEST(clsIxoCtrlsTest, RemovingAnUnregisteredNameLeavesTheOthers) {
  clsIxoCtrls registry;
  registry.Add(Record(QStringLiteral("a")));
  registry.Add(Record(QStringLiteral("b")));
  EXPECT_EQ(ErrorOf([&] { registry.Remove(QStringLiteral("c")); }), error::kNoSuchKey);
  EXPECT_EQ(registry.Count(), 2);
  registry.Remove(QStringLiteral("A"));
  EXPECT_EQ(registry.Item(qint32(1))->RealCtrlName(), QStringLiteral("b"));
  registry.Remove(qint32(1));
  EXPECT_EQ(registry.Count(), 0);
}

TEST(clsIxoCtrlsTest, NamesThatDifferOnlyInCaseCannotBothBeRegistered) {
  clsIxoCtrls registry;
  registry.Add(Record(QStringLiteral("Robot")));
  EXPECT_EQ(ErrorOf([&] { registry.Add(Record(QStringLiteral("ROBOT"))); }), error::kKeyAlreadyThere);
  EXPECT_EQ(registry.Count(), 1);
}

TEST(clsIxoCtrlsTest, AnIndexThatIsNeitherNameNorNumberIsOutOfRange) {
  clsIxoCtrls registry;
  registry.Add(Record(QStringLiteral("a")));
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(registry.Item(Missing{})); }), error::kOutOfRange);
  EXPECT_EQ(ErrorOf([&] { registry.Remove(Missing{}); }), error::kOutOfRange);
}

TEST(clsIxoCtrlsTest, IteratesInOrderAndFreesItsRecords) {
  std::weak_ptr<clsIxoCtrl> watched;
  {
    EngineSession session;
    session.gIxoCtrls().Add(Record(QStringLiteral("b")));
    session.gIxoCtrls().Add(Record(QStringLiteral("a")));
    QStringList names;
    for (const auto& record : session.gIxoCtrls()) {
      names.append(record->RealCtrlName());
    }
    EXPECT_EQ(names, (QStringList{QStringLiteral("b"), QStringLiteral("a")}));
    watched = session.gIxoCtrls().Item(QStringLiteral("a"));
    EXPECT_FALSE(watched.expired());
  }
  EXPECT_TRUE(watched.expired());
}

}  // namespace
}  // namespace trevane
