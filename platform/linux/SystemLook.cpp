#include "platform/SystemLook.h"

namespace trevane::systemlook {

QByteArray PlatformOption() {
  return {};
}

}  // namespace trevane::systemlook
