#include "tests/engine/providers/sftp/FaultChannel.h"

#include "engine/files/ProviderError.h"
#include "engine/providers/sftp/SftpAnswer.h"

namespace trevane::test {

FilterChannel::Packet FaultChannel::OnRequest(Packet packet) {
  if (isLost_) {
    return {};
  }
  ++fault_.seen;
  if (fault_.at == 0 || fault_.seen != fault_.at) {
    return packet;
  }
  fault_.hasStruck = true;
  switch (fault_.kind) {
    case LineFault::Kind::LoseRequest:
      isLost_ = true;
      return {};
    case LineFault::Kind::LoseAnswer:
      losesAnswer_ = true;
      lostId_ = IdOf(packet);
      return packet;
    case LineFault::Kind::Refuse:
      Answer(StatusOf(IdOf(packet), sftp::status::kFailure, "Failure"));
      return {};
    case LineFault::Kind::FullDisk:
      Answer(StatusOf(IdOf(packet), sftp::status::kFailure, "No space left on device"));
      return {};
    case LineFault::Kind::Cancel:
      fault_.isCancelled = true;
      return packet;
  }
  return packet;
}

FilterChannel::Packet FaultChannel::OnAnswer(Packet packet) {
  if (losesAnswer_ && IdOf(packet) == lostId_) {
    isLost_ = true;
  }
  return isLost_ ? Packet() : packet;
}

void FaultChannel::RequireLine() {
  if (isLost_) {
    throw ProviderError(error::kWin32Error + 64, {});
  }
  if (fault_.isCancelled && putBacks_ == 0) {
    throw ProviderError(error::kCancelled, {});
  }
}

}  // namespace trevane::test
