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

Volume Drive(const QString& name) {
  return {name, QStringLiteral("/nowhere/"), drivetype::kFixed};
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
  SubstituteController controller_{QStringLiteral("My Computer"), 1,
                                   std::make_shared<FileSystemSession>(files_, QStringLiteral("P"))};
};

TEST_F(DrivePositionsTest, TableAndEngineUseTheDrivesOfTheLastRefresh) {
  volumes_.SetNext({Drive(QStringLiteral("C:")), Drive(QStringLiteral("D:")), Drive(QStringLiteral("F:"))});
  ExpectSame({});
  drives_.RefreshDrives();
  ExpectSame({QStringLiteral("C:"), QStringLiteral("D:"), QStringLiteral("F:")});
  // New and removed drives appear in neither before the next refresh.
  volumes_.SetNext({Drive(QStringLiteral("C:")), Drive(QStringLiteral("E:")), Drive(QStringLiteral("F:")),
                    Drive(QStringLiteral("G:"))});
  ExpectSame({QStringLiteral("C:"), QStringLiteral("D:"), QStringLiteral("F:")});
  drives_.RefreshDrives();
  ExpectSame({QStringLiteral("C:"), QStringLiteral("E:"), QStringLiteral("F:"), QStringLiteral("G:")});
  volumes_.SetNext({Drive(QStringLiteral("C:"))});
  drives_.RefreshDrives();
  ExpectSame({QStringLiteral("C:")});
}

TEST_F(DrivePositionsTest, DrivesStayWhenTheSystemReportsNone) {
  volumes_.SetNext({Drive(QStringLiteral("C:")), Drive(QStringLiteral("D:"))});
  drives_.RefreshDrives();
  volumes_.SetNext({});
  drives_.RefreshDrives();
  ExpectSame({QStringLiteral("C:"), QStringLiteral("D:")});
  volumes_.SetNext({Drive(QStringLiteral("E:"))});
  volumes_.SetAnswers(false);
  drives_.RefreshDrives();
  ExpectSame({QStringLiteral("C:"), QStringLiteral("D:")});
}

}  // namespace
}  // namespace trevane::test
