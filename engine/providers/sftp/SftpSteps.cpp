#include "engine/providers/sftp/SftpSteps.h"

#include "engine/files/ProviderError.h"
#include "engine/providers/sftp/SftpErrors.h"
#include "engine/providers/sftp/SftpItem.h"

namespace trevane::sftp {

void RequireOk(const StatusAnswer& answer, const Place& place) {
  if (!answer.IsOk()) {
    throw StatusError(answer, place.text);
  }
}

void RequireMade(Server& server, const StatusAnswer& made, const Place& place) {
  if (made.IsOk()) {
    return;
  }
  // A folder that may not be written to, or is read-only, may hold it already.
  if (NumberOf(made) != error::kNotFound && server.Look(place)) {
    Fail(error::kExists, place.text);
  }
  throw server.StoringError(made, place);
}

void SetTraitsAt(Server& server, const Place& place, const Attributes& own, const FileTraits& traits) {
  const Attributes attributes = AttributesOf(traits, own.times ? own.times->accessed : 0);
  if (attributes != Attributes()) {
    RequireOk(server.Line(place.text)->SetStat(place.path, attributes).Status(), place);
  }
}

}  // namespace trevane::sftp
