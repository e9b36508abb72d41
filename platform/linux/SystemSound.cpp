#include "platform/SystemSound.h"

#include <QThread>

#include <utility>

namespace trevane::systemsound {
namespace {

std::function<void(qint32)>& Beeper() {
  static std::function<void(qint32)> beeper;
  return beeper;
}

}  // namespace

void Beep(qint32 kind) {
  if (Beeper()) {
    Beeper()(kind);
  }
}

void SetBeeper(std::function<void(qint32 kind)> beeper) {
  Beeper() = std::move(beeper);
}

void SleepMilliseconds(qint32 milliseconds) {
  if (milliseconds > 0) {
    QThread::msleep(static_cast<unsigned long>(milliseconds));
  }
}

}  // namespace trevane::systemsound
