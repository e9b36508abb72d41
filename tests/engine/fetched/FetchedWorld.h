#pragma once

#include "engine/fetched/FetchedFiles.h"
#include "engine/items/clsIxoFile.h"
#include "engine/providers/memory/MemoryFileSystem.h"
#include "tests/support/FaultyFileSystem.h"
#include "tests/support/SessionWorld.h"
#include "tests/support/TestFiles.h"

#include <QDateTime>
#include <QFile>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>

namespace trevane::test {

/// Two controllers without programs of their own, "Robot" and "Cell", and programs that open what is fetched
/// from them.
struct FetchedWorld : SessionWorld {
  explicit FetchedWorld(MemoryFileSystemOptions options = {}) {
    options.execute = false;
    robot = std::make_shared<MemoryFileSystem>(options);
    cell = std::make_shared<MemoryFileSystem>(options);
    faulty = std::make_shared<FaultyFileSystem>(robot);
    for (const auto& files : {robot, cell}) {
      files->AddFile(QStringLiteral("programs\\main.pac"), files == robot ? "of the robot" : "of the cell");
    }
    Open({ProviderOf(QStringLiteral("IxoProv.LocalFile"), local),
          {QStringLiteral("IxoProv.Robot"), [this](const FileSystemRequest&) { return faulty; }},
          ProviderOf(QStringLiteral("IxoProv.Cell"), cell)});
    Register(QStringLiteral("Robot"), QStringLiteral("IxoProv.Robot"));
    Register(QStringLiteral("Cell"), QStringLiteral("IxoProv.Cell"));
    Begin();
  }

  /// The program begins; the one before has crashed, unless it has ended.
  void Begin() {
    fetched = std::make_unique<FetchedFiles>(FetchedFiles::Parts{.files = files,
                                                                 .place = Place(),
                                                                 .open =
                                                                     [this](const QString& path) {
                                                                       opened += path;
                                                                       return outcome;
                                                                     },
                                                                 .now = [this] { return now; }});
    fetched->Recover();
  }
  void Crash() {
    fetched.reset();
    Begin();
  }

  /// The robot's address leads to that machine from here on.
  void ConnectRobotTo(const std::shared_ptr<FileSystem>& machine) {
    session.gIxoCtrls().Remove(robotName);
    faulty = std::make_shared<FaultyFileSystem>(machine);
    robotName = Register(robotName + u'2', QStringLiteral("IxoProv.Robot"))->RealCtrlName();
  }

  [[nodiscard]] QString Place() const { return temporary.filePath(QStringLiteral("fetched")); }
  /// All that is there, locks and records aside.
  [[nodiscard]] QStringList FetchedContents() const;

  [[nodiscard]] static QString At(const QString& path) { return QStringLiteral("Workspace\\") + path; }
  static inline const QString kMain = QStringLiteral("Robot\\programs\\main.pac");

  /// Runs the file; the path of the copy that was opened.
  QString RunFile(const QString& path = kMain) {
    clsIxoFile file = files.FileAt(At(path));
    EXPECT_EQ(file.Result(), 0);
    fetched->Run(file);
    return opened.isEmpty() ? QString() : opened.back();
  }
  [[nodiscard]] RunTimeError FailureOfRun(const QString& path = kMain) {
    try {
      RunFile(path);
    } catch (const RunTimeError& failure) {
      return failure;
    }
    ADD_FAILURE() << "it did not fail";
    return {0, QString()};
  }
  /// Time passes.
  void Wait(qint64 milliseconds = FetchedFile::kQuiet) {
    fetched->Look();
    now += milliseconds;
    fetched->Look();
    // Long files take several.
    fetched->Look();
  }
  void Write(const QString& path, const QByteArray& content) {
    WriteFile(path, content);
    // Two writes within a tick of the disk's clock show by nothing but their notices, which nobody waits for
    // here.
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadWrite));
    EXPECT_TRUE(file.setFileTime(QDateTime::fromMSecsSinceEpoch(now), QFileDevice::FileModificationTime));
    file.close();
    Wait();
  }
  FetchedFiles::PutBackResult PutBack(const FetchedFiles::MayReplace& mayReplace = [] {
    ADD_FAILURE() << "asked";
    return false;
  }) {
    const FetchedFiles::File file = fetched->NextToAsk();
    if (!file) {
      ADD_FAILURE() << "nothing is to be asked";
      return FetchedFiles::PutBackResult::Refused;
    }
    const QByteArray content = file->Content();
    file->WasAsked(content);
    return fetched->PutBack(*file, content, mayReplace);
  }
  [[nodiscard]] RunTimeError FailureOfPutBack() {
    try {
      static_cast<void>(PutBack());
    } catch (const RunTimeError& failure) {
      return failure;
    }
    ADD_FAILURE() << "it did not fail";
    return {0, QString()};
  }

  QTemporaryDir temporary;
  std::shared_ptr<MemoryFileSystem> local =
      std::make_shared<MemoryFileSystem>(MemoryFileSystemOptions{.drives = {QStringLiteral("C:")}});
  std::shared_ptr<MemoryFileSystem> robot;
  std::shared_ptr<MemoryFileSystem> cell;
  /// The robot's.
  std::shared_ptr<FaultyFileSystem> faulty;
  QString robotName = QStringLiteral("Robot");
  qint64 now = 1'000'000;
  QStringList opened;
  OpenOutcome outcome;
  std::unique_ptr<FetchedFiles> fetched;
};

inline QStringList FetchedWorld::FetchedContents() const {
  QStringList contents;
  for (const QString& run : EntriesOf(Place())) {
    for (const QString& item : EntriesOf(Place() + u'/' + run)) {
      for (const QString& name : EntriesOf(Place() + u'/' + run + u'/' + item)) {
        contents +=
            name + u'=' + QString::fromUtf8(ContentOf(Place() + u'/' + run + u'/' + item + u'/' + name));
      }
    }
  }
  contents.sort();
  return contents;
}

}  // namespace trevane::test
