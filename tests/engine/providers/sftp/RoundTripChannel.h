#pragma once

#include "tests/engine/providers/sftp/FilterChannel.h"

#include <memory>

namespace trevane::test {

/// What a far server costs, counted on a clock of its own that only waiting moves: an answer comes one round
/// trip after its request was sent, and nothing else takes time.
struct RoundTrips {
  int waits = 0;
  int requests = 0;
};

class RoundTripChannel final : public FilterChannel {
 public:
  RoundTripChannel(std::unique_ptr<SftpChannel> inner, RoundTrips& count)
      : FilterChannel(std::move(inner)), count_(count) {}

  [[nodiscard]] QByteArray Exchange(QByteArray& unsent) override;
  [[nodiscard]] QByteArray Poll(QByteArray& unsent) override;

 protected:
  [[nodiscard]] Packet OnRequest(Packet packet) override;
  [[nodiscard]] Packet OnAnswer(Packet packet) override;

 private:
  /// Sends them and waits until the server has answered all.
  void Pass(QByteArray& unsent);

  RoundTrips& count_;
  int open_ = 0;
  /// Answers to what was sent since the clock moved last.
  QByteArray late_;
};

}  // namespace trevane::test
