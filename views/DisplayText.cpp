#include "views/DisplayText.h"

#include <QTextDocument>

namespace trevane {
namespace {

constexpr char16_t kControlPictures = 0x2400;
constexpr char16_t kPictureOfDelete = 0x2421;
constexpr char16_t kPictureOfNewLine = 0x2424;

/// What is shown for a code unit: most often itself.
char16_t Shown(char16_t unit) noexcept {
  if (unit < 0x20) {
    return static_cast<char16_t>(kControlPictures + unit);
  }
  if (unit == 0x7F) {
    return kPictureOfDelete;
  }
  // Next line, line separator and paragraph separator break lines, too.
  if (unit == 0x85 || unit == 0x2028 || unit == 0x2029) {
    return kPictureOfNewLine;
  }
  return unit;
}

}  // namespace

QString DisplayText(const QString& name) {
  const char16_t* units = QStringView(name).utf16();
  qsizetype i = 0;
  while (i < name.size() && Shown(units[i]) == units[i]) {
    ++i;
  }
  if (i == name.size()) {
    return name;
  }
  QString shown = name;
  for (QChar* out = shown.data(); i < shown.size(); ++i) {
    out[i] = QChar(Shown(out[i].unicode()));
  }
  return shown;
}

QString PlainToolTip(const QString& text) {
  return Qt::mightBeRichText(text) ? text.toHtmlEscaped() : text;
}

}  // namespace trevane
