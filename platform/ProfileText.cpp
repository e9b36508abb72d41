#include "platform/ProfileText.h"

#include "base/NameCodec.h"

#include <QByteArrayView>

#include <algorithm>

namespace trevane {
namespace {

constexpr char kLineEnd[] = "\r\n";
constexpr char kUtf16Mark[] = "\xFF\xFE";

bool IsBlank(char byte) {
  return byte == ' ' || byte == '\t' || byte == '\v' || byte == '\f';
}
bool IsLineEnd(char byte) {
  return byte == '\n' || byte == '\r';
}

QByteArrayView TrimBlanks(const char* begin, const char* end) {
  while (begin != end && IsBlank(*begin)) {
    ++begin;
  }
  while (begin != end && IsBlank(end[-1])) {
    --end;
  }
  return {begin, end};
}

QByteArrayView TrimBlanks(QByteArrayView bytes) {
  return TrimBlanks(bytes.begin(), bytes.end());
}

// The text up to its first NUL.
QString CutAtNul(const QString& text) {
  const auto nul = text.indexOf(QChar(u'\0'));
  return nul < 0 ? text : text.left(nul);
}

// One line of the file.
struct Line {
  enum class Kind { Header, Key, Comment, Other };

  Kind kind = Kind::Other;
  /// Begin, end without and end with its line end, as positions in the file.
  qsizetype begin = 0;
  qsizetype textEnd = 0;
  qsizetype end = 0;
  /// Of a header or a key, without the blanks round it.
  QByteArrayView name;
  /// Of a key, without the blanks round it.
  QByteArrayView value;
};

// Walks the lines of a file, which end with CR LF, LF or CR, in one pass and without copying. It works on
// pointers: a hostile file has millions of lines.
class LineReader {
 public:
  explicit LineReader(const QByteArray& content)
      : begin_(content.constData()), at_(begin_), end_(begin_ + content.size()) {}

  bool Next(Line& line) {
    if (at_ == end_) {
      return false;
    }
    const char* const text = at_;
    while (at_ != end_ && !IsLineEnd(*at_)) {
      ++at_;
    }
    const char* const textEnd = at_;
    if (at_ != end_) {
      at_ += *at_ == '\r' && end_ - at_ > 1 && at_[1] == '\n' ? 2 : 1;
    }
    line.begin = text - begin_;
    line.textEnd = textEnd - begin_;
    line.end = at_ - begin_;
    Classify(line, text, textEnd);
    return true;
  }

 private:
  static void Classify(Line& line, const char* begin, const char* end) {
    line.kind = Line::Kind::Other;
    while (begin != end && IsBlank(*begin)) {
      ++begin;
    }
    if (begin == end) {
      return;
    }
    if (*begin == ';') {
      line.kind = Line::Kind::Comment;
      return;
    }
    if (*begin == '[') {
      line.kind = Line::Kind::Header;
      line.name = TrimBlanks(begin + 1, std::find(begin + 1, end, ']'));
      return;
    }
    const char* const equals = std::find(begin, end, '=');
    if (equals != end) {
      line.kind = Line::Kind::Key;
      line.name = TrimBlanks(begin, equals);
      line.value = TrimBlanks(equals + 1, end);
    }
  }

  const char* const begin_;
  const char* at_;
  const char* const end_;
};

// A section or key that is looked for. Names compare without case, one UTF-16 unit at a time.
class Name {
 public:
  // Spaces at the ends of the argument do not count; tabs do.
  explicit Name(const QString& argument) {
    QStringView text = argument;
    const auto nul = text.indexOf(QChar(u'\0'));
    if (nul >= 0) {
      text = text.first(nul);
    }
    while (!text.isEmpty() && text.front() == u' ') {
      text = text.sliced(1);
    }
    while (!text.isEmpty() && text.back() == u' ') {
      text.chop(1);
    }
    bytes_ = EncodeText(text);
    for (const QChar unit : text) {
      ascii_ = ascii_ && unit.unicode() < 0x80;
      folded_ += Fold(unit);
    }
  }

  [[nodiscard]] const QByteArray& Bytes() const { return bytes_; }

  // Whether a name of so many bytes can match at all.
  [[nodiscard]] bool CanHave(qsizetype size) const {
    // A unit takes one to three bytes.
    return ascii_ ? size == bytes_.size() : size >= folded_.size() && size <= folded_.size() * 3;
  }

  [[nodiscard]] bool Matches(QByteArrayView name) const {
    if (!CanHave(name.size())) {
      return false;
    }
    if (ascii_) {
      // No other character folds to one of ASCII, so the bytes decide.
      return qstrnicmp(name.data(), name.size(), bytes_.constData(), bytes_.size()) == 0;
    }
    const QString text = DecodeBytes(name);
    if (text.size() != folded_.size()) {
      return false;
    }
    for (qsizetype i = 0; i < text.size(); ++i) {
      if (Fold(text[i]) != folded_[i]) {
        return false;
      }
    }
    return true;
  }

 private:
  static QChar Fold(QChar unit) {
    const QChar upper = unit.toUpper();
    return unit.unicode() >= 0x80 && upper.unicode() < 0x80 ? unit : upper;
  }

  QByteArray bytes_;
  QString folded_;
  bool ascii_ = true;
};

// The first lines that matter for one section of a file.
struct Place {
  std::optional<Line> header;
  /// The first key that was looked for.
  std::optional<Line> key;
  /// The position of a new key: after the last key, or else after the header.
  std::optional<Line> last;
};

Place Find(const QByteArray& content, const Name& section, const Name* key) {
  Place place;
  LineReader lines(content);
  Line line;
  while (lines.Next(line)) {
    if (line.kind == Line::Kind::Header) {
      if (place.header) {
        break;
      }
      if (section.Matches(line.name)) {
        place.header = line;
        place.last = line;
      }
    } else if (place.header && line.kind == Line::Kind::Key) {
      place.last = line;
      if (key != nullptr && key->Matches(line.name)) {
        place.key = line;
        break;
      }
    }
  }
  return place;
}

QString CutText(QByteArrayView bytes, qsizetype limit) {
  return DecodeBytes(bytes.first(CutLength(bytes, limit)));
}

QByteArrayView Unquote(QByteArrayView value) {
  if (value.size() >= 2 && value.front() == value.back() && (value.front() == '"' || value.front() == '\'')) {
    return value.sliced(1, value.size() - 2);
  }
  return value;
}

QByteArray Spliced(const QByteArray& content, qsizetype begin, qsizetype end, const QByteArray& with) {
  QByteArray result;
  result.reserve(content.size() - (end - begin) + with.size());
  result.append(content.constData(), begin);
  result.append(with);
  result.append(content.constData() + end, content.size() - end);
  return result;
}

QByteArray WithValue(const QByteArray& content, bool isUtf16, const Name& section, const Name& key,
                     const QByteArray& value) {
  const Place place = Find(content, section, &key);
  if (place.key) {
    // An empty value begins where its line ends.
    const qsizetype begin =
        place.key->value.isEmpty() ? place.key->textEnd : place.key->value.data() - content.constData();
    const bool isEnded = place.key->end > place.key->textEnd;
    return Spliced(content, begin, place.key->textEnd, isEnded ? value : value + kLineEnd);
  }
  const QByteArray entry = key.Bytes() + '=' + value + kLineEnd;
  if (place.last) {
    const bool isEnded = place.last->end > place.last->textEnd;
    return Spliced(content, place.last->end, place.last->end, isEnded ? entry : kLineEnd + entry);
  }
  // A mark alone is a line that has not ended.
  const bool isEnded = content.isEmpty() ? !isUtf16 : IsLineEnd(content.back());
  return content + (isEnded ? "" : kLineEnd) + '[' + section.Bytes() + ']' + kLineEnd + entry;
}

QByteArray WithoutKey(const QByteArray& content, const Name& section, const Name& key) {
  const Place place = Find(content, section, &key);
  return place.key ? Spliced(content, place.key->begin, place.key->end, {}) : content;
}

QByteArray WithoutSection(const QByteArray& content, const Name& section) {
  QByteArray kept;
  kept.reserve(content.size());
  bool isFound = false;
  bool isInside = false;
  LineReader lines(content);
  Line line;
  while (lines.Next(line)) {
    if (line.kind == Line::Kind::Header) {
      isInside = !isFound && section.Matches(line.name);
      isFound = isFound || isInside;
    }
    if (!isInside || line.kind == Line::Kind::Comment) {
      kept.append(content.constData() + line.begin, line.end - line.begin);
    }
  }
  return kept;
}

// UTF-16 to UTF-8 where a lone surrogate keeps its three bytes, so that unchanged text is written back as it
// was.
QByteArray FromUtf16(const QByteArray& units) {
  QByteArray bytes;
  bytes.reserve(units.size());
  const auto unitAt = [&units](qsizetype i) {
    return static_cast<char16_t>(static_cast<unsigned char>(units[i]) |
                                 (static_cast<unsigned char>(units[i + 1]) << 8));
  };
  for (qsizetype i = 0; i + 1 < units.size(); i += 2) {
    const char16_t unit = unitAt(i);
    char32_t code = unit;
    if (QChar::isHighSurrogate(unit) && i + 3 < units.size() && QChar::isLowSurrogate(unitAt(i + 2))) {
      code = QChar::surrogateToUcs4(unit, unitAt(i + 2));
      i += 2;
    }
    if (code < 0x80) {
      bytes += static_cast<char>(code);
    } else if (code < 0x800) {
      bytes += static_cast<char>(0xC0 | (code >> 6));
      bytes += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
      bytes += static_cast<char>(0xE0 | (code >> 12));
      bytes += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
      bytes += static_cast<char>(0x80 | (code & 0x3F));
    } else {
      bytes += static_cast<char>(0xF0 | (code >> 18));
      bytes += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
      bytes += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
      bytes += static_cast<char>(0x80 | (code & 0x3F));
    }
  }
  return bytes;
}

QByteArray ToUtf16(const QByteArray& bytes) {
  QByteArray units;
  units.reserve(bytes.size() * 2);
  const auto put = [&units](char16_t unit) {
    units += static_cast<char>(unit & 0xFF);
    units += static_cast<char>(unit >> 8);
  };
  const QString text = DecodeBytes(bytes);
  for (qsizetype i = 0; i < text.size(); ++i) {
    const char16_t unit = text[i].unicode();
    // Three escaped bytes in a row that spell a surrogate are one that was alone in the file.
    const auto escaped = [&text](qsizetype at) {
      const char16_t value = at < text.size() ? text[at].unicode() : u'\0';
      return value >= 0xDC80 && value <= 0xDCFF ? value - 0xDC00 : 0;
    };
    if (unit == 0xDCED && escaped(i + 1) >= 0xA0 && escaped(i + 2) != 0) {
      put(static_cast<char16_t>(0xD000 | ((escaped(i + 1) & 0x3F) << 6) | (escaped(i + 2) & 0x3F)));
      i += 2;
    } else if (QChar::isLowSurrogate(unit) && (i == 0 || !QChar::isHighSurrogate(text[i - 1].unicode()))) {
      put(0xFFFD);
    } else {
      put(unit);
    }
  }
  return units;
}

}  // namespace

ProfileText::ProfileText(const QByteArray& bytes) : utf16_(bytes.startsWith(kUtf16Mark)) {
  if (utf16_) {
    oddByte_ = bytes.size() % 2 == 0 ? QByteArray() : bytes.right(1);
    content_ = FromUtf16(bytes.mid(2));
  } else {
    content_ = bytes;
  }
}

QByteArray ProfileText::Bytes() const {
  return utf16_ ? kUtf16Mark + ToUtf16(content_) + oddByte_ : content_;
}

QByteArrayView ProfileText::At(Span span) const {
  return QByteArrayView(content_).sliced(span.begin, span.end - span.begin);
}

const ProfileText::Index& ProfileText::Indexed() const {
  if (index_) {
    return *index_;
  }
  Index& index = index_.emplace();
  const auto spanOf = [this](QByteArrayView view) {
    // An empty name or value may have no position.
    const auto begin = view.isEmpty() ? 0 : static_cast<quint32>(view.data() - content_.constData());
    return Span{begin, begin + static_cast<quint32>(view.size())};
  };
  LineReader lines(content_);
  Line line;
  while (lines.Next(line)) {
    const auto keys = static_cast<quint32>(index.keys.size());
    if (line.kind == Line::Kind::Header) {
      index.sections.push_back({spanOf(line.name), keys, keys});
    } else if (line.kind == Line::Kind::Key && !index.sections.empty()) {
      index.keys.push_back({spanOf(line.name), spanOf(line.value)});
      index.sections.back().endKey = keys + 1;
    }
  }
  return index;
}

const ProfileText::Section* ProfileText::FindSection(const QString& section) const {
  const Name name(section);
  const auto& sections = Indexed().sections;
  const auto found =
      std::ranges::find_if(sections, [&](const Section& each) { return name.Matches(At(each.name)); });
  return found == sections.end() ? nullptr : &*found;
}

std::optional<QByteArrayView> ProfileText::FindValue(const QString& section, const QString& key) const {
  const Section* place = FindSection(section);
  if (place == nullptr) {
    return {};
  }
  const Name name(key);
  const Key* const end = index_->keys.data() + place->endKey;
  for (const Key* each = index_->keys.data() + place->firstKey; each != end; ++each) {
    if (name.CanHave(each->name.end - each->name.begin) && name.Matches(At(each->name))) {
      return At(each->value);
    }
  }
  return {};
}

std::optional<QByteArray> ProfileText::ListNames(const QString& section) const {
  QByteArray names;
  const auto add = [&](Span span) {
    const QByteArrayView name = At(span);
    names.append(name.data(), name.size());
    names.append('\0');
  };
  if (section.isNull()) {
    for (const Section& each : Indexed().sections) {
      add(each.name);
    }
    return names;
  }
  const Section* place = FindSection(section);
  if (place == nullptr) {
    return {};
  }
  for (quint32 i = place->firstKey; i < place->endKey; ++i) {
    add(Indexed().keys[i].name);
  }
  return names;
}

QString ProfileText::GetString(const QString& section, const QString& key, const QString& fallback,
                               int size) const {
  if (section.isNull() || key.isNull()) {
    if (const auto names = ListNames(section)) {
      return CutText(*names, std::max(size - 2, 0));
    }
  } else if (const auto value = FindValue(section, key)) {
    return CutText(Unquote(*value), std::max(size - 1, 0));
  }
  return DefaultText(fallback, size);
}

QString ProfileText::DefaultText(const QString& fallback, int size) {
  QByteArray standIn = EncodeText(CutAtNul(fallback));
  while (standIn.endsWith(' ')) {
    standIn.chop(1);
  }
  return CutText(standIn, std::max(size - 1, 0));
}

quint32 ProfileText::GetInt(const QString& section, const QString& key, qint32 fallback) const {
  const auto missing = static_cast<quint32>(fallback);
  if (section.isNull() || key.isNull()) {
    return missing;
  }
  const auto value = FindValue(section, key);
  if (!value) {
    return missing;
  }
  QByteArrayView digits = TrimBlanks(Unquote(*value));
  bool isNegative = false;
  if (!digits.isEmpty() && (digits.front() == '-' || digits.front() == '+')) {
    isNegative = digits.front() == '-';
    digits = digits.sliced(1);
  }
  quint32 number = 0;
  for (const char digit : digits) {
    if (digit < '0' || digit > '9') {
      break;
    }
    number = number * 10 + static_cast<quint32>(digit - '0');
  }
  return isNegative ? 0U - number : number;
}

void ProfileText::WriteString(const QString& section, const QString& key, const QString& value) {
  const Name sectionName(section);
  const Name keyName(key);
  content_ = key.isNull() ? WithoutSection(content_, sectionName)
             : value.isNull()
                 ? WithoutKey(content_, sectionName, keyName)
                 : WithValue(content_, utf16_, sectionName, keyName, EncodeText(CutAtNul(value)));
  index_.reset();
}

}  // namespace trevane
