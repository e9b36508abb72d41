#include "engine/files/TemporaryName.h"

#include <QRandomGenerator>

namespace trevane {
namespace {

constexpr QLatin1StringView kFront(".trevane-");
constexpr QLatin1StringView kBack(".tmp");
constexpr QLatin1StringView kLetters("abcdefghijklmnopqrstuvwxyz0123456789");
constexpr int kRandom = 4;
constexpr int kCheck = 2;

// The eight characters of the short forms. They have no other sign, so that more of them are the check.
constexpr QChar kShortFront = u'T';
constexpr QLatin1StringView kShortBack(".TMP");
constexpr int kShortRandom = 3;
constexpr int kShortCheck = 4;
constexpr int kShortLength = 1 + kShortRandom + kShortCheck;

// Letters that follow from the others: FNV-1a.
QString CheckOf(QStringView letters, int length = kCheck) {
  quint32 hash = 2166136261U;
  for (const QChar letter : letters) {
    hash = (hash ^ letter.unicode()) * 16777619U;
  }
  const auto count = static_cast<quint32>(kLetters.size());
  QString check;
  for (int i = 0; i < length; ++i) {
    check += kLetters[static_cast<qsizetype>(hash % count)];
    hash /= count;
  }
  return check;
}

QString RandomLetters(int length = kRandom) {
  QString letters;
  for (int i = 0; i < length; ++i) {
    letters += kLetters[QRandomGenerator::global()->bounded(static_cast<int>(kLetters.size()))];
  }
  return letters;
}

// The check of an item that was moved aside.
QString Aside(QString check) {
  check[0] = check[0] == u'a' ? u'b' : u'a';
  return check;
}

QString BackOf(TemporaryForm form, const QString& target) {
  if (form == TemporaryForm::Short) {
    return kShortBack;
  }
  const qsizetype dot = target.lastIndexOf(u'.');
  return dot < 0 ? QString() : target.sliced(dot);
}

QString ShortName(const QString& letters, const QString& check, const QString& back) {
  return kShortFront + (letters + check).toUpper() + back;
}

enum class ShortKind { None, Temporary, Aside };

ShortKind ShortKindOf(const QString& name) {
  const qsizetype dot = name.lastIndexOf(u'.');
  if ((dot < 0 ? name.size() : dot) != kShortLength || name[0].toUpper() != kShortFront) {
    return ShortKind::None;
  }
  const QString letters = name.sliced(1, kShortRandom).toLower();
  const QString check = name.sliced(1 + kShortRandom, kShortCheck).toLower();
  const QString own = CheckOf(letters, kShortCheck);
  if (check == own) {
    return ShortKind::Temporary;
  }
  return check == Aside(own) ? ShortKind::Aside : ShortKind::None;
}

bool IsLongName(const QString& name) {
  return name.size() == kFront.size() + kRandom + kCheck + kBack.size() && name.startsWith(kFront) &&
         name.endsWith(kBack);
}

}  // namespace

QString MakeTemporaryName() {
  const QString letters = RandomLetters();
  return kFront + letters + CheckOf(letters) + kBack;
}

QString MakeTemporaryName(TemporaryForm form, const QString& target) {
  if (form == TemporaryForm::Long) {
    return MakeTemporaryName();
  }
  const QString letters = RandomLetters(kShortRandom);
  return ShortName(letters, CheckOf(letters, kShortCheck), BackOf(form, target));
}

QString MakeAsideName() {
  const QString letters = RandomLetters();
  return kFront + letters + Aside(CheckOf(letters)) + kBack;
}

QString MakeAsideName(TemporaryForm form, const QString& target) {
  if (form == TemporaryForm::Long) {
    return MakeAsideName();
  }
  const QString letters = RandomLetters(kShortRandom);
  return ShortName(letters, Aside(CheckOf(letters, kShortCheck)), BackOf(form, target));
}

bool IsTemporaryName(const QString& name) {
  return IsLongName(name) || ShortKindOf(name) != ShortKind::None;
}

bool IsOwnTemporaryName(const QString& name) {
  if (IsLongName(name)) {
    const QStringView letters = QStringView(name).mid(kFront.size(), kRandom);
    return QStringView(name).mid(kFront.size() + kRandom, kCheck) == CheckOf(letters);
  }
  return name.endsWith(kShortBack, Qt::CaseInsensitive) && ShortKindOf(name) == ShortKind::Temporary;
}

}  // namespace trevane
