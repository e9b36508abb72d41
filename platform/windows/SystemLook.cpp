#include "platform/SystemLook.h"

#include <QtGlobal>

namespace trevane::systemlook {

QByteArray PlatformOption() {
  return qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM") ? QByteArray("windows:darkmode=2") : QByteArray();
}

}  // namespace trevane::systemlook
