#include "platform/OpenWithProgram.h"
#include "platform/SingleInstance.h"
#include "platform/SystemShellIcons.h"
#include "platform/SystemSound.h"
#include "platform/SystemVolumes.h"
#include "platform/windows/WindowsText.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include <windows.h>

namespace trevane {
namespace {

TEST(SystemShellIcons, KnownExtensionHasPixelsAndATypeName) {
  SystemShellIcons icons;
  const auto text = icons.ForExtension(QStringLiteral(".TXT"));
  ASSERT_TRUE(text.has_value());
  EXPECT_FALSE(text->typeName.isEmpty());
  EXPECT_TRUE(text->icon.themeNames.isEmpty());
  ASSERT_GT(text->icon.width, 0);
  ASSERT_EQ(text->icon.pixels.size(), qsizetype(text->icon.width) * text->icon.height * 4);
  // Something is seen, and colours never exceed their opacity.
  const auto* pixel = reinterpret_cast<const quint32*>(text->icon.pixels.constData());
  const qsizetype count = text->icon.pixels.size() / 4;
  EXPECT_TRUE(std::any_of(pixel, pixel + count, [](quint32 value) { return (value >> 24) == 255; }));
  EXPECT_TRUE(std::all_of(pixel, pixel + count, [](quint32 value) {
    const quint32 alpha = value >> 24;
    return (value >> 16 & 255) <= alpha && (value >> 8 & 255) <= alpha && (value & 255) <= alpha;
  }));
}

TEST(SystemShellIcons, EqualPicturesHaveEqualIndexes) {
  SystemShellIcons icons;
  EXPECT_EQ(icons.ForExtension(QStringLiteral(".TXT"))->icon.index,
            icons.ForExtension(QStringLiteral(".txt"))->icon.index);
  EXPECT_NE(icons.ForExtension(QStringLiteral(".TXT"))->icon.index, icons.ForFolder(false)->icon.index);
}

TEST(SystemShellIcons, FoldersHavePixels) {
  SystemShellIcons icons;
  for (const bool open : {false, true}) {
    const auto folder = icons.ForFolder(open);
    ASSERT_TRUE(folder.has_value());
    EXPECT_FALSE(folder->icon.pixels.isEmpty());
  }
}

TEST(SystemShellIcons, AskingForIconsKeepsNoneOfTheSystems) {
  SystemShellIcons icons;
  static_cast<void>(icons.ForFolder(false));
  const DWORD before = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
  for (int i = 0; i < 300; ++i) {
    ASSERT_TRUE(icons.ForFolder(i % 2 == 0).has_value());
    ASSERT_TRUE(icons.ForExtension(QStringLiteral(".QZ%1").arg(i)).has_value());
  }
  EXPECT_LE(GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS), before + 20);
}

TEST(SystemShellIcons, ExtensionsThatTheCallCannotTakeHaveNone) {
  SystemShellIcons icons;
  EXPECT_FALSE(icons.ForExtension(QStringLiteral(".") + QChar(0xDCFF)).has_value());
}

TEST(SystemSound, BeepReturnsAtOnceAndSleepTakesItsTime) {
  QElapsedTimer timer;
  timer.start();
  systemsound::Beep(systemsound::kInformation);
  systemsound::SleepMilliseconds(0);
  systemsound::SleepMilliseconds(-5);
  EXPECT_LT(timer.elapsed(), 30'000);
  timer.restart();
  systemsound::SleepMilliseconds(30);
  EXPECT_GE(timer.elapsed(), 29);
}

TEST(SystemVolumes, DrivesAreTheSystemsWithTheirKinds) {
  SystemVolumes volumes;
  EXPECT_TRUE(volumes.Current().empty());
  ASSERT_TRUE(volumes.Refresh());
  std::set<QString> names;
  for (const Volume& volume : volumes.Current()) {
    EXPECT_EQ(volume.name.size(), 2);
    EXPECT_EQ(volume.rootPath, volume.name + u'\\');
    EXPECT_NE(volume.driveType, drivetype::kNoRoot);
    names.insert(volume.name);
  }
  EXPECT_EQ(names.size(), volumes.Current().size());
  EXPECT_TRUE(names.count(QStringLiteral("C:")));
  EXPECT_TRUE(std::is_sorted(volumes.Current().begin(), volumes.Current().end(),
                             [](const Volume& left, const Volume& right) { return left.name < right.name; }));
}

TEST(SingleInstance, OfOneFolderThereIsOneAtATime) {
  QTemporaryDir folder;
  QTemporaryDir other;
  {
    const SingleInstance first(folder.path());
    EXPECT_TRUE(first.IsFirst());
    EXPECT_FALSE(SingleInstance(folder.path()).IsFirst());
    EXPECT_FALSE(SingleInstance(folder.path().toUpper().replace(u'/', u'\\')).IsFirst());
    EXPECT_TRUE(SingleInstance(other.path()).IsFirst());
  }
  EXPECT_TRUE(SingleInstance(folder.path()).IsFirst());
}

TEST(OpenWithProgram, AMissingFileIsReportedAsMissing) {
  QTemporaryDir folder;
  const OpenOutcome outcome = OpenWithProgram(folder.filePath(QStringLiteral("none.txt")));
  EXPECT_EQ(outcome.code, OpenOutcome::Code::NotFound);
  EXPECT_FALSE(outcome.text.isEmpty());
}

TEST(OpenWithProgram, AFileOfNoKnownTypeFailsWithAText) {
  QTemporaryDir folder;
  QFile file(folder.filePath(QStringLiteral("plain.qqzz7")));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.close();
  const OpenOutcome outcome = OpenWithProgram(file.fileName());
  EXPECT_NE(outcome.code, OpenOutcome::Code::Started);
  EXPECT_FALSE(outcome.text.isEmpty());
}

// A batch file that leaves a mark if it is run by mistake.
void WriteMarkingBatch(const QString& path) {
  QFile batch(path);
  ASSERT_TRUE(batch.open(QIODevice::WriteOnly));
  batch.write("@echo done> ran.txt\r\n");
}

TEST(OpenWithProgram, AFileWithoutAnExtensionIsNotItsNeighbourWithOne) {
  QTemporaryDir folder;
  WriteMarkingBatch(folder.filePath(QStringLiteral("tool.bat")));
  QFile file(folder.filePath(QStringLiteral("tool")));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.close();
  const OpenOutcome outcome = OpenWithProgram(file.fileName());
  EXPECT_NE(outcome.code, OpenOutcome::Code::Started);
  EXPECT_FALSE(outcome.text.isEmpty());
  systemsound::SleepMilliseconds(1000);
  EXPECT_FALSE(QFile::exists(folder.filePath(QStringLiteral("ran.txt"))));
}

TEST(OpenWithProgram, ANameWithADotOrBlankAtItsEndIsAnotherFile) {
  QTemporaryDir folder;
  WriteMarkingBatch(folder.filePath(QStringLiteral("tool.bat")));
  for (const QString& name : {QStringLiteral("tool.bat."), QStringLiteral("tool.bat ")}) {
    const QString path = folder.filePath(name);
    const HANDLE file = CreateFileW(windowstext::Wide(windowstext::LiteralPath(path)), GENERIC_WRITE, 0,
                                    nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    CloseHandle(file);
    const OpenOutcome outcome = OpenWithProgram(path);
    EXPECT_EQ(outcome.code, OpenOutcome::Code::Failed);
    EXPECT_FALSE(outcome.text.isEmpty());
    EXPECT_TRUE(DeleteFileW(windowstext::Wide(windowstext::LiteralPath(path))));
  }
  systemsound::SleepMilliseconds(1000);
  EXPECT_FALSE(QFile::exists(folder.filePath(QStringLiteral("ran.txt"))));
}

TEST(OpenWithProgram, ABatchFileRunsInItsOwnFolder) {
  QTemporaryDir folder;
  QFile batch(folder.filePath(QStringLiteral("run me ä.bat")));
  ASSERT_TRUE(batch.open(QIODevice::WriteOnly));
  batch.write("@echo done> ran.txt\r\n");
  batch.close();
  ASSERT_EQ(OpenWithProgram(batch.fileName()).code, OpenOutcome::Code::Started);
  QElapsedTimer timer;
  timer.start();
  while (!QFile::exists(folder.filePath(QStringLiteral("ran.txt"))) && timer.elapsed() < 30000) {
    systemsound::SleepMilliseconds(50);
  }
  EXPECT_TRUE(QFile::exists(folder.filePath(QStringLiteral("ran.txt"))));
}

TEST(WindowsText, LiteralPathsHaveNoLimitAndTakeEveryNameAsItIs) {
  EXPECT_EQ(windowstext::LiteralPath(QStringLiteral("C:/a/b")), QStringLiteral("\\\\?\\C:\\a\\b"));
  EXPECT_EQ(windowstext::LiteralPath(QStringLiteral("C:\\")), QStringLiteral("\\\\?\\C:\\"));
  EXPECT_EQ(windowstext::LiteralPath(QStringLiteral("\\\\server\\share\\x")),
            QStringLiteral("\\\\?\\UNC\\server\\share\\x"));
  EXPECT_EQ(windowstext::LiteralPath(QStringLiteral("\\\\?\\C:\\a")), QStringLiteral("\\\\?\\C:\\a"));
  EXPECT_EQ(windowstext::LiteralPath(QStringLiteral("relative")), QStringLiteral("relative"));
}

TEST(WindowsText, NoCharacterIsLostOnTheWayToTheAnsiCalls) {
  EXPECT_FALSE(windowstext::ToAnsi(QString(QChar(0xD800))).has_value());
  const QString text = QStringLiteral("Größe € \u4E2D \U0001F600");
  const auto bytes = windowstext::ToAnsi(text);
  ASSERT_TRUE(bytes.has_value());
  EXPECT_EQ(windowstext::FromAnsi(*bytes), text);
}

TEST(WindowsText, ErrorsHaveATextOfTheSystemsOwn) {
  EXPECT_FALSE(windowstext::ErrorText(ERROR_ACCESS_DENIED).isEmpty());
  EXPECT_FALSE(windowstext::ErrorText(0xE0001234).isEmpty());
}

}  // namespace
}  // namespace trevane
