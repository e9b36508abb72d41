#include "engine/providers/curl/CurlHandles.h"

#include "base/RunTimeError.h"
#include "platform/Secret.h"

#include <QString>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>

namespace trevane::curl {
namespace {

/// Stands before each piece of memory, and keeps what follows aligned.
struct alignas(std::max_align_t) Head {
  std::size_t bytes;
};

void* Take(std::size_t bytes) {
  auto* const head = static_cast<Head*>(std::malloc(sizeof(Head) + bytes));
  if (head == nullptr) {
    return nullptr;
  }
  head->bytes = bytes;
  return head + 1;
}

void Free(void* memory) {
  if (memory == nullptr) {
    return;
  }
  Head* const head = static_cast<Head*>(memory) - 1;
  // Large ones are buffers of content.
  constexpr std::size_t kLargestSecret = 16384;
  WipeBytes(memory, std::min(head->bytes, kLargestSecret));
  std::free(head);
}

void* Resize(void* memory, std::size_t bytes) {
  void* const larger = Take(bytes);
  if (larger != nullptr && memory != nullptr) {
    std::memcpy(larger, memory, std::min(bytes, (static_cast<Head*>(memory) - 1)->bytes));
    Free(memory);
  }
  return larger;
}

char* CopyText(const char* text) {
  const std::size_t bytes = std::strlen(text) + 1;
  void* const copy = Take(bytes);
  return static_cast<char*>(copy == nullptr ? nullptr : std::memcpy(copy, text, bytes));
}

void* TakeZeroed(std::size_t count, std::size_t bytes) {
  void* const memory = Take(count * bytes);
  return memory == nullptr ? nullptr : std::memset(memory, 0, count * bytes);
}

}  // namespace

void StartLibrary() {
  static const CURLcode started =
      curl_global_init_mem(CURL_GLOBAL_DEFAULT, Take, Free, Resize, CopyText, TakeZeroed);
  if (started != CURLE_OK) {
    throw std::bad_alloc();
  }
}

List MakeList(const QByteArrayList& lines) {
  List list;
  for (const QByteArray& line : lines) {
    curl_slist* const longer = curl_slist_append(list.get(), line.constData());
    if (longer == nullptr) {
      throw std::bad_alloc();
    }
    static_cast<void>(list.release());
    list.reset(longer);
  }
  return list;
}

void RequireTaken(CURLoption option, CURLcode result) {
  if (result == CURLE_OUT_OF_MEMORY) {
    throw std::bad_alloc();
  }
  if (result != CURLE_OK) {
    throw RunTimeError(
        error::kNotSupported,
        QStringLiteral("The library for FTP lacks what is needed: option %1").arg(int(option)));
  }
}

}  // namespace trevane::curl
