#include "engine/substitute/ControllerNames.h"

#include "base/LowerCase.h"

#include <algorithm>

namespace trevane {

namespace {

bool IsFree(const QString& name, const QStringList& used) {
  return !EqualIgnoringCase(name, u"My Computer") &&
         std::none_of(used.begin(), used.end(),
                      [&name](const QString& taken) { return EqualIgnoringCase(taken, name); });
}

}  // namespace

QString CleanControllerName(const QString& requested) {
  QString name;
  for (const QChar character : requested) {
    const QChar::Category category = character.category();
    const bool excluded = character == u'[' || character == u']' || character == u'/' || character == u'\\' ||
                          category == QChar::Other_Control || category == QChar::Separator_Line ||
                          category == QChar::Separator_Paragraph;
    if (!excluded) {
      name.append(character);
    }
  }
  name = name.trimmed();
  while (name.startsWith(u';')) {
    name = name.mid(1).trimmed();
  }
  // These two mean folders in an address.
  return name == u"." || name == u".." ? QString() : name;
}

QString ChooseControllerName(const QString& requested, const QString& provider, const QStringList& used) {
  QString base = CleanControllerName(requested);
  if (!base.isEmpty() && IsFree(base, used)) {
    return base;
  }
  const bool unnamed = base.isEmpty();
  if (unnamed) {
    base = CleanControllerName(provider.mid(provider.lastIndexOf(u'.') + 1));
    if (base.isEmpty()) {
      base = QStringLiteral("Controller");
    }
  }
  int number = unnamed ? 1 : 2;
  const auto numbered = [&] {
    return unnamed ? base + QString::number(number)
                   : QStringLiteral("%1 (%2)").arg(base, QString::number(number));
  };
  QString name = numbered();
  while (!IsFree(name, used)) {
    ++number;
    name = numbered();
  }
  return name;
}

}  // namespace trevane
