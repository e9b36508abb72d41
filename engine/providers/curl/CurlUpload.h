#pragma once

#include "engine/providers/curl/CurlLine.h"
#include "engine/providers/curl/Flow.h"
#include "engine/providers/ftp/FtpDialogue.h"

#include <deque>
#include <memory>

namespace trevane::curl {

/// Content that goes while more is written.
class CurlUpload final : public FtpUpload, private Flow {
 public:
  /// Begins; the server may refuse it all the same.
  CurlUpload(std::shared_ptr<CurlLine> line, const QByteArray& path);
  ~CurlUpload() override;
  CurlUpload(const CurlUpload&) = delete;
  CurlUpload& operator=(const CurlUpload&) = delete;

  [[nodiscard]] bool WasRefused() const override;
  void Write(const QByteArray& piece) override;
  [[nodiscard]] ftp::Reply Finish() override;

 private:
  [[nodiscard]] bool Put(QByteArrayView bytes) override;
  [[nodiscard]] qsizetype Get(char* bytes, qsizetype most) override;

  const std::shared_ptr<CurlLine> line_;
  std::deque<QByteArray> pieces_;
  qint64 held_ = 0;
  qint64 taken_ = 0;
  bool wasAsked_ = false;
  bool isPaused_ = false;
  bool isComplete_ = false;
  bool hasBegun_ = false;
};

}  // namespace trevane::curl
