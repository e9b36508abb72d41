#pragma once

#include <QByteArrayList>

#include <memory>

#include <curl/curl.h>

namespace trevane::curl {

struct EasyEnd {
  void operator()(CURL* easy) const noexcept { curl_easy_cleanup(easy); }
};
struct MultiEnd {
  void operator()(CURLM* multi) const noexcept { curl_multi_cleanup(multi); }
};
struct ListEnd {
  void operator()(curl_slist* list) const noexcept { curl_slist_free_all(list); }
};

using Easy = std::unique_ptr<CURL, EasyEnd>;
using Multi = std::unique_ptr<CURLM, MultiEnd>;
using List = std::unique_ptr<curl_slist, ListEnd>;

/// Before any other call of the library; more than once does nothing. The memory that the library frees is
/// overwritten, since it holds copies of passwords.
void StartLibrary();

[[nodiscard]] List MakeList(const QByteArrayList& lines);

/// Fails where the library has not taken an option: with error::kNotSupported, or for want of memory.
void RequireTaken(CURLoption option, CURLcode result);

/// Sets an option of a connection; fails as RequireTaken.
template <typename Value>
void SetOption(CURL* easy, CURLoption option, Value value) {
  RequireTaken(option, curl_easy_setopt(easy, option, value));
}

}  // namespace trevane::curl
