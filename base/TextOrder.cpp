#include "base/TextOrder.h"

#include "base/LowerCase.h"

#include <algorithm>

namespace trevane {
namespace {

struct Record {
  /// Characters behind the common prefix, the first in the highest bits.
  quint64 key;
  quint32 position;
};

int CompareUnits(QStringView left, QStringView right) noexcept {
  const qsizetype common = qMin(left.size(), right.size());
  const char16_t* a = left.utf16();
  const char16_t* b = right.utf16();
  for (qsizetype i = 0; i < common; ++i) {
    if (a[i] != b[i]) {
      return a[i] < b[i] ? -1 : 1;
    }
  }
  return left.size() == right.size() ? 0 : left.size() < right.size() ? -1 : 1;
}

}  // namespace

void TextOrder::Reserve(size_t texts, size_t unitsEach) {
  starts_.reserve(texts + 1);
  units_.reserve(texts * unitsEach);
}

void TextOrder::Add(QStringView text) {
  AppendLowerCase(text, units_);
  starts_.push_back(static_cast<quint32>(units_.size()));
}

std::vector<quint32> TextOrder::Sorted(bool descending) const {
  const auto count = static_cast<quint32>(Count());
  std::vector<quint32> order(count);
  if (count == 0) {
    return order;
  }
  const QStringView first = Text(0);
  qsizetype common = first.size();
  for (quint32 i = 1; i < count && common > 0; ++i) {
    const QStringView text = Text(i);
    common = qMin(common, text.size());
    qsizetype same = 0;
    while (same < common && text[same] == first[same]) {
      ++same;
    }
    common = same;
  }
  // Where every unit fits a byte, twice as many go into a key.
  const bool narrow = std::all_of(units_.begin(), units_.end(), [](char16_t unit) { return unit < 0x100; });
  const qsizetype perKey = narrow ? 8 : 4;
  const int bits = narrow ? 8 : 16;

  std::vector<Record> records(count);
  for (quint32 i = 0; i < count; ++i) {
    const QStringView text = Text(i);
    quint64 key = 0;
    for (qsizetype k = common; k < common + perKey; ++k) {
      key = (key << bits) | (k < text.size() ? text[k].unicode() : 0U);
    }
    records[i] = {key, i};
  }
  const qsizetype compared = common;
  std::sort(records.begin(), records.end(), [&](const Record& a, const Record& b) {
    if (a.key != b.key) {
      return (a.key < b.key) != descending;
    }
    // Behind equal keys the texts may differ still, or one may be shorter than the key reaches.
    const int difference = CompareUnits(Text(a.position).mid(compared), Text(b.position).mid(compared));
    if (difference != 0) {
      return (difference < 0) != descending;
    }
    return a.position < b.position;
  });
  for (quint32 i = 0; i < count; ++i) {
    order[i] = records[i].position;
  }
  return order;
}

}  // namespace trevane
