#include "platform/TerminationRequests.h"

namespace trevane {

// The end of the user's session reaches the window as a request to close it.
TerminationRequests::TerminationRequests() = default;
TerminationRequests::~TerminationRequests() = default;

}  // namespace trevane
