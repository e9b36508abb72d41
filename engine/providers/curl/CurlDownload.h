#pragma once

#include "engine/providers/curl/CurlLine.h"
#include "engine/providers/curl/Flow.h"
#include "engine/providers/ftp/FtpDialogue.h"

#include <deque>
#include <memory>

namespace trevane::curl {

/// Content that comes while it is asked for; little more is kept than what was asked for.
class CurlDownload final : public FtpDownload, private Flow {
 public:
  explicit CurlDownload(std::shared_ptr<CurlLine> line);
  ~CurlDownload() override;
  CurlDownload(const CurlDownload&) = delete;
  CurlDownload& operator=(const CurlDownload&) = delete;

  void BeginText(const QByteArray& command);
  void BeginFile(const QByteArray& path, qint64 offset);
  /// The first bytes have come, or the transfer has ended. False where the server refuses.
  [[nodiscard]] bool Await();

  [[nodiscard]] QByteArray Read(qint64 most) override;
  [[nodiscard]] ftp::Reply Finish() override;

 private:
  [[nodiscard]] bool Put(QByteArrayView bytes) override;
  [[nodiscard]] qsizetype Get(char* bytes, qsizetype most) override;

  const std::shared_ptr<CurlLine> line_;
  std::deque<QByteArray> pieces_;
  qint64 held_ = 0;
  bool isPaused_ = false;
  bool hasBegun_ = false;
};

}  // namespace trevane::curl
