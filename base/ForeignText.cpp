#include "base/ForeignText.h"

#include "base/DisplayText.h"

#include <QChar>
#include <QStringList>

namespace trevane {
namespace {

constexpr char16_t kUnknown = 0xFFFD;
constexpr char16_t kEllipsis = 0x2026;

/// It is seen as nothing, and can change how the rest is read.
bool IsInvisible(QChar unit) {
  return unit.category() == QChar::Other_Format || unit.category() == QChar::Other_Control;
}

QString Shortened(QString text, qsizetype longest) {
  if (text.size() <= longest) {
    return text;
  }
  text.truncate(longest - 1);
  if (!text.isEmpty() && text.back().isHighSurrogate()) {
    text.chop(1);
  }
  return text + QChar(kEllipsis);
}

QString ReadableLine(QString line) {
  QString shown = DisplayText(line.replace(u'\t', u' ')).trimmed();
  for (QChar& unit : shown) {
    unit = IsInvisible(unit) ? QChar(kUnknown) : unit;
  }
  return shown;
}

}  // namespace

QString ForeignText(const QString& text, qsizetype longest) {
  // What is cut off anyway is not worked on. A line end can be of two characters.
  QString begin = text.left(2 * longest + 1);
  QStringList lines;
  const QStringList sent =
      begin.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).replace(u'\r', u'\n').split(u'\n');
  for (const QString& line : sent) {
    const QString shown = ReadableLine(line);
    const bool isBlankAgain = shown.isEmpty() && (lines.isEmpty() || lines.back().isEmpty());
    if (!isBlankAgain) {
      lines += shown;
    }
  }
  return Shortened(lines.join(u'\n').trimmed(), longest);
}

QString ForeignLine(const QString& text, qsizetype longest) {
  return ForeignText(text, longest)
      .replace(QStringLiteral("\n\n"), QStringLiteral("\n"))
      .replace(u'\n', u' ');
}

}  // namespace trevane
