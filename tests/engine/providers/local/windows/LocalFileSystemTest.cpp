#include "engine/files/MoveItem.h"
#include "engine/files/ProviderError.h"
#include "engine/files/WholeFile.h"
#include "engine/providers/local/LocalFileSystem.h"
#include "engine/providers/local/windows/ReparsePoint.h"
#include "engine/providers/local/windows/Win32Errors.h"
#include "engine/providers/local/windows/WindowsPath.h"
#include "platform/windows/WindowsText.h"
#include "tests/engine/providers/ProviderBed.h"
#include "tests/engine/providers/local/LocalWorld.h"
#include "tests/support/FakeVolumes.h"
#include "tests/support/Wine.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include <windows.h>

#include <aclapi.h>
#include <winioctl.h>
#undef CreateFile

namespace trevane::test {
namespace {

using windowstext::Wide;

/// Under Wine: starts a program of the host, by another process, since the system gives one that has started
/// such a program no random numbers any more.
void RunOnHost(const QString& commandLine) {
  std::wstring command = (QStringLiteral("start.exe /unix ") + commandLine).toStdWString();
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  ASSERT_NE(CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                           &process),
            FALSE);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
}

class LocalFileSystemTest : public ::testing::Test {
 protected:
  LocalFileSystemTest() { volumes_.Set({{QStringLiteral("C:"), folder_.path() + u'/', drivetype::kFixed}}); }
  ~LocalFileSystemTest() override {
    for (const FileEntry& entry : files_.List(QStringLiteral("C:")))
      files_.Remove(QStringLiteral("C:\\") + entry.name);
  }

  [[nodiscard]] QString Native(const QString& below) const {
    return windowstext::LiteralPath(folder_.path() + u'/' + below);
  }
  [[nodiscard]] QStringList Names(const QString& folder) { return NamesIn(files_, folder); }
  /// Bypasses the provider, so that any name can be created.
  void Put(const QString& below, const QByteArray& content) {
    const HANDLE file = CreateFileW(Wide(Native(below)), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE) << below.toStdString();
    DWORD written = 0;
    ::WriteFile(file, content.constData(), static_cast<DWORD>(content.size()), &written, nullptr);
    CloseHandle(file);
  }
  [[nodiscard]] DWORD AttributesOf(const QString& below) const {
    return GetFileAttributesW(Wide(Native(below)));
  }
  /// Creates a junction, which needs no privilege; false where the system has none.
  [[nodiscard]] bool MakeJunction(const QString& below, const QString& target) {
    if (CreateDirectoryW(Wide(Native(below)), nullptr) == FALSE)
      return false;
    QString plain = QDir::toNativeSeparators(folder_.path() + u'/' + target);
    const QString substitute = QStringLiteral("\\??\\") + plain;
    const auto bytes = [](const QString& text) { return static_cast<quint16>(text.size() * 2); };
    QByteArray names(reinterpret_cast<const char*>(substitute.utf16()), substitute.size() * 2 + 2);
    names += QByteArray(reinterpret_cast<const char*>(plain.utf16()), plain.size() * 2 + 2);
    const std::array<quint16, 4> places{0, bytes(substitute), static_cast<quint16>(bytes(substitute) + 2),
                                        bytes(plain)};
    const auto size = static_cast<quint16>(sizeof places + static_cast<size_t>(names.size()));
    QByteArray data;
    const quint32 tag = IO_REPARSE_TAG_MOUNT_POINT;
    data.append(reinterpret_cast<const char*>(&tag), sizeof tag);
    data.append(reinterpret_cast<const char*>(&size), sizeof size);
    data.append("\0\0", 2);
    data.append(reinterpret_cast<const char*>(places.data()), sizeof places);
    data.append(names);
    const HANDLE folder = CreateFileW(Wide(Native(below)), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    DWORD got = 0;
    const bool made = DeviceIoControl(folder, FSCTL_SET_REPARSE_POINT, data.data(),
                                      static_cast<DWORD>(data.size()), nullptr, 0, &got, nullptr) != FALSE;
    CloseHandle(folder);
    return made;
  }

  QTemporaryDir folder_;
  FakeVolumes volumes_;
  LocalFileSystem files_{volumes_};
};

TEST(ReparsePointTest, SymbolicLinksAreReadWithinTheirData) {
  const auto link = [](quint32 tag, const QString& substitute, const QString& shown) {
    const auto bytes = [](const QString& text) {
      return QByteArray(reinterpret_cast<const char*>(text.utf16()), text.size() * 2);
    };
    const std::array<quint16, 6> words{0,
                                       static_cast<quint16>(substitute.size() * 2),
                                       static_cast<quint16>(substitute.size() * 2),
                                       static_cast<quint16>(shown.size() * 2),
                                       0,
                                       0};
    QByteArray data(reinterpret_cast<const char*>(&tag), sizeof tag);
    data += QByteArray(4, '\0') + QByteArray(reinterpret_cast<const char*>(words.data()), sizeof words);
    return local::ReparsePoint{data + bytes(substitute) + bytes(shown)};
  };
  constexpr quint32 kLink = IO_REPARSE_TAG_SYMLINK;
  EXPECT_EQ(link(kLink, QStringLiteral("\\??\\C:\\a"), QStringLiteral("C:\\a")).SymbolicTarget(),
            QStringLiteral("C:\\a"));
  EXPECT_EQ(link(kLink, QStringLiteral("\\??\\C:\\a"), QStringLiteral("")).SymbolicTarget(),
            QStringLiteral("C:\\a"));
  EXPECT_EQ(link(kLink, QStringLiteral("..\\a"), QStringLiteral("..\\a")).SymbolicTarget(),
            QStringLiteral("..\\a"));
  EXPECT_EQ(link(kLink, QStringLiteral("\\??\\UNC\\server\\share"), QStringLiteral("")).SymbolicTarget(),
            QStringLiteral("\\\\server\\share"));
  EXPECT_EQ(link(IO_REPARSE_TAG_MOUNT_POINT, QStringLiteral("\\??\\C:\\a"), QStringLiteral("C:\\a"))
                .SymbolicTarget(),
            QString());
  local::ReparsePoint cut = link(kLink, QStringLiteral("\\??\\C:\\a"), QStringLiteral("C:\\a"));
  for (qsizetype size = cut.data.size() - 1; size >= 0; --size) {
    cut.data.truncate(size);
    EXPECT_LE(cut.SymbolicTarget().size(), 4);
    EXPECT_FALSE(cut.LeadsToVolume());
  }
}

TEST(Win32ErrorsTest, EachFailureHasTheNumberOfItsKind) {
  const std::pair<quint32, qint32> rows[] = {{ERROR_FILE_NOT_FOUND, error::kNotFound},
                                             {ERROR_PATH_NOT_FOUND, error::kNotFound},
                                             {ERROR_NOT_READY, error::kDeviceNotReady},
                                             {ERROR_NO_MEDIA_IN_DRIVE, error::kDeviceNotReady},
                                             {ERROR_ACCESS_DENIED, error::kAccessDenied},
                                             {ERROR_FILE_EXISTS, error::kExists},
                                             {ERROR_ALREADY_EXISTS, error::kExists},
                                             {ERROR_DISK_FULL, error::kDiskFull},
                                             {ERROR_HANDLE_DISK_FULL, error::kDiskFull},
                                             {ERROR_DIR_NOT_EMPTY, error::kDirectoryNotEmpty},
                                             {ERROR_INVALID_NAME, error::kInvalidName},
                                             {ERROR_SEM_TIMEOUT, error::kTimeOut},
                                             {ERROR_WRITE_PROTECT, providererror::kWriteProtected},
                                             {ERROR_FILENAME_EXCED_RANGE, providererror::kNameTooLong},
                                             {ERROR_NOT_SAME_DEVICE, providererror::kNotSameDevice},
                                             {ERROR_SHARING_VIOLATION, error::kWin32Error + 32},
                                             {ERROR_BAD_NETPATH, error::kWin32Error + 53},
                                             {0, providererror::kGeneralFailure}};
  for (const auto& [code, number] : rows)
    EXPECT_EQ(local::NumberOfWin32(code), number) << code;
}

TEST(Win32ErrorsTest, ADriveWithoutAMediumIsNotReady) {
  for (const DWORD code : {ERROR_NOT_READY, ERROR_NO_MEDIA_IN_DRIVE})
    EXPECT_EQ(local::NumberOfWin32(code), static_cast<qint32>(0x80010015)) << code;
}

TEST_F(LocalFileSystemTest, AttributesAreShownAsTheyAre) {
  const std::pair<DWORD, qint32> rows[] = {
      {FILE_ATTRIBUTE_READONLY, attribute::kReadOnly},
      {FILE_ATTRIBUTE_HIDDEN, attribute::kHidden},
      {FILE_ATTRIBUTE_SYSTEM, attribute::kSystem},
      {FILE_ATTRIBUTE_ARCHIVE, attribute::kArchive},
      {FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE,
       attribute::kReadOnly | attribute::kHidden | attribute::kSystem | attribute::kArchive}};
  Put(QStringLiteral("f"), "x");
  for (const auto& [set, shown] : rows) {
    SetFileAttributesW(Wide(Native(QStringLiteral("f"))), set);
    // Some file systems do not store all of them.
    const auto kept = static_cast<qint32>(AttributesOf(QStringLiteral("f"))) & 0x27;
    EXPECT_EQ(files_.Stat(QStringLiteral("C:\\f")).attributes, kept);
    EXPECT_EQ(files_.List(QStringLiteral("C:")).front().attributes, kept);
    if (!RunsUnderWine()) {
      EXPECT_EQ(kept, shown);
    }
  }
}

TEST_F(LocalFileSystemTest, ANewFileHasTheMarksAndTheCreationTimeItIsGiven) {
  const Date created{1000000000000};
  const qint32 marks = attribute::kReadOnly | attribute::kArchive;
  WriteNewFile(files_, QStringLiteral("C:\\f"), "x", {.marks = marks, .created = created});
  EXPECT_EQ(files_.Traits(QStringLiteral("C:\\f")).marks, marks);
  EXPECT_EQ(files_.Stat(QStringLiteral("C:\\f")).attributes, marks);
  WriteNewFile(files_, QStringLiteral("C:\\g"), "x", {.marks = 0, .created = created});
  // Wine stores no creation times and sets the archive attribute of every file.
  EXPECT_EQ(files_.Traits(QStringLiteral("C:\\g")).marks, RunsUnderWine() ? attribute::kArchive : 0);
  if (!RunsUnderWine()) {
    EXPECT_EQ(files_.Traits(QStringLiteral("C:\\f")).created, created);
    EXPECT_EQ(files_.Stat(QStringLiteral("C:\\g")).created, created);
  }
  // A file that cannot be put in place leaves nothing behind, even if it is read-only.
  EXPECT_EQ(ErrorOf([&] { WriteNewFile(files_, QStringLiteral("C:\\f"), "y", {.marks = marks}); }),
            error::kExists);
  EXPECT_EQ(Names(QStringLiteral("C:")), (QStringList{QStringLiteral("f"), QStringLiteral("g")}));
}

TEST_F(LocalFileSystemTest, ReservedNamesAreNotCreated) {
  Put(QStringLiteral("f"), "x");
  files_.CreateFolder(QStringLiteral("C:\\d"));
  for (const QString& name :
       {QStringLiteral("a:b"),     QStringLiteral("C:"),       QStringLiteral("CON"),
        QStringLiteral("con.txt"), QStringLiteral("nul"),      QStringLiteral("AUX .txt"),
        QStringLiteral("Com1"),    QStringLiteral("lpt9.a.b"), QStringLiteral("LPT\u00B9"),
        QStringLiteral("CONIN$"),  QStringLiteral("end."),     QStringLiteral("end "),
        QStringLiteral("..."),     QStringLiteral(" "),        QStringLiteral("a*"),
        QStringLiteral("a?"),      QStringLiteral("a<b"),      QStringLiteral("a>b"),
        QStringLiteral("a|b"),     QStringLiteral("a\"b"),     QStringLiteral("a\nb"),
        QStringLiteral("a\u0001")}) {
    const QString path = QStringLiteral("C:\\d\\") + name;
    EXPECT_EQ(ErrorOf([&] { files_.CreateFile(path); }), error::kInvalidName) << name.toStdString();
    EXPECT_EQ(ErrorOf([&] { files_.CreateFolder(path); }), error::kInvalidName) << name.toStdString();
    EXPECT_EQ(ErrorOf([&] { WriteNewFile(files_, path, "x", {}); }), error::kInvalidName)
        << name.toStdString();
    EXPECT_NE(ErrorOf([&] { WriteFile(files_, path, "x"); }), 0) << name.toStdString();
    EXPECT_NE(ErrorOf([&] { files_.Copy(QStringLiteral("C:\\f"), path, true); }), 0) << name.toStdString();
    EXPECT_NE(ErrorOf([&] { files_.Rename(QStringLiteral("C:\\f"), path, true); }), 0) << name.toStdString();
    EXPECT_FALSE(ErrorTextOf([&] { files_.CreateFile(path); }).isEmpty());
  }
  EXPECT_TRUE(Names(QStringLiteral("C:\\d")).isEmpty());
  EXPECT_EQ(ReadFile(files_, QStringLiteral("C:\\f")), QByteArray("x"));
  for (const QString& name : {QStringLiteral("console"), QStringLiteral("com10"), QStringLiteral("COM"),
                              QStringLiteral("nul1"), QStringLiteral("a.con"), QStringLiteral(".hidden"),
                              QStringLiteral(" lead"), QStringLiteral("aux_"), QStringLiteral("com\u00E4")})
    EXPECT_EQ(ErrorOf([&] { files_.CreateFile(QStringLiteral("C:\\d\\") + name); }), 0) << name.toStdString();
}

TEST_F(LocalFileSystemTest, ExistingItemsWithReservedNamesCanBeUsed) {
  const QStringList names{QStringLiteral("aux.txt"), QStringLiteral("dot."), QStringLiteral("con"),
                          QStringLiteral("blank ")};
  files_.CreateFolder(QStringLiteral("C:\\d"));
  for (const QString& name : names)
    Put(QStringLiteral("d/") + name, name.toUtf8());
  QStringList sorted = names;
  sorted.sort();
  EXPECT_EQ(Names(QStringLiteral("C:\\d")), sorted);
  for (const QString& name : names) {
    const QString path = QStringLiteral("C:\\d\\") + name;
    EXPECT_EQ(files_.Stat(path).name, name);
    EXPECT_EQ(ReadFile(files_, path), name.toUtf8());
    files_.Copy(path, QStringLiteral("C:\\copy"), true);
    EXPECT_EQ(ReadFile(files_, QStringLiteral("C:\\copy")), name.toUtf8());
    // A folder with such a name in it is not copied in part.
    EXPECT_EQ(ErrorOf([&] { files_.Copy(QStringLiteral("C:\\d"), QStringLiteral("C:\\e"), false); }),
              error::kInvalidName);
    EXPECT_EQ(Names(QStringLiteral("C:")), (QStringList{QStringLiteral("copy"), QStringLiteral("d")}));
    files_.Remove(path);
  }
  EXPECT_TRUE(Names(QStringLiteral("C:\\d")).isEmpty());
}

TEST_F(LocalFileSystemTest, ReadOnlyFilesCanBeDeletedButNotReplaced) {
  Put(QStringLiteral("f"), "old");
  Put(QStringLiteral("g"), "new");
  SetFileAttributesW(Wide(Native(QStringLiteral("f"))), FILE_ATTRIBUTE_READONLY);
  EXPECT_EQ(ErrorOf([&] { WriteFile(files_, QStringLiteral("C:\\f"), "x"); }), error::kAccessDenied);
  EXPECT_EQ(ErrorOf([&] { files_.Copy(QStringLiteral("C:\\g"), QStringLiteral("C:\\f"), true); }),
            error::kAccessDenied);
  EXPECT_EQ(ErrorOf([&] { files_.Rename(QStringLiteral("C:\\g"), QStringLiteral("C:\\f"), true); }),
            error::kAccessDenied);
  EXPECT_EQ(ReadFile(files_, QStringLiteral("C:\\f")), QByteArray("old"));
  EXPECT_NE(AttributesOf(QStringLiteral("f")) & FILE_ATTRIBUTE_READONLY, 0U);
  files_.Remove(QStringLiteral("C:\\f"));
  EXPECT_EQ(Names(QStringLiteral("C:")), QStringList{QStringLiteral("g")});
}

TEST_F(LocalFileSystemTest, FilesThatAreOpenElsewhereAreNotDeleted) {
  Put(QStringLiteral("f"), "x");
  SetFileAttributesW(Wide(Native(QStringLiteral("f"))), FILE_ATTRIBUTE_READONLY);
  const HANDLE held = CreateFileW(Wide(Native(QStringLiteral("f"))), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                  OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(held, INVALID_HANDLE_VALUE);
  EXPECT_NE(ErrorOf([&] { files_.Remove(QStringLiteral("C:\\f")); }), 0);
  EXPECT_NE(AttributesOf(QStringLiteral("f")) & FILE_ATTRIBUTE_READONLY, 0U);
  CloseHandle(held);
  EXPECT_EQ(ReadFile(files_, QStringLiteral("C:\\f")), QByteArray("x"));
}

TEST_F(LocalFileSystemTest, RemoveNeverFollowsAJunction) {
  files_.CreateFolder(QStringLiteral("C:\\keep"));
  Put(QStringLiteral("keep/f"), "x");
  files_.CreateFolder(QStringLiteral("C:\\d"));
  if (!MakeJunction(QStringLiteral("d/j"), QStringLiteral("keep")))
    GTEST_SKIP() << "no junctions here";
  EXPECT_TRUE(files_.Stat(QStringLiteral("C:\\d\\j")).IsLink());
  EXPECT_TRUE(files_.Stat(QStringLiteral("C:\\d\\j")).IsFolder());
  EXPECT_EQ(Names(QStringLiteral("C:\\d\\j")), QStringList{QStringLiteral("f")});
  files_.Copy(QStringLiteral("C:\\d"), QStringLiteral("C:\\e"), false);
  EXPECT_TRUE(files_.Stat(QStringLiteral("C:\\e\\j")).IsLink());
  files_.Remove(QStringLiteral("C:\\d"));
  files_.Remove(QStringLiteral("C:\\e\\j"));
  EXPECT_EQ(ReadFile(files_, QStringLiteral("C:\\keep\\f")), QByteArray("x"));
  EXPECT_TRUE(Names(QStringLiteral("C:\\e")).isEmpty());
}

TEST_F(LocalFileSystemTest, RemoveNeverEntersAFolderThatIsShownAsALink) {
  // Wine shows links of the host as reparse points without a tag, and starts programs of the host.
  const QString shared = QStringLiteral("Z:/tmp");
  if (!RunsUnderWine() || !QFileInfo::exists(QStringLiteral("Z:/bin/ln")))
    GTEST_SKIP() << "no links of another system";
  QTemporaryDir below(shared + QStringLiteral("/trevane-test-XXXXXX"));
  ASSERT_TRUE(below.isValid());
  volumes_.Set({{QStringLiteral("C:"), folder_.path() + u'/', drivetype::kFixed},
                {QStringLiteral("D:"), below.path() + u'/', drivetype::kFixed}});
  files_.CreateFolder(QStringLiteral("D:\\keep"));
  WriteFile(files_, QStringLiteral("D:\\keep\\f"), "x");
  files_.CreateFolder(QStringLiteral("D:\\d"));
  WriteFile(files_, QStringLiteral("D:\\d\\own"), "y");
  const QString unixPath = below.path().mid(2);
  RunOnHost(QStringLiteral("/bin/ln -s %1/keep %1/d/link").arg(unixPath));
  for (int i = 0; i < 500 && !files_.Find(QStringLiteral("D:\\d\\link")); ++i)
    Sleep(10);
  ASSERT_TRUE(files_.Stat(QStringLiteral("D:\\d\\link")).IsLink());
  // Wine cannot remove such a link; its target must be kept.
  static_cast<void>(ErrorOf([&] { files_.Remove(QStringLiteral("D:\\d\\link")); }));
  static_cast<void>(ErrorOf([&] { files_.Remove(QStringLiteral("D:\\d")); }));
  static_cast<void>(ErrorOf([&] { files_.Copy(QStringLiteral("D:\\d"), QStringLiteral("D:\\e"), false); }));
  EXPECT_FALSE(files_.Find(QStringLiteral("D:\\e")).has_value());
  EXPECT_EQ(ReadFile(files_, QStringLiteral("D:\\keep\\f")), QByteArray("x"));
  RunOnHost(QStringLiteral("/bin/rm -rf %1/d").arg(unixPath));
  for (int i = 0; i < 500 && files_.Find(QStringLiteral("D:\\d")); ++i)
    Sleep(10);
  files_.Remove(QStringLiteral("D:\\keep"));
  volumes_.Set({{QStringLiteral("C:"), folder_.path() + u'/', drivetype::kFixed}});
}

TEST_F(LocalFileSystemTest, NamesThatBeginLikeAByteOrderMarkAreTheirOwn) {
  // A decoder would drop the first character or swap the bytes: the name would become another one.
  const QString marked = QChar(0xFEFF) + QStringLiteral("f");
  const QString turned = QChar(0xFFFE) + QStringLiteral("f");
  Put(QStringLiteral("f"), "plain");
  Put(marked, "marked");
  Put(turned, "turned");
  QStringList sorted{QStringLiteral("f"), marked, turned};
  sorted.sort();
  EXPECT_EQ(Names(QStringLiteral("C:")), sorted);
  for (const QString& name : {marked, turned})
    EXPECT_EQ(files_.Stat(QStringLiteral("C:\\") + name).name, name);
  files_.CreateFolder(QStringLiteral("C:\\d"));
  files_.Rename(QStringLiteral("C:\\") + marked, QStringLiteral("C:\\d\\") + marked, false);
  files_.Copy(QStringLiteral("C:\\d"), QStringLiteral("C:\\e"), false);
  EXPECT_EQ(Names(QStringLiteral("C:\\e")), QStringList{marked});
  Put(QStringLiteral("e/f"), "stays");
  files_.Remove(QStringLiteral("C:\\e\\") + marked);
  EXPECT_EQ(ReadFile(files_, QStringLiteral("C:\\e\\f")), QByteArray("stays"));
  Put(QStringLiteral("d/f"), "goes");
  files_.Remove(QStringLiteral("C:\\d"));
  EXPECT_EQ(ReadFile(files_, QStringLiteral("C:\\f")), QByteArray("plain"));
}

TEST_F(LocalFileSystemTest, NamesWithHalfASurrogatePairCanBeUsed) {
  const QString first = QStringLiteral("a") + QChar(0xD83D) + QStringLiteral("b");
  const QString second = QString(QChar(0xDE00)) + QStringLiteral("b");
  for (const QString& name : {first, second}) {
    const HANDLE file = CreateFileW(Wide(Native(name)), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    // Wine stores names as UTF-8, which has no such halves.
    if (file == INVALID_HANDLE_VALUE && RunsUnderWine())
      GTEST_SKIP() << "no such names here";
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    CloseHandle(file);
  }
  if (RunsUnderWine() && Names(QStringLiteral("C:")) != (QStringList{first, second}))
    GTEST_SKIP() << "the system keeps another name";
  EXPECT_EQ(Names(QStringLiteral("C:")), (QStringList{first, second}));
  for (const QString& name : {first, second}) {
    const QString path = QStringLiteral("C:\\") + name;
    EXPECT_EQ(files_.Stat(path).name, name);
    WriteFile(files_, path, "x");
    files_.Copy(path, QStringLiteral("C:\\d") + name, false);
    EXPECT_EQ(ReadFile(files_, QStringLiteral("C:\\d") + name), QByteArray("x"));
    files_.Rename(QStringLiteral("C:\\d") + name, QStringLiteral("C:\\e") + name, false);
    files_.Remove(QStringLiteral("C:\\e") + name);
    files_.Remove(path);
  }
  EXPECT_TRUE(Names(QStringLiteral("C:")).isEmpty());
}

TEST_F(LocalFileSystemTest, WildcardsInNamesFindNothing) {
  Put(QStringLiteral("abc.txt"), "x");
  for (const QString& name :
       {QStringLiteral("*"), QStringLiteral("a?c.txt"), QStringLiteral("<"), QStringLiteral("a<"),
        QStringLiteral("a>c.txt"), QStringLiteral("abc\"txt"), QStringLiteral("<<")}) {
    const QString path = QStringLiteral("C:\\") + name;
    EXPECT_EQ(ErrorOf([&] { (void)files_.Find(path); }), error::kInvalidName) << name.toStdString();
    EXPECT_EQ(ErrorOf([&] { (void)files_.Stat(path); }), error::kInvalidName) << name.toStdString();
    EXPECT_NE(ErrorOf([&] { files_.Remove(path); }), 0) << name.toStdString();
    EXPECT_NE(ErrorOf([&] { files_.RemoveAlone(path); }), 0) << name.toStdString();
    EXPECT_NE(ErrorOf([&] { files_.Rename(path, QStringLiteral("C:\\other"), true); }), 0)
        << name.toStdString();
  }
  EXPECT_EQ(Names(QStringLiteral("C:")), QStringList{QStringLiteral("abc.txt")});
}

TEST_F(LocalFileSystemTest, NamesThatOnlyOurLowerCaseMakesEqualAreMerged) {
  // The system has no lower case for the Kelvin sign: it is another name than "k".
  const QString kelvin{QChar(0x212A)};
  files_.CreateFolder(QStringLiteral("C:\\d"));
  Put(QStringLiteral("d/k"), "letter");
  Put(QStringLiteral("d/") + kelvin, "sign");
  files_.Copy(QStringLiteral("C:\\d"), QStringLiteral("C:\\e"), false);
  files_.Copy(QStringLiteral("C:\\d"), QStringLiteral("C:\\e"), true);
  EXPECT_EQ(ReadFile(files_, QStringLiteral("C:\\e\\k")), QByteArray("letter"));
  EXPECT_EQ(ReadFile(files_, QStringLiteral("C:\\e\\") + kelvin), QByteArray("sign"));
}

TEST_F(LocalFileSystemTest, TwoNamesThatAreOneInAMergeNeverReplaceOneAnother) {
  for (const bool folders : {false, true}) {
    SCOPED_TRACE(folders);
    const QString longName = QStringLiteral("a name that is too long for systems of old.text");
    files_.CreateFolder(QStringLiteral("C:\\from"));
    files_.CreateFolder(QStringLiteral("C:\\to"));
    const QString longPath = QStringLiteral("C:\\from\\") + longName;
    if (folders) {
      files_.CreateFolder(longPath);
    } else {
      WriteFile(files_, longPath, "long");
    }
    // The short name of one item is the long name of another.
    std::array<wchar_t, 0x8000> buffer{};
    GetShortPathNameW(Wide(Native(QStringLiteral("from/") + longName)), buffer.data(), buffer.size());
    QString shortName = windowstext::FromWide(buffer.data());
    shortName = shortName.mid(shortName.lastIndexOf(u'\\') + 1);
    if (shortName.isEmpty() || shortName == longName)
      GTEST_SKIP() << "no short names here";
    files_.Remove(longPath);
    // Created first, it makes the system choose another short name here, but not in the destination.
    for (const QString& name : {shortName, longName}) {
      const QString path = QStringLiteral("C:\\from\\") + name;
      if (folders)
        files_.CreateFolder(path);
      WriteFile(files_, folders ? path + QStringLiteral("\\f") : path, name.toUtf8());
    }
    ASSERT_EQ(files_.List(QStringLiteral("C:\\from")).size(), 2U);
    const qint32 number =
        ErrorOf([&] { files_.Copy(QStringLiteral("C:\\from"), QStringLiteral("C:\\to"), true); });
    EXPECT_TRUE(number == 0 || number == error::kExists) << number;
    const QStringList put = Names(QStringLiteral("C:\\to"));
    EXPECT_EQ(put.size(), number == 0 ? 2 : 1);
    for (const QString& name : put)
      EXPECT_EQ(
          ReadFile(files_, QStringLiteral("C:\\to\\") + name + (folders ? QStringLiteral("\\f") : QString())),
          name.toUtf8());
    files_.Remove(QStringLiteral("C:\\from"));
    files_.Remove(QStringLiteral("C:\\to"));
  }
}

TEST_F(LocalFileSystemTest, DeletingOneHardLinkLeavesTheOtherReadOnly) {
  Put(QStringLiteral("f"), "x");
  if (CreateHardLinkW(Wide(Native(QStringLiteral("g"))), Wide(Native(QStringLiteral("f"))), nullptr) == FALSE)
    GTEST_SKIP() << "no hard links here";
  SetFileAttributesW(Wide(Native(QStringLiteral("f"))), FILE_ATTRIBUTE_READONLY);
  ASSERT_NE(AttributesOf(QStringLiteral("g")) & FILE_ATTRIBUTE_READONLY, 0U);
  files_.Remove(QStringLiteral("C:\\f"));
  EXPECT_EQ(Names(QStringLiteral("C:")), QStringList{QStringLiteral("g")});
  EXPECT_NE(AttributesOf(QStringLiteral("g")) & FILE_ATTRIBUTE_READONLY, 0U);
}

TEST_F(LocalFileSystemTest, FoldersCannotBeMovedWhileTheyAreDeleted) {
  files_.CreateFolder(QStringLiteral("C:\\d"));
  files_.CreateFolder(QStringLiteral("C:\\d\\sub"));
  Put(QStringLiteral("d/sub/f"), "x");
  bool tried = false;
  const ItemObserver observer = [&](const ItemProgress& item) {
    if (item.name == QStringLiteral("f")) {
      tried = true;
      // Another program tries to replace it by a link to a folder that also has an "f".
      EXPECT_EQ(
          MoveFileExW(Wide(Native(QStringLiteral("d/sub"))), Wide(Native(QStringLiteral("elsewhere"))), 0),
          FALSE);
      EXPECT_EQ(RemoveDirectoryW(Wide(Native(QStringLiteral("d/sub")))), FALSE);
    }
    return true;
  };
  files_.Remove(QStringLiteral("C:\\d"), observer);
  EXPECT_TRUE(tried);
  EXPECT_TRUE(Names(QStringLiteral("C:")).isEmpty());
}

TEST_F(LocalFileSystemTest, WriteKeepsInheritedAndOwnPermissions) {
  Put(QStringLiteral("f"), "old");
  const QString native = Native(QStringLiteral("f"));
  auto* path = const_cast<wchar_t*>(Wide(native));
  const auto controlOf = [&path] {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    if (GetNamedSecurityInfoW(path, SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, nullptr,
                              nullptr, &descriptor) == ERROR_SUCCESS) {
      GetSecurityDescriptorControl(descriptor, &control, &revision);
      LocalFree(descriptor);
    }
    return control & SE_DACL_PROTECTED;
  };
  PACL rights = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  ASSERT_EQ(GetNamedSecurityInfoW(path, SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &rights,
                                  nullptr, &descriptor),
            static_cast<DWORD>(ERROR_SUCCESS));
  SetNamedSecurityInfoW(path, SE_FILE_OBJECT, DACL_SECURITY_INFORMATION | PROTECTED_DACL_SECURITY_INFORMATION,
                        nullptr, nullptr, rights, nullptr);
  LocalFree(descriptor);
  // Wine derives the permissions from those of the host.
  if (RunsUnderWine() && controlOf() == 0)
    GTEST_SKIP() << "all rights come from the folder here";
  ASSERT_NE(controlOf(), 0);
  WriteFile(files_, QStringLiteral("C:\\f"), "new");
  EXPECT_EQ(ReadFile(files_, QStringLiteral("C:\\f")), QByteArray("new"));
  EXPECT_NE(controlOf(), 0);
}

TEST(WindowsPathTest, TheWayUpEndsAtTheRootOfTheDriveOrOfTheShare) {
  const std::pair<const char16_t*, QStringList> rows[] = {
      {u"\\\\?\\C:\\", {QStringLiteral("\\\\?\\C:\\")}},
      {u"\\\\?\\C:\\a", {QStringLiteral("\\\\?\\C:\\a"), QStringLiteral("\\\\?\\C:\\")}},
      {u"\\\\?\\C:\\a\\b",
       {QStringLiteral("\\\\?\\C:\\a\\b"), QStringLiteral("\\\\?\\C:\\a"), QStringLiteral("\\\\?\\C:\\")}},
      {u"\\\\?\\C:\\a\\", {QStringLiteral("\\\\?\\C:\\a"), QStringLiteral("\\\\?\\C:\\")}},
      {u"\\\\?\\UNC\\host\\share", {QStringLiteral("\\\\?\\UNC\\host\\share")}},
      {u"\\\\?\\UNC\\host\\share\\", {QStringLiteral("\\\\?\\UNC\\host\\share\\")}},
      {u"\\\\?\\UNC\\host\\share\\a\\b",
       {QStringLiteral("\\\\?\\UNC\\host\\share\\a\\b"), QStringLiteral("\\\\?\\UNC\\host\\share\\a"),
        QStringLiteral("\\\\?\\UNC\\host\\share\\")}}};
  for (const auto& [path, upwards] : rows)
    EXPECT_EQ(local::PathsUpwards(QString::fromUtf16(path)), upwards)
        << QString::fromUtf16(path).toStdString();
}

TEST_F(LocalFileSystemTest, ItemsHaveTheirNamesOnTheDisk) {
  Put(QStringLiteral("MixedCase.TXT"), "x");
  EXPECT_EQ(files_.Stat(QStringLiteral("c:\\mixedcase.txt")).name, QStringLiteral("MixedCase.TXT"));
  EXPECT_FALSE(files_.Find(QStringLiteral("C:\\MixedCase")).has_value());
}

TEST_F(LocalFileSystemTest, AnItemIsNotTakenForOneThatASearchGivesInstead) {
  Put(QStringLiteral("dotty"), "12345");
  EXPECT_EQ(ErrorOf([&] { (void)files_.Stat(QStringLiteral("dotty.")); }), error::kNotFound);
  EXPECT_FALSE(files_.Find(QStringLiteral("dotty ")).has_value());
  Put(QStringLiteral("dotty."), "1");
  const FileEntry entry = files_.Stat(QStringLiteral("dotty."));
  EXPECT_EQ(entry.name, QStringLiteral("dotty."));
  EXPECT_EQ(entry.size, 1);
  EXPECT_EQ(files_.Stat(QStringLiteral("DOTTY")).size, 5);
  EXPECT_EQ(files_.Stat(QStringLiteral("DOTTY")).name, QStringLiteral("dotty"));
}

TEST_F(LocalFileSystemTest, AShareIsReadWrittenAndNeverDeletedItself) {
  const QString own = QDir::toNativeSeparators(folder_.path());
  if (!own.startsWith(QStringLiteral("C:")) ||
      GetFileAttributesW(L"\\\\localhost\\C$\\") == INVALID_FILE_ATTRIBUTES) {
    GTEST_SKIP() << "this machine shares no drive with this user";
  }
  const QString share = QStringLiteral("\\\\localhost\\C$");
  const QString folder = share + own.mid(2);
  EXPECT_TRUE(files_.Capabilities().shares);
  EXPECT_TRUE(files_.Stat(share).IsFolder());
  EXPECT_EQ(files_.Stat(share).name, QStringLiteral("C$"));
  files_.CreateFolder(folder + QStringLiteral("\\d"));
  WriteFile(files_, folder + QStringLiteral("\\d\\f"), "content");
  EXPECT_EQ(ReadFile(files_, QStringLiteral("C:\\d\\f")), QByteArray("content"));
  EXPECT_EQ(NamesIn(files_, folder + QStringLiteral("\\d")), QStringList{QStringLiteral("f")});
  files_.Copy(QStringLiteral("C:\\d"), folder + QStringLiteral("\\e"), false);
  EXPECT_EQ(ReadFile(files_, QStringLiteral("C:\\e\\f")), QByteArray("content"));
  files_.Remove(folder + QStringLiteral("\\d"));
  EXPECT_EQ(Names(QStringLiteral("C:")), QStringList{QStringLiteral("e")});
  EXPECT_EQ(ErrorOf([&] { files_.Remove(share); }), error::kAccessDenied);
  EXPECT_EQ(ErrorOf([&] { (void)files_.Stat(folder + QStringLiteral("\\none")); }), error::kNotFound);
  for (const QString& wrong :
       {QStringLiteral("\\\\localhost"), QStringLiteral("\\\\?\\C:"), QStringLiteral("\\\\local*\\C$")}) {
    EXPECT_EQ(ErrorOf([&] { (void)files_.Stat(wrong); }), error::kInvalidName) << wrong.toStdString();
  }
}

TEST_F(LocalFileSystemTest, AFullDiskFailsAndKeepsTheOldContent) {
  if (qEnvironmentVariableIsEmpty("TREVANE_SMALL_DISK")) {
    GTEST_SKIP() << "no small disk here";
  }
  // Not its root: Wine takes that for a junction.
  const QTemporaryDir onDisk(qEnvironmentVariable("TREVANE_SMALL_DISK") + QStringLiteral("/XXXXXX"));
  const QString disk = onDisk.path();
  volumes_.Set({{QStringLiteral("C:"), folder_.path() + u'/', drivetype::kFixed},
                {QStringLiteral("D:"), disk + u'/', drivetype::kFixed}});
  WriteFile(files_, QStringLiteral("D:\\f"), "old");
  const QByteArray large(1024 * 1024, 'x');
  EXPECT_EQ(ErrorOf([&] { WriteFile(files_, QStringLiteral("D:\\f"), large); }), error::kDiskFull);
  EXPECT_EQ(ErrorOf([&] { WriteNewFile(files_, QStringLiteral("D:\\g"), large, {}); }), error::kDiskFull);
  WriteFile(files_, QStringLiteral("C:\\large"), large);
  EXPECT_EQ(ErrorOf([&] { files_.Copy(QStringLiteral("C:\\large"), QStringLiteral("D:\\f"), true); }),
            error::kDiskFull);
  EXPECT_EQ(ErrorOf([&] { MoveItem(files_, QStringLiteral("C:\\large"), QStringLiteral("D:\\g"), false); }),
            error::kDiskFull);
  EXPECT_EQ(ReadFile(files_, QStringLiteral("D:\\f")), QByteArray("old"));
  EXPECT_EQ(ReadFile(files_, QStringLiteral("C:\\large")).size(), large.size());
  EXPECT_EQ(Names(QStringLiteral("D:")), QStringList{QStringLiteral("f")});
  files_.Remove(QStringLiteral("D:\\f"));
}

TEST_F(LocalFileSystemTest, CopyKeepsAttributesAndTimes) {
  Put(QStringLiteral("f"), "x");
  const FILETIME time{0x12345680, 0x01C00000};
  const HANDLE file = CreateFileW(Wide(Native(QStringLiteral("f"))), FILE_WRITE_ATTRIBUTES, 0, nullptr,
                                  OPEN_EXISTING, 0, nullptr);
  SetFileTime(file, nullptr, nullptr, &time);
  CloseHandle(file);
  SetFileAttributesW(Wide(Native(QStringLiteral("f"))), FILE_ATTRIBUTE_READONLY);
  files_.Copy(QStringLiteral("C:\\f"), QStringLiteral("C:\\g"), false);
  const FileEntry source = files_.Stat(QStringLiteral("C:\\f"));
  const FileEntry copy = files_.Stat(QStringLiteral("C:\\g"));
  EXPECT_EQ(copy.modified, source.modified);
  EXPECT_EQ(copy.attributes, source.attributes);
  EXPECT_NE(copy.attributes & attribute::kReadOnly, 0);
}

TEST_F(LocalFileSystemTest, WriteKeepsTheCreationTime) {
  Put(QStringLiteral("f"), "old");
  const Date created = files_.Stat(QStringLiteral("C:\\f")).created;
  Sleep(50);
  WriteFile(files_, QStringLiteral("C:\\f"), "new");
  EXPECT_EQ(ReadFile(files_, QStringLiteral("C:\\f")), QByteArray("new"));
  // Unix cannot set this time.
  if (!RunsUnderWine()) {
    EXPECT_EQ(files_.Stat(QStringLiteral("C:\\f")).created, created);
  }
  EXPECT_EQ(Names(QStringLiteral("C:")), QStringList{QStringLiteral("f")});
}

TEST_F(LocalFileSystemTest, AFailedCopyOfAFolderLeavesNothing) {
  files_.CreateFolder(QStringLiteral("C:\\d"));
  Put(QStringLiteral("d/a"), "1");
  Put(QStringLiteral("d/b"), "2");
  const HANDLE held = CreateFileW(Wide(Native(QStringLiteral("d/b"))), GENERIC_READ | GENERIC_WRITE, 0,
                                  nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(held, INVALID_HANDLE_VALUE);
  EXPECT_EQ(ErrorOf([&] { files_.Copy(QStringLiteral("C:\\d"), QStringLiteral("C:\\e"), false); }),
            error::kWin32Error + 32);
  CloseHandle(held);
  EXPECT_EQ(Names(QStringLiteral("C:")), QStringList{QStringLiteral("d")});
}

TEST_F(LocalFileSystemTest, ReadOnlyFilesMoveAcrossVolumes) {
  LocalWorld world;
  if (!world.AddOtherVolume())
    GTEST_SKIP() << "no other volume here";
  LocalFileSystem& files = world.Files();
  world.MakeTree(QStringLiteral("C:\\d"));
  SetFileAttributesW(Wide(windowstext::LiteralPath(world.Root() + QStringLiteral("d/sub/b"))),
                     FILE_ATTRIBUTE_READONLY);
  MoveItem(files, QStringLiteral("C:\\d"), QStringLiteral("D:\\moved"), false);
  EXPECT_TRUE(files.List(QStringLiteral("C:")).empty());
  EXPECT_TRUE(world.IsWholeTree(QStringLiteral("D:\\moved")));
  EXPECT_NE(files.Stat(QStringLiteral("D:\\moved\\sub\\b")).attributes & attribute::kReadOnly, 0);
}

TEST_F(LocalFileSystemTest, TheDrivesOfTheSystemAreBrowsed) {
  volumes_.Set({{QStringLiteral("C:"), QStringLiteral("C:\\"), drivetype::kFixed}});
  const Listing listing = files_.List(QStringLiteral("C:"));
  EXPECT_TRUE(std::any_of(listing.begin(), listing.end(), [](const FileEntry& entry) {
    return entry.name.compare(QStringLiteral("Windows"), Qt::CaseInsensitive) == 0 && entry.IsFolder();
  }));
  EXPECT_TRUE(files_.Stat(QStringLiteral("C:\\windows")).IsFolder());
  EXPECT_GE(files_.FolderIdentities(QStringLiteral("C:\\windows\\system32")).size(), 3U);
  volumes_.Set({{QStringLiteral("C:"), folder_.path() + u'/', drivetype::kFixed}});
}

}  // namespace
}  // namespace trevane::test
