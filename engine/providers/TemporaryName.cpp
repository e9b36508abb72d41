#include "engine/providers/TemporaryName.h"

#include <QRandomGenerator>

namespace trevane {
namespace {

constexpr QLatin1StringView kFront(".trevane-");
constexpr QLatin1StringView kBack(".tmp");
constexpr int kRandom = 6;

}  // namespace

QString MakeTemporaryName() {
  constexpr QLatin1StringView kLetters("abcdefghijklmnopqrstuvwxyz0123456789");
  QString name = kFront;
  for (int i = 0; i < kRandom; ++i) {
    name += kLetters[QRandomGenerator::global()->bounded(static_cast<int>(kLetters.size()))];
  }
  return name + kBack;
}

bool IsTemporaryName(const QString& name) {
  return name.size() == kFront.size() + kRandom + kBack.size() && name.startsWith(kFront) &&
         name.endsWith(kBack);
}

}  // namespace trevane
