#include "platform/SystemSound.h"

#include <windows.h>

namespace trevane::systemsound {

void Beep(qint32 kind) {
  MessageBeep(static_cast<UINT>(kind));
}

// The system has a call of its own.
void SetBeeper(std::function<void(qint32 kind)> /*beeper*/) {}

void SleepMilliseconds(qint32 milliseconds) {
  if (milliseconds > 0) {
    Sleep(static_cast<DWORD>(milliseconds));
  }
}

}  // namespace trevane::systemsound
