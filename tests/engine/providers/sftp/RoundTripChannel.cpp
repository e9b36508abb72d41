#include "tests/engine/providers/sftp/RoundTripChannel.h"

#include "engine/files/ProviderError.h"

#include <utility>

namespace trevane::test {

FilterChannel::Packet RoundTripChannel::OnRequest(Packet packet) {
  ++count_.requests;
  ++open_;
  return packet;
}

FilterChannel::Packet RoundTripChannel::OnAnswer(Packet packet) {
  --open_;
  return packet;
}

void RoundTripChannel::Pass(QByteArray& unsent) {
  late_ += FilterChannel::Poll(unsent);
  while (open_ > 0) {
    late_ += FilterChannel::Exchange(unsent);
  }
}

QByteArray RoundTripChannel::Poll(QByteArray& unsent) {
  Pass(unsent);
  return {};
}

QByteArray RoundTripChannel::Exchange(QByteArray& unsent) {
  Pass(unsent);
  if (late_.isEmpty()) {
    throw ProviderError(error::kTimeOut, {});
  }
  ++count_.waits;
  return std::exchange(late_, {});
}

}  // namespace trevane::test
