#include "views/list/FileColumns.h"

namespace trevane {
namespace {

constexpr qsizetype kSizeWidth = 10;
constexpr quint64 kFirstTooLong = 10'000'000'000ULL;

}  // namespace

const QString& HeaderText(FileColumn column) {
  static const std::array<QString, kFileColumnCount> kTexts = {
      QStringLiteral("Name"),      QStringLiteral("Size"),     QStringLiteral("Type"),
      QStringLiteral("Modified"),  QStringLiteral("Accessed"), QStringLiteral("Created"),
      QStringLiteral("Attributes")};
  return kTexts[static_cast<size_t>(column)];
}

QString SizeText(qint64 size) {
  if (size < 0) {
    return {};
  }
  return QString::number(size).rightJustified(kSizeWidth, u' ').right(kSizeWidth);
}

quint64 SizeSortKey(qint64 size) noexcept {
  // An empty text is first; a blank sorts before a digit, so padded numbers follow; then cut numbers that
  // begin with zeros; then ten digits of either origin.
  constexpr quint64 kClass = 1ULL << 40U;
  constexpr quint64 kLeast10Digits = kFirstTooLong / 10;
  if (size < 0) {
    return 0;
  }
  const auto whole = static_cast<quint64>(size);
  const quint64 shown = whole % kFirstTooLong;
  if (shown >= kLeast10Digits) {
    return 3 * kClass + shown;
  }
  return (whole == shown ? 1 : 2) * kClass + shown;
}

}  // namespace trevane
