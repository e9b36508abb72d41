#include "engine/providers/curl/OpenDialogue.h"

#include <utility>

namespace trevane {

OpenDialogue OpenCurlDialogue(const FtpSettings& settings, const FtpLogOn& logOn,
                              const std::shared_ptr<CallControl>& control) {
  auto dialogue = std::make_unique<CurlDialogue>(settings, logOn, control);
  OpenDialogue open;
  open.greeting = dialogue->Greeting();
  open.tls = dialogue->TlsInUse();
  open.certificate = dialogue->Certificate();
  open.address = dialogue->Address();
  open.dialogue = std::move(dialogue);
  return open;
}

}  // namespace trevane
