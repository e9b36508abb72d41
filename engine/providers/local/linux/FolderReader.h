#pragma once

#include "platform/linux/SystemCalls.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QtGlobal>

#include <cerrno>
#include <cstring>
#include <memory>
#include <type_traits>
#include <vector>

#include <sys/syscall.h>
#include <unistd.h>

namespace trevane::local {

/// One item of a folder as the file system lists it.
struct FolderItem {
  QByteArray name;
  /// DT_DIR and so on; DT_UNKNOWN where the file system does not report it.
  unsigned char type = 0;
};

/// Reads the names of an open folder with few calls, since the buffer is large; without "." and "..".
class FolderReader {
 public:
  /// Calls `take(const char* name, std::size_t length, unsigned char type)` for each; 0, or an errno. Where
  /// it returns a boolean, false ends the reading.
  template <typename Take>
  [[nodiscard]] static int Each(int folder, Take&& take) {
    // The layout that getdents64 documents.
    struct Record {
      quint64 inode;
      qint64 offset;
      unsigned short length;
      unsigned char type;
      char name[1];
    };
    const std::unique_ptr<char[]> buffer(new char[kBufferBytes]);
    for (;;) {
      const long got =
          Repeated([&] { return ::syscall(SYS_getdents64, folder, buffer.get(), kBufferBytes); });
      if (got < 0) {
        return errno;
      }
      if (got == 0) {
        return 0;
      }
      for (long at = 0; at < got;) {
        const auto* record = reinterpret_cast<const Record*>(buffer.get() + at);
        const char* name = buffer.get() + at + offsetof(Record, name);
        const std::size_t length = std::strlen(name);
        if (!(name[0] == '.' && (length == 1 || (length == 2 && name[1] == '.'))) && length > 0) {
          if constexpr (std::is_same_v<decltype(take(name, length, record->type)), bool>) {
            if (!take(name, length, record->type)) {
              return 0;
            }
          } else {
            take(name, length, record->type);
          }
        }
        at += record->length;
      }
    }
  }

  /// All of them; 0, or an errno.
  [[nodiscard]] static int All(int folder, std::vector<FolderItem>& items) {
    return Each(folder, [&items](const char* name, std::size_t length, unsigned char type) {
      items.push_back({QByteArray(name, static_cast<qsizetype>(length)), type});
    });
  }

 private:
  static constexpr std::size_t kBufferBytes = 256 * 1024;
};

}  // namespace trevane::local
