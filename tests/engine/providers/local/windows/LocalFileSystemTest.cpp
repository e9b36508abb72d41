#include "engine/files/MoveItem.h"
#include "engine/files/ProviderError.h"
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

using namespace Qt::StringLiterals;
using windowstext::Wide;

class LocalFileSystemTest : public ::testing::Test {
 protected:
  LocalFileSystemTest() { volumes_.Set({{u"C:"_s, folder_.path() + u'/', drivetype::kFixed}}); }
  ~LocalFileSystemTest() override {
    for (const FileEntry& entry : files_.List(u"C:"_s))
      files_.Remove(u"C:\\"_s + entry.name);
  }

  [[nodiscard]] QString Native(const QString& below) const {
    return windowstext::LiteralPath(folder_.path() + u'/' + below);
  }
  [[nodiscard]] QStringList Names(const QString& folder) { return NamesIn(files_, folder); }
  /// Behind the provider's back, so that any name can be made.
  void Put(const QString& below, const QByteArray& content) {
    const HANDLE file = CreateFileW(Wide(Native(below)), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(file, INVALID_HANDLE_VALUE) << below.toStdString();
    DWORD written = 0;
    WriteFile(file, content.constData(), static_cast<DWORD>(content.size()), &written, nullptr);
    CloseHandle(file);
  }
  [[nodiscard]] DWORD AttributesOf(const QString& below) const {
    return GetFileAttributesW(Wide(Native(below)));
  }
  /// A junction, which needs no right of its own; false where the system has none.
  [[nodiscard]] bool MakeJunction(const QString& below, const QString& target) {
    if (CreateDirectoryW(Wide(Native(below)), nullptr) == FALSE)
      return false;
    QString plain = QDir::toNativeSeparators(folder_.path() + u'/' + target);
    const QString substitute = u"\\??\\"_s + plain;
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

TEST(ReparsePointTest, WhereASymbolicLinkLeadsIsReadAndNothingBeyondItsData) {
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
  EXPECT_EQ(link(kLink, u"\\??\\C:\\a"_s, u"C:\\a"_s).SymbolicTarget(), u"C:\\a"_s);
  EXPECT_EQ(link(kLink, u"\\??\\C:\\a"_s, u""_s).SymbolicTarget(), u"C:\\a"_s);
  EXPECT_EQ(link(kLink, u"..\\a"_s, u"..\\a"_s).SymbolicTarget(), u"..\\a"_s);
  EXPECT_EQ(link(kLink, u"\\??\\UNC\\server\\share"_s, u""_s).SymbolicTarget(), u"\\\\server\\share"_s);
  EXPECT_EQ(link(IO_REPARSE_TAG_MOUNT_POINT, u"\\??\\C:\\a"_s, u"C:\\a"_s).SymbolicTarget(), QString());
  local::ReparsePoint cut = link(kLink, u"\\??\\C:\\a"_s, u"C:\\a"_s);
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
  Put(u"f"_s, "x");
  for (const auto& [set, shown] : rows) {
    SetFileAttributesW(Wide(Native(u"f"_s)), set);
    // What a file system does not keep cannot be shown.
    const auto kept = static_cast<qint32>(AttributesOf(u"f"_s)) & 0x27;
    EXPECT_EQ(files_.Stat(u"C:\\f"_s).attributes, kept);
    EXPECT_EQ(files_.List(u"C:"_s).front().attributes, kept);
    if (!RunsUnderWine()) {
      EXPECT_EQ(kept, shown);
    }
  }
}

TEST_F(LocalFileSystemTest, ANewFileHasTheMarksAndTheCreationTimeItIsGiven) {
  const Date created{1000000000000};
  const qint32 marks = attribute::kReadOnly | attribute::kArchive;
  files_.WriteNew(u"C:\\f"_s, "x", {.marks = marks, .created = created});
  EXPECT_EQ(files_.Traits(u"C:\\f"_s).marks, marks);
  EXPECT_EQ(files_.Stat(u"C:\\f"_s).attributes, marks);
  files_.WriteNew(u"C:\\g"_s, "x", {.marks = 0, .created = created});
  // Wine keeps no times of creation, and marks every file for the archive.
  EXPECT_EQ(files_.Traits(u"C:\\g"_s).marks, RunsUnderWine() ? attribute::kArchive : 0);
  if (!RunsUnderWine()) {
    EXPECT_EQ(files_.Traits(u"C:\\f"_s).created, created);
    EXPECT_EQ(files_.Stat(u"C:\\g"_s).created, created);
  }
  // One that cannot be put in place leaves nothing behind, also when it is marked as read-only.
  EXPECT_EQ(ErrorOf([&] { files_.WriteNew(u"C:\\f"_s, "y", {.marks = marks}); }), error::kExists);
  EXPECT_EQ(Names(u"C:"_s), (QStringList{u"f"_s, u"g"_s}));
}

TEST_F(LocalFileSystemTest, NamesThatWindowsKeepsForItselfAreNotMade) {
  Put(u"f"_s, "x");
  files_.CreateFolder(u"C:\\d"_s);
  for (const QString& name :
       {u"a:b"_s,  u"C:"_s,       u"CON"_s,       u"con.txt"_s, u"nul"_s,  u"AUX .txt"_s,
        u"Com1"_s, u"lpt9.a.b"_s, u"LPT\u00B9"_s, u"CONIN$"_s,  u"end."_s, u"end "_s,
        u"..."_s,  u" "_s,        u"a*"_s,        u"a?"_s,      u"a<b"_s,  u"a>b"_s,
        u"a|b"_s,  u"a\"b"_s,     u"a\nb"_s,      u"a\u0001"_s}) {
    const QString path = u"C:\\d\\"_s + name;
    EXPECT_EQ(ErrorOf([&] { files_.CreateFile(path); }), error::kInvalidName) << name.toStdString();
    EXPECT_EQ(ErrorOf([&] { files_.CreateFolder(path); }), error::kInvalidName) << name.toStdString();
    EXPECT_EQ(ErrorOf([&] { files_.WriteNew(path, "x", {}); }), error::kInvalidName) << name.toStdString();
    EXPECT_NE(ErrorOf([&] { files_.Write(path, "x"); }), 0) << name.toStdString();
    EXPECT_NE(ErrorOf([&] { files_.Copy(u"C:\\f"_s, path, true); }), 0) << name.toStdString();
    EXPECT_NE(ErrorOf([&] { files_.Rename(u"C:\\f"_s, path, true); }), 0) << name.toStdString();
    EXPECT_FALSE(ErrorTextOf([&] { files_.CreateFile(path); }).isEmpty());
  }
  EXPECT_TRUE(Names(u"C:\\d"_s).isEmpty());
  EXPECT_EQ(files_.Read(u"C:\\f"_s), QByteArray("x"));
  for (const QString& name : {u"console"_s, u"com10"_s, u"COM"_s, u"nul1"_s, u"a.con"_s, u".hidden"_s,
                              u" lead"_s, u"aux_"_s, u"com\u00E4"_s})
    EXPECT_EQ(ErrorOf([&] { files_.CreateFile(u"C:\\d\\"_s + name); }), 0) << name.toStdString();
}

TEST_F(LocalFileSystemTest, ReservedNamesThatExistAreListedReadCopiedAwayAndDeleted) {
  const QStringList names{u"aux.txt"_s, u"dot."_s, u"con"_s, u"blank "_s};
  files_.CreateFolder(u"C:\\d"_s);
  for (const QString& name : names)
    Put(u"d/"_s + name, name.toUtf8());
  QStringList sorted = names;
  sorted.sort();
  EXPECT_EQ(Names(u"C:\\d"_s), sorted);
  for (const QString& name : names) {
    const QString path = u"C:\\d\\"_s + name;
    EXPECT_EQ(files_.Stat(path).name, name);
    EXPECT_EQ(files_.Read(path), name.toUtf8());
    files_.Copy(path, u"C:\\copy"_s, true);
    EXPECT_EQ(files_.Read(u"C:\\copy"_s), name.toUtf8());
    // A folder with such a name in it is not copied in part.
    EXPECT_EQ(ErrorOf([&] { files_.Copy(u"C:\\d"_s, u"C:\\e"_s, false); }), error::kInvalidName);
    EXPECT_EQ(Names(u"C:"_s), (QStringList{u"copy"_s, u"d"_s}));
    files_.Remove(path);
  }
  EXPECT_TRUE(Names(u"C:\\d"_s).isEmpty());
}

TEST_F(LocalFileSystemTest, ReadOnlyFilesAreNotReplacedButDeletedWhereTheUserMay) {
  Put(u"f"_s, "old");
  Put(u"g"_s, "new");
  SetFileAttributesW(Wide(Native(u"f"_s)), FILE_ATTRIBUTE_READONLY);
  EXPECT_EQ(ErrorOf([&] { files_.Write(u"C:\\f"_s, "x"); }), error::kAccessDenied);
  EXPECT_EQ(ErrorOf([&] { files_.Copy(u"C:\\g"_s, u"C:\\f"_s, true); }), error::kAccessDenied);
  EXPECT_EQ(ErrorOf([&] { files_.Rename(u"C:\\g"_s, u"C:\\f"_s, true); }), error::kAccessDenied);
  EXPECT_EQ(files_.Read(u"C:\\f"_s), QByteArray("old"));
  EXPECT_NE(AttributesOf(u"f"_s) & FILE_ATTRIBUTE_READONLY, 0U);
  files_.Remove(u"C:\\f"_s);
  EXPECT_EQ(Names(u"C:"_s), QStringList{u"g"_s});
}

TEST_F(LocalFileSystemTest, AFileThatAnotherProgramHoldsIsNotDeletedAndKeepsItsMark) {
  Put(u"f"_s, "x");
  SetFileAttributesW(Wide(Native(u"f"_s)), FILE_ATTRIBUTE_READONLY);
  const HANDLE held =
      CreateFileW(Wide(Native(u"f"_s)), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(held, INVALID_HANDLE_VALUE);
  EXPECT_NE(ErrorOf([&] { files_.Remove(u"C:\\f"_s); }), 0);
  EXPECT_NE(AttributesOf(u"f"_s) & FILE_ATTRIBUTE_READONLY, 0U);
  CloseHandle(held);
  EXPECT_EQ(files_.Read(u"C:\\f"_s), QByteArray("x"));
}

TEST_F(LocalFileSystemTest, JunctionsAreNeverFollowedByDelete) {
  files_.CreateFolder(u"C:\\keep"_s);
  Put(u"keep/f"_s, "x");
  files_.CreateFolder(u"C:\\d"_s);
  if (!MakeJunction(u"d/j"_s, u"keep"_s))
    GTEST_SKIP() << "no junctions here";
  EXPECT_TRUE(files_.Stat(u"C:\\d\\j"_s).IsLink());
  EXPECT_TRUE(files_.Stat(u"C:\\d\\j"_s).IsFolder());
  EXPECT_EQ(Names(u"C:\\d\\j"_s), QStringList{u"f"_s});
  files_.Copy(u"C:\\d"_s, u"C:\\e"_s, false);
  EXPECT_TRUE(files_.Stat(u"C:\\e\\j"_s).IsLink());
  files_.Remove(u"C:\\d"_s);
  files_.Remove(u"C:\\e\\j"_s);
  EXPECT_EQ(files_.Read(u"C:\\keep\\f"_s), QByteArray("x"));
  EXPECT_TRUE(Names(u"C:\\e"_s).isEmpty());
}

TEST_F(LocalFileSystemTest, AFolderThatTheSystemShowsAsALinkIsNeverGoneThroughByDelete) {
  // Wine shows links of the system below as reparse points without a tag, and starts programs of that system.
  const QString shared = u"Z:/tmp"_s;
  if (!RunsUnderWine() || !QFileInfo::exists(u"Z:/bin/ln"_s))
    GTEST_SKIP() << "no links of another system";
  QTemporaryDir below(shared + u"/trevane-test-XXXXXX"_s);
  ASSERT_TRUE(below.isValid());
  volumes_.Set({{u"C:"_s, folder_.path() + u'/', drivetype::kFixed},
                {u"D:"_s, below.path() + u'/', drivetype::kFixed}});
  files_.CreateFolder(u"D:\\keep"_s);
  files_.Write(u"D:\\keep\\f"_s, "x");
  files_.CreateFolder(u"D:\\d"_s);
  files_.Write(u"D:\\d\\own"_s, "y");
  const QString unixPath = below.path().mid(2);
  std::wstring command = (u"ln -s "_s + unixPath + u"/keep "_s + unixPath + u"/d/link"_s).toStdWString();
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  ASSERT_NE(CreateProcessW(L"Z:\\bin\\ln", command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                           &startup, &process),
            FALSE);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  for (int i = 0; i < 500 && !files_.Find(u"D:\\d\\link"_s); ++i)
    Sleep(10);
  ASSERT_TRUE(files_.Stat(u"D:\\d\\link"_s).IsLink());
  // Wine cannot take such a link away; what counts is that nothing behind it goes.
  static_cast<void>(ErrorOf([&] { files_.Remove(u"D:\\d\\link"_s); }));
  static_cast<void>(ErrorOf([&] { files_.Remove(u"D:\\d"_s); }));
  static_cast<void>(ErrorOf([&] { files_.Copy(u"D:\\d"_s, u"D:\\e"_s, false); }));
  EXPECT_FALSE(files_.Find(u"D:\\e"_s).has_value());
  EXPECT_EQ(files_.Read(u"D:\\keep\\f"_s), QByteArray("x"));
  std::wstring clean = (u"rm -rf "_s + unixPath + u"/d"_s).toStdWString();
  ASSERT_NE(CreateProcessW(L"Z:\\bin\\rm", clean.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                           &startup, &process),
            FALSE);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  for (int i = 0; i < 500 && files_.Find(u"D:\\d"_s); ++i)
    Sleep(10);
  files_.Remove(u"D:\\keep"_s);
  volumes_.Set({{u"C:"_s, folder_.path() + u'/', drivetype::kFixed}});
}

TEST_F(LocalFileSystemTest, NamesThatBeginLikeAByteOrderMarkAreTheirOwn) {
  // A decoder would take the first character away or turn the bytes round: one name would stand for another.
  const QString marked = QChar(0xFEFF) + u"f"_s;
  const QString turned = QChar(0xFFFE) + u"f"_s;
  Put(u"f"_s, "plain");
  Put(marked, "marked");
  Put(turned, "turned");
  QStringList sorted{u"f"_s, marked, turned};
  sorted.sort();
  EXPECT_EQ(Names(u"C:"_s), sorted);
  for (const QString& name : {marked, turned})
    EXPECT_EQ(files_.Stat(u"C:\\"_s + name).name, name);
  files_.CreateFolder(u"C:\\d"_s);
  files_.Rename(u"C:\\"_s + marked, u"C:\\d\\"_s + marked, false);
  files_.Copy(u"C:\\d"_s, u"C:\\e"_s, false);
  EXPECT_EQ(Names(u"C:\\e"_s), QStringList{marked});
  Put(u"e/f"_s, "stays");
  files_.Remove(u"C:\\e\\"_s + marked);
  EXPECT_EQ(files_.Read(u"C:\\e\\f"_s), QByteArray("stays"));
  Put(u"d/f"_s, "goes");
  files_.Remove(u"C:\\d"_s);
  EXPECT_EQ(files_.Read(u"C:\\f"_s), QByteArray("plain"));
}

TEST_F(LocalFileSystemTest, NamesWithHalfASurrogatePairAreListedReadCopiedAndDeleted) {
  const QString first = u"a"_s + QChar(0xD83D) + u"b"_s;
  const QString second = QString(QChar(0xDE00)) + u"b"_s;
  for (const QString& name : {first, second}) {
    const HANDLE file = CreateFileW(Wide(Native(name)), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    // Wine keeps names as UTF-8, which has no such halves.
    if (file == INVALID_HANDLE_VALUE && RunsUnderWine())
      GTEST_SKIP() << "no such names here";
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    CloseHandle(file);
  }
  if (RunsUnderWine() && Names(u"C:"_s) != (QStringList{first, second}))
    GTEST_SKIP() << "the system keeps another name";
  EXPECT_EQ(Names(u"C:"_s), (QStringList{first, second}));
  for (const QString& name : {first, second}) {
    const QString path = u"C:\\"_s + name;
    EXPECT_EQ(files_.Stat(path).name, name);
    files_.Write(path, "x");
    files_.Copy(path, u"C:\\d"_s + name, false);
    EXPECT_EQ(files_.Read(u"C:\\d"_s + name), QByteArray("x"));
    files_.Rename(u"C:\\d"_s + name, u"C:\\e"_s + name, false);
    files_.Remove(u"C:\\e"_s + name);
    files_.Remove(path);
  }
  EXPECT_TRUE(Names(u"C:"_s).isEmpty());
}

TEST_F(LocalFileSystemTest, WhatASearchTakesForAWildcardFindsNothing) {
  Put(u"abc.txt"_s, "x");
  for (const QString& name : {u"*"_s, u"a?c.txt"_s, u"<"_s, u"a<"_s, u"a>c.txt"_s, u"abc\"txt"_s, u"<<"_s}) {
    const QString path = u"C:\\"_s + name;
    EXPECT_EQ(ErrorOf([&] { (void)files_.Find(path); }), error::kInvalidName) << name.toStdString();
    EXPECT_EQ(ErrorOf([&] { (void)files_.Stat(path); }), error::kInvalidName) << name.toStdString();
    EXPECT_NE(ErrorOf([&] { files_.Remove(path); }), 0) << name.toStdString();
    EXPECT_NE(ErrorOf([&] { files_.RemoveAlone(path); }), 0) << name.toStdString();
    EXPECT_NE(ErrorOf([&] { files_.Rename(path, u"C:\\other"_s, true); }), 0) << name.toStdString();
  }
  EXPECT_EQ(Names(u"C:"_s), QStringList{u"abc.txt"_s});
}

TEST_F(LocalFileSystemTest, NamesThatOnlyOurOwnLowerCaseMakesOneAreCopiedAndMerged) {
  // Of the Kelvin sign the system knows no small letter: beside a "k" it is a name of its own.
  const QString kelvin{QChar(0x212A)};
  files_.CreateFolder(u"C:\\d"_s);
  Put(u"d/k"_s, "letter");
  Put(u"d/"_s + kelvin, "sign");
  files_.Copy(u"C:\\d"_s, u"C:\\e"_s, false);
  files_.Copy(u"C:\\d"_s, u"C:\\e"_s, true);
  EXPECT_EQ(files_.Read(u"C:\\e\\k"_s), QByteArray("letter"));
  EXPECT_EQ(files_.Read(u"C:\\e\\"_s + kelvin), QByteArray("sign"));
}

TEST_F(LocalFileSystemTest, TwoNamesThatAreOneInAMergeNeverReplaceOneAnother) {
  for (const bool folders : {false, true}) {
    SCOPED_TRACE(folders);
    const QString longName = u"a name that is too long for systems of old.text"_s;
    files_.CreateFolder(u"C:\\from"_s);
    files_.CreateFolder(u"C:\\to"_s);
    const QString longPath = u"C:\\from\\"_s + longName;
    folders ? files_.CreateFolder(longPath) : files_.Write(longPath, "long");
    // The short name that the system makes for a name is another one's own.
    std::array<wchar_t, 0x8000> buffer{};
    GetShortPathNameW(Wide(Native(u"from/"_s + longName)), buffer.data(), buffer.size());
    QString shortName = windowstext::FromWide(buffer.data());
    shortName = shortName.mid(shortName.lastIndexOf(u'\\') + 1);
    if (shortName.isEmpty() || shortName == longName)
      GTEST_SKIP() << "no short names here";
    files_.Remove(longPath);
    // Made first, it gives the long name another short one here; in the folder merged into it need not.
    for (const QString& name : {shortName, longName}) {
      const QString path = u"C:\\from\\"_s + name;
      if (folders)
        files_.CreateFolder(path);
      files_.Write(folders ? path + u"\\f"_s : path, name.toUtf8());
    }
    ASSERT_EQ(files_.List(u"C:\\from"_s).size(), 2U);
    const qint32 number = ErrorOf([&] { files_.Copy(u"C:\\from"_s, u"C:\\to"_s, true); });
    EXPECT_TRUE(number == 0 || number == error::kExists) << number;
    const QStringList put = Names(u"C:\\to"_s);
    EXPECT_EQ(put.size(), number == 0 ? 2 : 1);
    for (const QString& name : put)
      EXPECT_EQ(files_.Read(u"C:\\to\\"_s + name + (folders ? u"\\f"_s : QString())), name.toUtf8());
    files_.Remove(u"C:\\from"_s);
    files_.Remove(u"C:\\to"_s);
  }
}

TEST_F(LocalFileSystemTest, DeletingOneNameOfAReadOnlyFileLeavesTheOtherReadOnly) {
  Put(u"f"_s, "x");
  if (CreateHardLinkW(Wide(Native(u"g"_s)), Wide(Native(u"f"_s)), nullptr) == FALSE)
    GTEST_SKIP() << "no hard links here";
  SetFileAttributesW(Wide(Native(u"f"_s)), FILE_ATTRIBUTE_READONLY);
  ASSERT_NE(AttributesOf(u"g"_s) & FILE_ATTRIBUTE_READONLY, 0U);
  files_.Remove(u"C:\\f"_s);
  EXPECT_EQ(Names(u"C:"_s), QStringList{u"g"_s});
  EXPECT_NE(AttributesOf(u"g"_s) & FILE_ATTRIBUTE_READONLY, 0U);
}

TEST_F(LocalFileSystemTest, AFolderStaysWhereItIsWhileItIsDeleted) {
  files_.CreateFolder(u"C:\\d"_s);
  files_.CreateFolder(u"C:\\d\\sub"_s);
  Put(u"d/sub/f"_s, "x");
  bool tried = false;
  const ItemObserver observer = [&](const QString& name) {
    if (name == u"f"_s) {
      tried = true;
      // Somebody would put a link in its place, to a folder that has an "f" as well.
      EXPECT_EQ(MoveFileExW(Wide(Native(u"d/sub"_s)), Wide(Native(u"elsewhere"_s)), 0), FALSE);
      EXPECT_EQ(RemoveDirectoryW(Wide(Native(u"d/sub"_s))), FALSE);
    }
    return true;
  };
  files_.Remove(u"C:\\d"_s, observer);
  EXPECT_TRUE(tried);
  EXPECT_TRUE(Names(u"C:"_s).isEmpty());
}

TEST_F(LocalFileSystemTest, WriteKeepsWhoMayDoWhatAlsoWhereThatDoesNotComeFromTheFolder) {
  Put(u"f"_s, "old");
  const QString native = Native(u"f"_s);
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
  // Wine makes the rights up from those of the system below.
  if (RunsUnderWine() && controlOf() == 0)
    GTEST_SKIP() << "all rights come from the folder here";
  ASSERT_NE(controlOf(), 0);
  files_.Write(u"C:\\f"_s, "new");
  EXPECT_EQ(files_.Read(u"C:\\f"_s), QByteArray("new"));
  EXPECT_NE(controlOf(), 0);
}

TEST(WindowsPathTest, TheWayUpEndsAtTheRootOfTheDriveOrOfTheShare) {
  const std::pair<const char16_t*, QStringList> rows[] = {
      {u"\\\\?\\C:\\", {u"\\\\?\\C:\\"_s}},
      {u"\\\\?\\C:\\a", {u"\\\\?\\C:\\a"_s, u"\\\\?\\C:\\"_s}},
      {u"\\\\?\\C:\\a\\b", {u"\\\\?\\C:\\a\\b"_s, u"\\\\?\\C:\\a"_s, u"\\\\?\\C:\\"_s}},
      {u"\\\\?\\C:\\a\\", {u"\\\\?\\C:\\a"_s, u"\\\\?\\C:\\"_s}},
      {u"\\\\?\\UNC\\host\\share", {u"\\\\?\\UNC\\host\\share"_s}},
      {u"\\\\?\\UNC\\host\\share\\", {u"\\\\?\\UNC\\host\\share\\"_s}},
      {u"\\\\?\\UNC\\host\\share\\a\\b",
       {u"\\\\?\\UNC\\host\\share\\a\\b"_s, u"\\\\?\\UNC\\host\\share\\a"_s,
        u"\\\\?\\UNC\\host\\share\\"_s}}};
  for (const auto& [path, upwards] : rows)
    EXPECT_EQ(local::PathsUpwards(QString::fromUtf16(path)), upwards)
        << QString::fromUtf16(path).toStdString();
}

TEST_F(LocalFileSystemTest, AnItemIsToldByTheNameThatItHasOnTheDisk) {
  Put(u"MixedCase.TXT"_s, "x");
  EXPECT_EQ(files_.Stat(u"c:\\mixedcase.txt"_s).name, u"MixedCase.TXT"_s);
  EXPECT_FALSE(files_.Find(u"C:\\MixedCase"_s).has_value());
}

TEST_F(LocalFileSystemTest, AnItemIsNotTakenForOneThatASearchGivesInstead) {
  Put(u"dotty"_s, "12345");
  EXPECT_EQ(ErrorOf([&] { (void)files_.Stat(u"dotty."_s); }), error::kNotFound);
  EXPECT_FALSE(files_.Find(u"dotty "_s).has_value());
  Put(u"dotty."_s, "1");
  const FileEntry entry = files_.Stat(u"dotty."_s);
  EXPECT_EQ(entry.name, u"dotty."_s);
  EXPECT_EQ(entry.size, 1);
  EXPECT_EQ(files_.Stat(u"DOTTY"_s).size, 5);
  EXPECT_EQ(files_.Stat(u"DOTTY"_s).name, u"dotty"_s);
}

TEST_F(LocalFileSystemTest, AShareIsReadWrittenAndNeverDeletedItself) {
  const QString own = QDir::toNativeSeparators(folder_.path());
  if (!own.startsWith(u"C:"_s) || GetFileAttributesW(L"\\\\localhost\\C$\\") == INVALID_FILE_ATTRIBUTES) {
    GTEST_SKIP() << "this machine shares no drive with this user";
  }
  const QString share = u"\\\\localhost\\C$"_s;
  const QString folder = share + own.mid(2);
  EXPECT_TRUE(files_.Capabilities().shares);
  EXPECT_TRUE(files_.Stat(share).IsFolder());
  EXPECT_EQ(files_.Stat(share).name, u"C$"_s);
  files_.CreateFolder(folder + u"\\d"_s);
  files_.Write(folder + u"\\d\\f"_s, "content");
  EXPECT_EQ(files_.Read(u"C:\\d\\f"_s), QByteArray("content"));
  EXPECT_EQ(NamesIn(files_, folder + u"\\d"_s), QStringList{u"f"_s});
  files_.Copy(u"C:\\d"_s, folder + u"\\e"_s, false);
  EXPECT_EQ(files_.Read(u"C:\\e\\f"_s), QByteArray("content"));
  files_.Remove(folder + u"\\d"_s);
  EXPECT_EQ(Names(u"C:"_s), QStringList{u"e"_s});
  EXPECT_EQ(ErrorOf([&] { files_.Remove(share); }), error::kAccessDenied);
  EXPECT_EQ(ErrorOf([&] { (void)files_.Stat(folder + u"\\none"_s); }), error::kNotFound);
  for (const QString& wrong : {u"\\\\localhost"_s, u"\\\\?\\C:"_s, u"\\\\local*\\C$"_s}) {
    EXPECT_EQ(ErrorOf([&] { (void)files_.Stat(wrong); }), error::kInvalidName) << wrong.toStdString();
  }
}

TEST_F(LocalFileSystemTest, AFullDiskIsToldAndLeavesTheOldContent) {
  if (qEnvironmentVariableIsEmpty("TREVANE_SMALL_DISK")) {
    GTEST_SKIP() << "no small disk here";
  }
  // Not its own root: Wine takes that for a junction.
  const QTemporaryDir onDisk(qEnvironmentVariable("TREVANE_SMALL_DISK") + u"/XXXXXX"_s);
  const QString disk = onDisk.path();
  volumes_.Set(
      {{u"C:"_s, folder_.path() + u'/', drivetype::kFixed}, {u"D:"_s, disk + u'/', drivetype::kFixed}});
  files_.Write(u"D:\\f"_s, "old");
  const QByteArray large(1024 * 1024, 'x');
  EXPECT_EQ(ErrorOf([&] { files_.Write(u"D:\\f"_s, large); }), error::kDiskFull);
  EXPECT_EQ(ErrorOf([&] { files_.WriteNew(u"D:\\g"_s, large, {}); }), error::kDiskFull);
  files_.Write(u"C:\\large"_s, large);
  EXPECT_EQ(ErrorOf([&] { files_.Copy(u"C:\\large"_s, u"D:\\f"_s, true); }), error::kDiskFull);
  EXPECT_EQ(ErrorOf([&] { MoveItem(files_, u"C:\\large"_s, u"D:\\g"_s, false); }), error::kDiskFull);
  EXPECT_EQ(files_.Read(u"D:\\f"_s), QByteArray("old"));
  EXPECT_EQ(files_.Read(u"C:\\large"_s).size(), large.size());
  EXPECT_EQ(Names(u"D:"_s), QStringList{u"f"_s});
  files_.Remove(u"D:\\f"_s);
}

TEST_F(LocalFileSystemTest, CopyKeepsAttributesAndTimes) {
  Put(u"f"_s, "x");
  const FILETIME time{0x12345680, 0x01C00000};
  const HANDLE file =
      CreateFileW(Wide(Native(u"f"_s)), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  SetFileTime(file, nullptr, nullptr, &time);
  CloseHandle(file);
  SetFileAttributesW(Wide(Native(u"f"_s)), FILE_ATTRIBUTE_READONLY);
  files_.Copy(u"C:\\f"_s, u"C:\\g"_s, false);
  const FileEntry source = files_.Stat(u"C:\\f"_s);
  const FileEntry copy = files_.Stat(u"C:\\g"_s);
  EXPECT_EQ(copy.modified, source.modified);
  EXPECT_EQ(copy.attributes, source.attributes);
  EXPECT_NE(copy.attributes & attribute::kReadOnly, 0);
}

TEST_F(LocalFileSystemTest, WriteKeepsWhenAFileWasMade) {
  Put(u"f"_s, "old");
  const Date created = files_.Stat(u"C:\\f"_s).created;
  Sleep(50);
  files_.Write(u"C:\\f"_s, "new");
  EXPECT_EQ(files_.Read(u"C:\\f"_s), QByteArray("new"));
  // Unix has no such time to set.
  if (!RunsUnderWine()) {
    EXPECT_EQ(files_.Stat(u"C:\\f"_s).created, created);
  }
  EXPECT_EQ(Names(u"C:"_s), QStringList{u"f"_s});
}

TEST_F(LocalFileSystemTest, AFailedCopyOfAFolderLeavesNothing) {
  files_.CreateFolder(u"C:\\d"_s);
  Put(u"d/a"_s, "1");
  Put(u"d/b"_s, "2");
  const HANDLE held = CreateFileW(Wide(Native(u"d/b"_s)), GENERIC_READ | GENERIC_WRITE, 0, nullptr,
                                  OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(held, INVALID_HANDLE_VALUE);
  EXPECT_EQ(ErrorOf([&] { files_.Copy(u"C:\\d"_s, u"C:\\e"_s, false); }), error::kWin32Error + 32);
  CloseHandle(held);
  EXPECT_EQ(Names(u"C:"_s), QStringList{u"d"_s});
}

TEST_F(LocalFileSystemTest, AReadOnlyFileIsMovedToAnotherVolumeAndStaysReadOnly) {
  LocalWorld world;
  if (!world.AddOtherVolume())
    GTEST_SKIP() << "no other volume here";
  LocalFileSystem& files = world.Files();
  world.MakeTree(u"C:\\d"_s);
  SetFileAttributesW(Wide(windowstext::LiteralPath(world.Root() + u"d/sub/b"_s)), FILE_ATTRIBUTE_READONLY);
  MoveItem(files, u"C:\\d"_s, u"D:\\moved"_s, false);
  EXPECT_TRUE(files.List(u"C:"_s).empty());
  EXPECT_TRUE(world.IsWholeTree(u"D:\\moved"_s));
  EXPECT_NE(files.Stat(u"D:\\moved\\sub\\b"_s).attributes & attribute::kReadOnly, 0);
}

TEST_F(LocalFileSystemTest, TheDrivesOfTheSystemAreBrowsed) {
  volumes_.Set({{u"C:"_s, u"C:\\"_s, drivetype::kFixed}});
  const Listing listing = files_.List(u"C:"_s);
  EXPECT_TRUE(std::any_of(listing.begin(), listing.end(), [](const FileEntry& entry) {
    return entry.name.compare(u"Windows"_s, Qt::CaseInsensitive) == 0 && entry.IsFolder();
  }));
  EXPECT_TRUE(files_.Stat(u"C:\\windows"_s).IsFolder());
  EXPECT_GE(files_.FolderIdentities(u"C:\\windows\\system32"_s).size(), 3U);
  volumes_.Set({{u"C:"_s, folder_.path() + u'/', drivetype::kFixed}});
}

}  // namespace
}  // namespace trevane::test
