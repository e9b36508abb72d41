#include "platform/OwnFile.h"

#include "platform/OwnFileSteps.h"
#include "platform/windows/WindowsText.h"

#include <QDir>

#include <windows.h>

namespace trevane::ownfile {
namespace {

using windowstext::Wide;

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

class FileHandle {
 public:
  explicit FileHandle(HANDLE handle) : handle_(handle) {}
  ~FileHandle() { Close(); }
  FileHandle(const FileHandle&) = delete;
  FileHandle& operator=(const FileHandle&) = delete;

  [[nodiscard]] HANDLE Get() const { return handle_; }
  [[nodiscard]] bool IsOpen() const { return handle_ != INVALID_HANDLE_VALUE; }
  void Close() {
    if (IsOpen()) {
      CloseHandle(handle_);
      handle_ = INVALID_HANDLE_VALUE;
    }
  }

 private:
  HANDLE handle_;
};

// Absolute and in the literal form; empty where no file can have that path.
QString SystemPath(const QString& path) {
  return path.isEmpty() || path.contains(QChar(u'\0'))
             ? QString()
             : windowstext::LiteralPath(QDir::cleanPath(QDir::current().absoluteFilePath(path)));
}

QString FolderOf(const QString& path) {
  return path.left(path.lastIndexOf(u'\\'));
}

HANDLE OpenOld(const QString& path, DWORD access) {
  return CreateFileW(Wide(path), access, kShareAll, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
}

// The target of a link; the path itself if it is no link, or nothing.
QString FollowLinks(const QString& path) {
  const DWORD attributes = GetFileAttributesW(Wide(path));
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) {
    return path;
  }
  const FileHandle file(OpenOld(path, FILE_READ_ATTRIBUTES));
  const QString target = file.IsOpen() ? windowstext::FinalPath(file.Get()) : QString();
  return target.isEmpty() ? path : target;
}

bool IsMissing(DWORD error) {
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

bool WriteAll(HANDLE file, const QByteArray& bytes) {
  LARGE_INTEGER begin{};
  if (SetFilePointerEx(file, begin, nullptr, FILE_BEGIN) == FALSE) {
    return false;
  }
  qsizetype done = 0;
  while (done < bytes.size()) {
    DWORD written = 0;
    if (WriteFile(file, bytes.constData() + done, static_cast<DWORD>(bytes.size() - done), &written,
                  nullptr) == FALSE ||
        written == 0) {
      return false;
    }
    done += written;
  }
  return true;
}

Content ReadAll(HANDLE file) {
  LARGE_INTEGER size{};
  if (GetFileType(file) != FILE_TYPE_DISK) {
    return {.reason = steps::kNoPlainFile};
  }
  if (GetFileSizeEx(file, &size) == FALSE) {
    return {.reason = windowstext::ErrorText(GetLastError())};
  }
  return steps::ReadWhole(
      size.QuadPart,
      [file](char* to, qsizetype most, qsizetype /*offset*/) -> qint64 {
        DWORD got = 0;
        return ReadFile(file, to, static_cast<DWORD>(most), &got, nullptr) == FALSE ? -1 : qint64{got};
      },
      [] { return windowstext::ErrorText(GetLastError()); });
}

// A new file under a name of its own that takes the place of another one. The destructor deletes it if it was
// not put in place.
class NewFile {
 public:
  explicit NewFile(const QString& folder, DWORD flags = FILE_ATTRIBUTE_NORMAL) : file_(INVALID_HANDLE_VALUE) {
    steps::TryNewNames([&](const QString& name) {
      name_ = folder + u'\\' + name;
      file_ = CreateFileW(Wide(name_), GENERIC_WRITE | DELETE, FILE_SHARE_DELETE, nullptr, CREATE_NEW, flags,
                          nullptr);
      return file_ != INVALID_HANDLE_VALUE || GetLastError() != ERROR_FILE_EXISTS;
    });
  }
  ~NewFile() {
    if (!wasOpen_ && file_ == INVALID_HANDLE_VALUE) {
      return;
    }
    Close();
    if (!placed_) {
      DeleteFileW(Wide(name_));
    }
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  [[nodiscard]] bool IsOpen() const { return file_ != INVALID_HANDLE_VALUE; }

  // Writes all of it to the disk. A full disk or a network may report only then that it failed.
  [[nodiscard]] bool Fill(const QByteArray& bytes) const {
    return WriteAll(file_, bytes) && FlushFileBuffers(file_) != FALSE;
  }

  [[nodiscard]] bool PutInPlace(const QString& target, bool existed) {
    Close();
    // The first call keeps the old one's rights, attributes and time of creation. Not every file system has
    // it, and where it ends halfway the second one finishes it.
    constexpr DWORD kKeep = REPLACEFILE_IGNORE_MERGE_ERRORS | REPLACEFILE_IGNORE_ACL_ERRORS;
    placed_ =
        (existed && ReplaceFileW(Wide(target), Wide(name_), nullptr, kKeep, nullptr, nullptr) != FALSE) ||
        MoveFileExW(Wide(name_), Wide(target), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH) != FALSE;
    return placed_;
  }

 private:
  void Close() {
    if (file_ != INVALID_HANDLE_VALUE) {
      wasOpen_ = true;
      CloseHandle(file_);
      file_ = INVALID_HANDLE_VALUE;
    }
  }

  QString name_;
  HANDLE file_;
  bool wasOpen_ = false;
  bool placed_ = false;
};

// Only an attempt shows it: rights come from the folder, from the groups of the user and from the volume.
bool IsOpenFolder(const QString& folder) {
  return NewFile(folder, FILE_ATTRIBUTE_TEMPORARY).IsOpen();
}

bool IsOpenFile(const QString& path, DWORD attributes) {
  return (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY)) == 0 &&
         FileHandle(OpenOld(path, GENERIC_WRITE)).IsOpen();
}

// A file that is written where it is.
class FileInPlace {
 public:
  explicit FileInPlace(const QString& path) : file_(OpenOld(path, GENERIC_READ | GENERIC_WRITE)) {}

  [[nodiscard]] bool IsOpen() const { return file_.IsOpen(); }
  [[nodiscard]] Content Read() const { return ReadAll(file_.Get()); }
  [[nodiscard]] bool Reserve(qint64 oldSize, qint64 size) const {
    if (size <= oldSize) {
      return true;
    }
    FILE_ALLOCATION_INFO room{};
    room.AllocationSize.QuadPart = size;
    return SetFileInformationByHandle(file_.Get(), FileAllocationInfo, &room, sizeof room) != FALSE ||
           GetLastError() != ERROR_DISK_FULL;
  }
  [[nodiscard]] bool Put(const QByteArray& content) const {
    return WriteAll(file_.Get(), content) && SetEndOfFile(file_.Get()) != FALSE &&
           FlushFileBuffers(file_.Get()) != FALSE;
  }
  [[nodiscard]] static QString Reason() { return windowstext::ErrorText(GetLastError()); }

 private:
  FileHandle file_;
};

Outcome WriteInPlace(const QString& target, const QByteArray& bytes) {
  FileInPlace file(target);
  return steps::WriteInPlace(file, bytes);
}

bool IsFolder(DWORD attributes) {
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

}  // namespace

Content Read(const QString& path) {
  const QString native = SystemPath(path);
  if (native.isEmpty()) {
    return {.reason = windowstext::ErrorText(ERROR_FILE_NOT_FOUND)};
  }
  if (IsFolder(GetFileAttributesW(Wide(native)))) {
    return {.reason = steps::kNoPlainFile};
  }
  const FileHandle file(OpenOld(native, GENERIC_READ));
  if (file.IsOpen()) {
    return ReadAll(file.Get());
  }
  const DWORD code = GetLastError();
  return IsMissing(code) ? Content{.state = State::Missing} : Content{.reason = windowstext::ErrorText(code)};
}

bool Exists(const QString& path) {
  const QString native = SystemPath(path);
  return !native.isEmpty() && GetFileAttributesW(Wide(native)) != INVALID_FILE_ATTRIBUTES;
}

bool IsWritable(const QString& path, const ReplaceOptions& options) {
  const QString native = SystemPath(path);
  if (native.isEmpty()) {
    return false;
  }
  const QString target = FollowLinks(native);
  const DWORD attributes = GetFileAttributesW(Wide(target));
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    return IsMissing(GetLastError()) && IsOpenFolder(FolderOf(target));
  }
  return IsOpenFile(target, attributes) && (options.inPlaceInClosedFolder || IsOpenFolder(FolderOf(target)));
}

Outcome Replace(const QString& path, const QByteArray& bytes, const ReplaceOptions& options) {
  const QString native = SystemPath(path);
  const QString target = FollowLinks(native);
  const DWORD attributes = GetFileAttributesW(Wide(target));
  const bool existed = attributes != INVALID_FILE_ATTRIBUTES;
  if (IsFolder(attributes)) {
    return steps::Failure(steps::kNoPlainFile);
  }
  const QString folder = FolderOf(target);
  if (!IsWritable(path, options)) {
    const bool isThere = IsFolder(GetFileAttributesW(Wide(folder + u'\\')));
    return steps::Failure(windowstext::ErrorText(isThere ? ERROR_ACCESS_DENIED : ERROR_PATH_NOT_FOUND));
  }
  DWORD failure = 0;
  const auto build = [&](const QString& where) {
    NewFile file(where);
    const bool done = file.IsOpen() && file.Fill(bytes) && file.PutInPlace(target, existed);
    failure = GetLastError();
    return done;
  };
  // A file that replaces none is created in its final folder, because permissions come from the folder of
  // creation. Another volume, if the beginning of the path shows it, is not tried: a file cannot be renamed
  // to another volume.
  const QString firstFolder = SystemPath(options.firstFolder);
  if (existed && !firstFolder.isEmpty() && firstFolder.left(7) == target.left(7) &&
      firstFolder.compare(folder, Qt::CaseInsensitive) != 0 && build(firstFolder)) {
    return {.done = true};
  }
  if (existed && options.inPlaceInClosedFolder && !IsOpenFolder(folder)) {
    return WriteInPlace(target, bytes);
  }
  if (build(folder)) {
    return {.done = true};
  }
  return steps::Failure(windowstext::ErrorText(failure));
}

bool MoveOver(const QString& from, const QString& to) {
  const QString source = SystemPath(from);
  const QString target = SystemPath(to);
  if (source.isEmpty() || target.isEmpty()) {
    return false;
  }
  // No system should give a folder the place of a file, but not every one refuses it.
  const bool replaces = GetFileAttributesW(Wide(target)) != INVALID_FILE_ATTRIBUTES;
  return (!replaces || !IsFolder(GetFileAttributesW(Wide(source)))) &&
         MoveFileExW(Wide(source), Wide(target), MOVEFILE_REPLACE_EXISTING) != FALSE;
}

bool MakePrivateFolder(const QString& path) {
  // Below the user's own folders nobody else has rights to inherit.
  return QDir().mkpath(path);
}

bool MakeNewPrivateFolder(const QString& path) {
  // As above: its rights are those of the user's own folder that it is in.
  const QString folder = SystemPath(path);
  return !folder.isEmpty() && CreateDirectoryW(Wide(folder), nullptr) != FALSE;
}

bool OpenForAppending(QFile& file, const QString& path) {
  file.setFileName(path);
  const DWORD attributes = GetFileAttributesW(Wide(SystemPath(path)));
  // A file that is read-only is closed also to a user whom the system lets write it.
  constexpr DWORD kClosed = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY;
  return (attributes == INVALID_FILE_ATTRIBUTES || (attributes & kClosed) == 0) &&
         file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered);
}

}  // namespace trevane::ownfile
