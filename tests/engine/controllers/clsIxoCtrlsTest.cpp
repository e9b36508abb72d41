#include "engine/controllers/EngineSession.h"
#include "engine/controllers/clsIxoCtrls.h"

#include <gtest/gtest.h>

namespace trevane {
namespace {

using namespace Qt::StringLiterals;

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
  record.SetCtrlName(u"a"_s);
  record.SetRealCtrlName(u"b"_s);
  record.SetProvName(u"c"_s);
  record.SetMachineName(u"d"_s);
  record.SetCtrlOption(u"e"_s);
  record.SetCtrlIdx(7);
  record.SetRoot(u"f"_s);
  EXPECT_EQ(record.CtrlName() + record.RealCtrlName() + record.ProvName() + record.MachineName() +
                record.CtrlOption() + record.Root(),
            u"abcdef"_s);
  EXPECT_EQ(record.CtrlIdx(), 7);
}

TEST(clsIxoCtrlsTest, ANameOfDigitsIsFoundByTextAndNeverByNumber) {
  clsIxoCtrls registry;
  for (int i = 1; i <= 12; ++i) {
    registry.Add(Record(u"ctrl%1"_s.arg(i)));
  }
  registry.Add(Record(u"12"_s));
  EXPECT_EQ(registry.Item(u"12"_s)->RealCtrlName(), u"12"_s);
  EXPECT_EQ(registry.Item(qint32(12))->RealCtrlName(), u"ctrl12"_s);
  EXPECT_EQ(registry.Item(qint16(12))->RealCtrlName(), u"ctrl12"_s);
}

TEST(clsIxoCtrlsTest, RecordsOfOneCtrlNameAreRegisteredUnderTheirRealNames) {
  clsIxoCtrls registry;
  registry.Add(Record(u"a"_s, u"same"_s));
  registry.Add(Record(u"b"_s, u"same"_s));
  EXPECT_EQ(registry.Count(), 2);
}

TEST(clsIxoCtrlsTest, RemovingAnUnregisteredNameLeavesTheOthers) {
  clsIxoCtrls registry;
  registry.Add(Record(u"a"_s));
  registry.Add(Record(u"b"_s));
  EXPECT_EQ(ErrorOf([&] { registry.Remove(u"c"_s); }), error::kNoSuchKey);
  EXPECT_EQ(registry.Count(), 2);
  registry.Remove(u"A"_s);
  EXPECT_EQ(registry.Item(qint32(1))->RealCtrlName(), u"b"_s);
  registry.Remove(qint32(1));
  EXPECT_EQ(registry.Count(), 0);
}

TEST(clsIxoCtrlsTest, NamesThatDifferOnlyInCaseCannotBothBeRegistered) {
  clsIxoCtrls registry;
  registry.Add(Record(u"Robot"_s));
  EXPECT_EQ(ErrorOf([&] { registry.Add(Record(u"ROBOT"_s)); }), error::kKeyAlreadyThere);
  EXPECT_EQ(registry.Count(), 1);
}

TEST(clsIxoCtrlsTest, AnIndexThatIsNeitherNameNorNumberIsOutOfRange) {
  clsIxoCtrls registry;
  registry.Add(Record(u"a"_s));
  EXPECT_EQ(ErrorOf([&] { static_cast<void>(registry.Item(Missing{})); }), error::kOutOfRange);
  EXPECT_EQ(ErrorOf([&] { registry.Remove(Missing{}); }), error::kOutOfRange);
}

TEST(clsIxoCtrlsTest, IteratesInOrderAndFreesItsRecords) {
  std::weak_ptr<clsIxoCtrl> watched;
  {
    EngineSession session;
    session.gIxoCtrls().Add(Record(u"b"_s));
    session.gIxoCtrls().Add(Record(u"a"_s));
    QStringList names;
    for (const auto& record : session.gIxoCtrls()) {
      names.append(record->RealCtrlName());
    }
    EXPECT_EQ(names, (QStringList{u"b"_s, u"a"_s}));
    watched = session.gIxoCtrls().Item(u"a"_s);
    EXPECT_FALSE(watched.expired());
  }
  EXPECT_TRUE(watched.expired());
}

}  // namespace
}  // namespace trevane
