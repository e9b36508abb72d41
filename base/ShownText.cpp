#include "base/ShownText.h"

#include <QStringList>
#include <QTextBoundaryFinder>

namespace trevane {
namespace {

constexpr char16_t kCarriers = 0xF000;
constexpr QStringView kCarried = u"\"*:<>?\\|";

/// The character that a private-use one represents; most often itself.
char16_t Readable(char16_t unit) noexcept {
  const auto plain = static_cast<char16_t>(unit - kCarriers);
  return unit > kCarriers && kCarried.contains(QChar(plain)) ? plain : unit;
}

/// The end of the line that begins at `start`: behind a blank or a separator in its second half, else
/// between two characters as they are seen.
qsizetype EndOfLine(const QString& text, qsizetype start) {
  qsizetype end = start + kToolTipLine;
  for (qsizetype i = end; i > start + kToolTipLine / 2; --i) {
    if (text[i - 1] == u' ' || text[i - 1] == u'\\' || text[i - 1] == u'/') {
      return i;
    }
  }
  QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
  finder.setPosition(end);
  if (!finder.isAtBoundary()) {
    const auto before = static_cast<qsizetype>(finder.toPreviousBoundary());
    end = before > start ? before : end;
  }
  return end;
}

QStringList ToolTipLines(const QString& text) {
  QStringList lines;
  for (const QString& part : text.split(u'\n')) {
    qsizetype start = 0;
    while (part.size() - start > kToolTipLine) {
      const qsizetype end = EndOfLine(part, start);
      lines += part.mid(start, end - start);
      start = end;
    }
    lines += part.mid(start);
  }
  return lines;
}

}  // namespace

QString WithReadableNames(const QString& text) {
  QString shown = text;
  for (qsizetype i = 0; i < text.size(); ++i) {
    const char16_t unit = text[i].unicode();
    if (Readable(unit) != unit) {
      shown[i] = QChar(Readable(unit));
    }
  }
  return shown;
}

QString WithCarriersOf(const QString& name, const QString& typed) {
  QString text = typed;
  for (const QChar unit : name) {
    const char16_t plain = Readable(unit.unicode());
    if (plain != unit.unicode()) {
      text.replace(QChar(plain), unit);
    }
  }
  return text;
}

QString PlainToolTip(const QString& text) {
  const QStringList lines = ToolTipLines(WithReadableNames(text));
  const QString plain = lines.join(u'\n');
  if (!plain.contains(u'<') && !plain.contains(u'&')) {
    return plain;
  }
  return QStringLiteral("<p style='white-space:pre'>") +
         plain.toHtmlEscaped().replace(u'\n', QStringLiteral("<br/>")) + QStringLiteral("</p>");
}

}  // namespace trevane
