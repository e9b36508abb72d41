#include "engine/providers/local/windows/FileSource.h"

#include "engine/files/ProviderError.h"
#include "platform/windows/WindowsText.h"

#include <algorithm>
#include <new>

namespace trevane::local {

using windowstext::Wide;

std::unique_ptr<FileSource> FileSource::Open(const WindowsPath& path, qint64 offset) {
  const DWORD attributes = GetFileAttributesW(Wide(path.whole));
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    FailAt(GetLastError(), path);
  }
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    Fail(error::kAccessDenied, path.text);
  }
  FileHandle file(CreateFileW(Wide(path.whole), GENERIC_READ,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                              FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
  LARGE_INTEGER size{};
  LARGE_INTEGER at{};
  at.QuadPart = offset;
  if (!file.IsOpen() || GetFileSizeEx(file.Get(), &size) == FALSE ||
      (offset > 0 && SetFilePointerEx(file.Get(), at, nullptr, FILE_BEGIN) == FALSE)) {
    FailAt(GetLastError(), path);
  }
  const qint64 left = std::max<qint64>(static_cast<qint64>(size.QuadPart) - offset, 0);
  return std::unique_ptr<FileSource>(new FileSource(std::move(file), left, path));
}

QByteArray FileSource::Read(qint64 most) {
  // A small file takes a small buffer.
  constexpr qint64 kLeast = 4096;
  constexpr qint64 kMostInOneCall = 64 * 1024 * 1024;
  const auto wanted = static_cast<DWORD>(std::min({most, std::max(left_, kLeast), kMostInOneCall}));
  try {
    QByteArray piece(static_cast<qsizetype>(wanted), Qt::Uninitialized);
    DWORD got = 0;
    if (ReadFile(file_.Get(), piece.data(), wanted, &got, nullptr) == FALSE) {
      FailAt(GetLastError(), path_);
    }
    piece.truncate(static_cast<qsizetype>(got));
    left_ = std::max<qint64>(left_ - got, 0);
    return piece;
  } catch (const std::bad_alloc&) {
    FailAt(ERROR_NOT_ENOUGH_MEMORY, path_);
  }
}

}  // namespace trevane::local
