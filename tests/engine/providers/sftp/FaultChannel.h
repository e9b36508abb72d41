#pragma once

#include "tests/engine/providers/sftp/FilterChannel.h"

#include <QByteArray>

#include <memory>

namespace trevane::test {

/// What happens at one request of many.
struct LineFault {
  enum class Kind {
    /// The line is lost before the server sees it.
    LoseRequest,
    /// The server does its work, and the line is lost with the answer.
    LoseAnswer,
    /// The server refuses it, with a text that tells nothing.
    Refuse,
    /// The server does not do it, because its disk is full.
    FullDisk,
    /// The user cancels: the request was sent, and no further call is carried out but those that put back.
    Cancel
  };

  Kind kind = Kind::LoseRequest;
  /// Counted from 1; 0: none.
  int at = 0;
  int seen = 0;
  bool hasStruck = false;
  /// The call is cancelled until a test makes this false.
  bool isCancelled = false;
};

/// A line with a fault in it.
class FaultChannel final : public FilterChannel {
 public:
  FaultChannel(std::unique_ptr<SftpChannel> inner, LineFault& fault)
      : FilterChannel(std::move(inner)), fault_(fault) {}

  void BeginPutBack() noexcept override { ++putBacks_; }
  void EndPutBack() noexcept override { --putBacks_; }

 protected:
  [[nodiscard]] Packet OnRequest(Packet packet) override;
  [[nodiscard]] Packet OnAnswer(Packet packet) override;
  void RequireLine() override;

 private:
  LineFault& fault_;
  int putBacks_ = 0;
  bool isLost_ = false;
  bool losesAnswer_ = false;
  quint32 lostId_ = 0;
};

}  // namespace trevane::test
