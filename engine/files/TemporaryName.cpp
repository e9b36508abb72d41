#include "engine/files/TemporaryName.h"

#include <QRandomGenerator>

namespace trevane {
namespace {

constexpr QLatin1StringView kFront(".trevane-");
constexpr QLatin1StringView kBack(".tmp");
constexpr QLatin1StringView kLetters("abcdefghijklmnopqrstuvwxyz0123456789");
constexpr int kRandom = 4;
constexpr int kCheck = 2;

// Two letters that follow from the others: FNV-1a.
QString CheckOf(QStringView letters) {
  quint32 hash = 2166136261U;
  for (const QChar letter : letters) {
    hash = (hash ^ letter.unicode()) * 16777619U;
  }
  const auto count = static_cast<quint32>(kLetters.size());
  return QString(kLetters[static_cast<qsizetype>(hash % count)]) +
         kLetters[static_cast<qsizetype>(hash / count % count)];
}

QString RandomLetters() {
  QString letters;
  for (int i = 0; i < kRandom; ++i) {
    letters += kLetters[QRandomGenerator::global()->bounded(static_cast<int>(kLetters.size()))];
  }
  return letters;
}

}  // namespace

QString MakeTemporaryName() {
  const QString letters = RandomLetters();
  return kFront + letters + CheckOf(letters) + kBack;
}

QString MakeAsideName() {
  const QString letters = RandomLetters();
  QString check = CheckOf(letters);
  check[0] = check[0] == u'a' ? u'b' : u'a';
  return kFront + letters + check + kBack;
}

bool IsTemporaryName(const QString& name) {
  return name.size() == kFront.size() + kRandom + kCheck + kBack.size() && name.startsWith(kFront) &&
         name.endsWith(kBack);
}

bool IsOwnTemporaryName(const QString& name) {
  const QStringView letters = QStringView(name).mid(kFront.size(), kRandom);
  return IsTemporaryName(name) && QStringView(name).mid(kFront.size() + kRandom, kCheck) == CheckOf(letters);
}

}  // namespace trevane
