#include "engine/model/IxoFile.h"
#include "engine/model/IxoFiles.h"
#include "engine/providers/local/LocalFileSystem.h"
#include "engine/substitute/SubstituteController.h"
#include "tests/support/FakeVolumes.h"
#include "views/addresses/DriveTable.h"

#include <gtest/gtest.h>

#include <memory>

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

Volume Drive(const QString& name) {
  return {name, u"/nowhere/"_s, drivetype::kFixed};
}

/// The drive table and the engine's own drives over the same volumes: a position means one drive in both.
class DrivePositionsTest : public testing::Test {
 protected:
  void ExpectSame(const QStringList& names) {
    QStringList shown;
    for (const DriveInfo& drive : drives_.Drives()) {
      shown.append(drive.Root);
    }
    EXPECT_EQ(shown, names);
    QStringList listed;
    for (const FileEntry& entry : files_->List(QString())) {
      listed.append(entry.name);
    }
    EXPECT_EQ(listed, names);
    QStringList items;
    const std::shared_ptr<IxoFiles> top = controller_.Files();
    top->Clear();
    for (qint32 i = 0; i < names.size(); ++i) {
      items.append(top->Item(i)->Name());
    }
    EXPECT_EQ(items, names);
  }

  FakeVolumes volumes_;
  DriveTable drives_{volumes_};
  std::shared_ptr<LocalFileSystem> files_ = std::make_shared<LocalFileSystem>(volumes_);
  SubstituteController controller_{u"My Computer"_s, 1, std::make_shared<FileSystemSession>(files_, u"P"_s)};
};

TEST_F(DrivePositionsTest, AreThoseOfTheLastRefreshForTheTableAndTheEngineAlike) {
  volumes_.SetNext({Drive(u"C:"_s), Drive(u"D:"_s), Drive(u"F:"_s)});
  ExpectSame({});
  drives_.RefreshDrives();
  ExpectSame({u"C:"_s, u"D:"_s, u"F:"_s});
  // What comes and goes shows in neither before it is asked for.
  volumes_.SetNext({Drive(u"C:"_s), Drive(u"E:"_s), Drive(u"F:"_s), Drive(u"G:"_s)});
  ExpectSame({u"C:"_s, u"D:"_s, u"F:"_s});
  drives_.RefreshDrives();
  ExpectSame({u"C:"_s, u"E:"_s, u"F:"_s, u"G:"_s});
  volumes_.SetNext({Drive(u"C:"_s)});
  drives_.RefreshDrives();
  ExpectSame({u"C:"_s});
}

TEST_F(DrivePositionsTest, StayInBothWhenTheSystemNamesNoDriveOrDoesNotAnswer) {
  volumes_.SetNext({Drive(u"C:"_s), Drive(u"D:"_s)});
  drives_.RefreshDrives();
  volumes_.SetNext({});
  drives_.RefreshDrives();
  ExpectSame({u"C:"_s, u"D:"_s});
  volumes_.SetNext({Drive(u"E:"_s)});
  volumes_.SetAnswers(false);
  drives_.RefreshDrives();
  ExpectSame({u"C:"_s, u"D:"_s});
}

}  // namespace
}  // namespace trevane::test
