#include "base/RunTimeError.h"
#include "engine/files/HeldFolder.h"
#include "engine/files/WholeFile.h"
#include "engine/providers/ftp/FtpFileSystem.h"
#include "tests/support/TestFiles.h"
#include "tests/support/ftp/FtpDaemon.h"
#include "tests/support/ftp/TestFtpConnector.h"

#include <QByteArrayList>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QList>
#include <QStringList>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

namespace trevane::test {
namespace {

using Options = FtpDaemon::Options;
using Case = std::tuple<const char*, Options>;

/// Notes the commands of a dialogue, those with a data connection, too.
class NotingDialogue final : public FtpDialogue {
 public:
  NotingDialogue(std::unique_ptr<FtpDialogue> inner, QByteArrayList& said)
      : inner_(std::move(inner)), said_(said) {}

  ftp::Reply Command(const QByteArray& command) override {
    said_ += command;
    return inner_->Command(command);
  }
  std::vector<ftp::Reply> Commands(const QByteArrayList& commands) override {
    said_ += commands;
    return inner_->Commands(commands);
  }
  Text ReadText(const QByteArray& command, qint64 most) override {
    said_ += command;
    return inner_->ReadText(command, most);
  }
  std::unique_ptr<FtpDownload> Retrieve(const QByteArray& path, qint64 offset, ftp::Reply& refusal) override {
    return inner_->Retrieve(path, offset, refusal);
  }
  std::unique_ptr<FtpUpload> Store(const QByteArray& path) override { return inner_->Store(path); }
  const QByteArrayList& Features() const override { return inner_->Features(); }
  const QByteArray& Start() const override { return inner_->Start(); }
  bool IsBroken() const noexcept override { return inner_->IsBroken(); }
  void BeginPutBack() noexcept override { inner_->BeginPutBack(); }
  void EndPutBack() noexcept override { inner_->EndPutBack(); }

 private:
  std::unique_ptr<FtpDialogue> inner_;
  QByteArrayList& said_;
};

/// The real servers.
class FtpDaemons : public ::testing::TestWithParam<Case> {
 protected:
  void SetUp() override {
    if (!FtpDaemon::IsAvailable()) {
      GTEST_SKIP() << FtpDaemon::MissingText().toStdString();
    }
    const Options options = std::get<1>(GetParam());
    daemon_ = std::make_unique<FtpDaemon>(options);
    FtpSettings settings;
    settings.host = QStringLiteral("127.0.0.1");
    settings.port = daemon_->Port();
    settings.user = daemon_->User();
    settings.tls = options.tls == Options::Tls::Off ? FtpSettings::Tls::Off : FtpSettings::Tls::Explicit;
    const FtpLogOn logOn{.user = daemon_->User(),
                         .password = Secret(daemon_->Password()),
                         .trustedFingerprint = daemon_->Fingerprint()};
    files_ = OpenFtpFileSystem(std::make_unique<TestFtpConnector>(settings, logOn), settings, {});
    open_ = [this, settings, logOn] {
      const auto note = [this](std::unique_ptr<FtpDialogue> dialogue) {
        ++connections_;
        return std::make_unique<NotingDialogue>(std::move(dialogue), said_);
      };
      return OpenFtpFileSystem(
          std::make_unique<TestFtpConnector>(settings, logOn, std::shared_ptr<CallControl>(), note), settings,
          {});
    };
    dial_ = [settings, logOn] { return std::make_unique<CurlDialogue>(settings, logOn, nullptr); };
  }

  [[nodiscard]] std::unique_ptr<FtpDialogue> Dial() const { return dial_(); }

  [[nodiscard]] QString At(const QString& name) const {
    const QString folder = daemon_->ClientFolder();
    QString path = (folder == u'/' ? QString() : folder) + u'/' + name;
    return path.replace(u'/', u'\\').sliced(1);
  }
  [[nodiscard]] QString OnDisk(const QString& name) const { return daemon_->Folder() + u'/' + name; }

  std::unique_ptr<FtpDaemon> daemon_;
  std::shared_ptr<FileSystem> files_;
  std::function<std::unique_ptr<FtpDialogue>()> dial_;
  /// Another connection, whose commands are noted.
  std::function<std::shared_ptr<FileSystem>()> open_;
  QByteArrayList said_;
  int connections_ = 0;
};

TEST_P(FtpDaemons, FindFoldersOnTheWayAsTheyAreListed) {
  const QString deep = QStringLiteral("a/b/c/d/e/f");
  ASSERT_TRUE(QDir(daemon_->Folder()).mkpath(deep));
  for (int i = 0; i < 100; ++i) {
    for (const QString& folder : {QStringLiteral("a/b"), deep}) {
      QFile file(OnDisk(QStringLiteral("%1/file %2").arg(folder).arg(i)));
      ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
  }
  ASSERT_TRUE(QFile::link(QStringLiteral("b"), OnDisk(QStringLiteral("a/short"))));
  const std::shared_ptr<FileSystem> files = open_();
  // The zone is learnt there.
  ASSERT_EQ(files->List(At(deep)).size(), 100U);
  said_.clear();
  QStringList paths;
  for (qsizetype at = deep.indexOf(u'/'); at >= 0; at = deep.indexOf(u'/', at + 1)) {
    paths += deep.first(at);
  }
  paths += deep;
  QList<FileEntry> found;
  for (const QString& path : paths) {
    const std::optional<FileEntry> entry = files->Find(At(path));
    ASSERT_TRUE(entry) << path.toStdString();
    EXPECT_TRUE(entry->IsFolder());
    found += *entry;
  }
  const Options options = std::get<1>(GetParam());
  const bool isListed = options.program == Options::Program::Vsftpd && options.tls != Options::Tls::Off;
  EXPECT_TRUE(isListed || said_.size() == paths.size()) << said_.join('\n').toStdString();
  EXPECT_TRUE(files->Find(At(QStringLiteral("a/short/c")))->IsFolder());
  EXPECT_FALSE(files->Find(At(QStringLiteral("a/none"))));
  const auto folderOf = [this](const QString& path) {
    const QString full = At(path);
    return full.first(qMax<qsizetype>(full.lastIndexOf(u'\\'), 0));
  };
  for (qsizetype i = 0; i < paths.size(); ++i) {
    for (const FileEntry& listed : files_->List(folderOf(paths[i]))) {
      if (listed.name == found[i].name) {
        EXPECT_EQ(listed.attributes, found[i].attributes);
        EXPECT_EQ(listed.modified.msecs, found[i].modified.msecs) << paths[i].toStdString();
      }
    }
  }
}

TEST_P(FtpDaemons, StandManyItemsBesideAFolderOnTheWay) {
  // An answer of more than a mebibyte over the control connection.
  constexpr int kFiles = 15'000;
  ASSERT_TRUE(QDir(daemon_->Folder()).mkpath(QStringLiteral("many/a/in")));
  for (int i = 0; i < kFiles; ++i) {
    QFile file(OnDisk(QStringLiteral("many/file of a long name %1").arg(i)));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  }
  const std::shared_ptr<FileSystem> files = open_();
  EXPECT_TRUE(files->Find(At(QStringLiteral("many/a")))->IsFolder());
  EXPECT_FALSE(files->Find(At(QStringLiteral("many/b"))));
  EXPECT_TRUE(files->Find(At(QStringLiteral("many/a/in")))->IsFolder());
  EXPECT_EQ(connections_, 1);
}

TEST_P(FtpDaemons, ThirtyUploadsInARow) {
  for (int i = 0; i < 30; ++i) {
    SCOPED_TRACE(i);
    const QByteArray content(1000 * i, static_cast<char>('a' + i % 26));
    const QString name = QStringLiteral("f%1").arg(i);
    WriteFile(*files_, At(name), content);
    ASSERT_EQ(ContentOf(OnDisk(name)), content);
  }
}

TEST_P(FtpDaemons, ThirtyFilesOfABatch) {
  // The first round learns, the second one knows.
  for (const char* round : {"a", "b"}) {
    std::vector<NewContent> many;
    many.reserve(30);
    for (int i = 0; i < 30; ++i) {
      many.push_back({At(QLatin1String(round) + QString::number(i)), QByteArray(1000 * i, *round), {}});
      many.back().request.traits.modified.msecs = 1600000000000;
    }
    const std::vector<WriteResult> results = files_->WriteMany(many);
    for (int i = 0; i < 30; ++i) {
      SCOPED_TRACE(i);
      const WriteResult& result = results[static_cast<std::size_t>(i)];
      ASSERT_TRUE(result.item) << (result.failure ? result.failure->what() : "not begun");
      ASSERT_EQ(ContentOf(OnDisk(QLatin1String(round) + QString::number(i))), QByteArray(1000 * i, *round));
    }
  }
  EXPECT_EQ(QDir(daemon_->Folder()).entryList(QDir::Files | QDir::Hidden).size(), 60);
}

TEST_P(FtpDaemons, TakeSeveralCommandsAtOnceWithoutTls) {
  if (std::get<1>(GetParam()).tls != Options::Tls::Off) {
    EXPECT_FALSE(Dial()->TakesTogether());
    return;
  }
  bool takes = false;
  // On a busy computer the second answer may be late.
  for (QDeadlineTimer end(60'000); !takes && !end.hasExpired();) {
    const std::unique_ptr<FtpDialogue> dialogue = Dial();
    takes = dialogue->TakesTogether();
    const std::vector<ftp::Reply> replies =
        takes ? dialogue->Together({"NOOP", "DELE /missing", "PWD"}) : std::vector<ftp::Reply>();
    if (takes) {
      ASSERT_EQ(replies.size(), 3U);
      EXPECT_TRUE(replies[0].IsDone());
      EXPECT_EQ(replies[1].code, 550);
      EXPECT_EQ(replies[2].code, 257);
      EXPECT_EQ(dialogue->Command("PWD").code, 257);
    }
  }
  EXPECT_TRUE(takes);
}

TEST_P(FtpDaemons, ThirtyRoundsUpDownListAndRename) {
  for (int i = 0; i < 30; ++i) {
    SCOPED_TRACE(i);
    const QByteArray content(1000 * i, static_cast<char>('a' + i % 26));
    WriteFile(*files_, At(QStringLiteral("f")), content);
    ASSERT_EQ(ReadFile(*files_, At(QStringLiteral("f"))), content);
    const QString path = At(QStringLiteral("f"));
    const Listing listing = files_->List(path.first(qMax<qsizetype>(path.lastIndexOf(u'\\'), 0)));
    ASSERT_GE(listing.size(), 1U);
    files_->Rename(At(QStringLiteral("f")), At(QStringLiteral("g")), true);
    ASSERT_EQ(ContentOf(OnDisk(QStringLiteral("g"))), content);
  }
}

TEST_P(FtpDaemons, RemovingATreeLeavesWhatLinksLeadTo) {
  ASSERT_TRUE(QDir(daemon_->Folder()).mkpath(QStringLiteral("tree/sub")));
  ASSERT_TRUE(QDir(daemon_->Folder()).mkpath(QStringLiteral("outside")));
  WriteFile(OnDisk(QStringLiteral("outside/precious")), "precious");
  ASSERT_TRUE(QFile::link(OnDisk(QStringLiteral("outside")), OnDisk(QStringLiteral("tree/sub/link"))));
  ASSERT_TRUE(QFile::link(OnDisk(QStringLiteral("outside")), OnDisk(QStringLiteral("top"))));
  ASSERT_TRUE(QFile::link(OnDisk(QStringLiteral("outside/precious")), OnDisk(QStringLiteral("tree/file"))));
  files_->Remove(At(QStringLiteral("tree")));
  files_->Remove(At(QStringLiteral("top")));
  EXPECT_EQ(ContentOf(OnDisk(QStringLiteral("outside/precious"))), "precious");
  EXPECT_EQ(EntriesOf(daemon_->Folder()), QStringList{QStringLiteral("outside")});
}

TEST_P(FtpDaemons, RemovesLinksOfAllKinds) {
  ASSERT_TRUE(QDir(daemon_->Folder()).mkpath(QStringLiteral("tree/leaf")));
  ASSERT_TRUE(QDir(daemon_->Folder()).mkpath(QStringLiteral("tree/sub")));
  ASSERT_TRUE(QDir(daemon_->Folder()).mkpath(QStringLiteral("outside")));
  WriteFile(OnDisk(QStringLiteral("outside/precious")), "precious");
  const auto link = [&](const QString& target, const QString& name) {
    EXPECT_TRUE(QFile::link(target, OnDisk(name)));
  };
  link(QStringLiteral("../../outside"), QStringLiteral("tree/sub/outside"));
  link(QStringLiteral(".."), QStringLiteral("tree/sub/up"));
  link(QStringLiteral("."), QStringLiteral("tree/sub/self"));
  link(QStringLiteral("nowhere"), QStringLiteral("tree/sub/dangling"));
  link(QStringLiteral("nowhere"), QStringLiteral("tree/leaf/dangling"));
  link(QStringLiteral("outside"), QStringLiteral("alone"));
  files_->RemoveAlone(At(QStringLiteral("alone")));
  files_->Remove(At(QStringLiteral("tree")));
  EXPECT_EQ(ContentOf(OnDisk(QStringLiteral("outside/precious"))), "precious");
  EXPECT_EQ(EntriesOf(daemon_->Folder()), QStringList{QStringLiteral("outside")});
}

TEST_P(FtpDaemons, CopiesNoTreeThroughALink) {
  ASSERT_TRUE(QDir(daemon_->Folder()).mkpath(QStringLiteral("tree/sub")));
  ASSERT_TRUE(QDir(daemon_->Folder()).mkpath(QStringLiteral("outside")));
  WriteFile(OnDisk(QStringLiteral("outside/precious")), "precious");
  ASSERT_TRUE(QFile::link(QStringLiteral("../../outside"), OnDisk(QStringLiteral("tree/sub/outside"))));
  ASSERT_TRUE(QFile::link(QStringLiteral(".."), OnDisk(QStringLiteral("tree/sub/up"))));
  // A window has shown it before.
  static_cast<void>(files_->List(At(QStringLiteral("tree/sub"))));
  const std::shared_ptr<HeldFolder> tree = files_->Hold(At(QStringLiteral("tree")));
  const Listing listing = tree->Enter(QStringLiteral("sub"))->List();
  EXPECT_EQ(listing.size(), 2U);
  for (const FileEntry& entry : listing) {
    EXPECT_TRUE(entry.IsLink()) << entry.name.toStdString();
  }
  // The link itself is the item, and no server of these makes one.
  EXPECT_THROW(files_->Copy(At(QStringLiteral("tree")), At(QStringLiteral("copy")), false), RunTimeError);
  EXPECT_FALSE(QFile::exists(OnDisk(QStringLiteral("copy/sub/outside/precious"))));
}

TEST_P(FtpDaemons, WritesThroughNoLinkInPlaceOfAFolder) {
  ASSERT_TRUE(QDir(daemon_->Folder()).mkpath(QStringLiteral("outside")));
  ASSERT_TRUE(QDir(daemon_->Folder()).mkpath(QStringLiteral("base/sub")));
  const std::shared_ptr<HeldFolder> base = files_->Hold(At(QStringLiteral("base")));
  base->CreateFolder(QStringLiteral("made"), false);
  for (const QString& name : {QStringLiteral("sub"), QStringLiteral("made")}) {
    const std::shared_ptr<HeldFolder> held = base->Enter(name);
    held->CreateFolder(QStringLiteral("first"), false);
    ASSERT_TRUE(QDir(OnDisk(QStringLiteral("base/") + name)).removeRecursively());
    ASSERT_TRUE(QFile::link(QStringLiteral("../outside"), OnDisk(QStringLiteral("base/") + name)));
    EXPECT_THROW(held->CreateFolder(QStringLiteral("second"), false), RunTimeError);
    EXPECT_THROW(static_cast<void>(held->WriteMany({{QStringLiteral("f"), "f", {}}})), RunTimeError);
  }
  EXPECT_TRUE(EntriesOf(OnDisk(QStringLiteral("outside"))).isEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    All, FtpDaemons,
    ::testing::Values(
        Case{"Vsftpd", {.program = Options::Program::Vsftpd}},
        Case{"VsftpdReuse", {.program = Options::Program::Vsftpd, .tls = Options::Tls::ExplicitWithReuse}},
        Case{"ProFtpd", {.program = Options::Program::ProFtpd}},
        Case{"ProFtpdReuse", {.program = Options::Program::ProFtpd, .tls = Options::Tls::ExplicitWithReuse}},
        Case{"PyFtpd", {.program = Options::Program::PyFtpd}}),
    [](const ::testing::TestParamInfo<Case>& info) { return std::string(std::get<0>(info.param)); });

}  // namespace
}  // namespace trevane::test
