#include "platform/PrivateProfile.h"

#include "platform/NameCodec.h"
#include "platform/linux/ProfileFile.h"

#include <QByteArrayView>
#include <QRandomGenerator>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <memory>
#include <optional>

#include <fcntl.h>
#include <unistd.h>

namespace trevane::privateprofile {
namespace {

constexpr char kLineEnd[] = "\r\n";

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

// What a C string of the text would hold.
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

  [[nodiscard]] bool Matches(QByteArrayView name) const {
    if (ascii_) {
      // No other character folds to one of ASCII, so the bytes decide.
      if (name.size() != bytes_.size()) {
        return false;
      }
      return qstrnicmp(name.data(), name.size(), bytes_.constData(), bytes_.size()) == 0;
    }
    // A unit takes one to three bytes: longer names need not be looked at.
    if (name.size() > folded_.size() * 3 || name.size() < folded_.size()) {
      return false;
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
  /// Where a new key goes: after the last key, or else after the header.
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

// The section's keys or, without a section, all sections, each followed by a NUL; nothing when there is no
// such section.
std::optional<QByteArray> ListNames(const QByteArray& content, const Name* section) {
  QByteArray names;
  bool found = section == nullptr;
  LineReader lines(content);
  Line line;
  while (lines.Next(line)) {
    const bool isHeader = line.kind == Line::Kind::Header;
    if (section != nullptr && isHeader) {
      if (found) {
        break;
      }
      found = section->Matches(line.name);
      continue;
    }
    if (found && (section == nullptr ? isHeader : line.kind == Line::Kind::Key)) {
      names.append(line.name.data(), line.name.size());
      names.append('\0');
    }
  }
  return found ? std::optional(names) : std::nullopt;
}

QByteArray Spliced(const QByteArray& content, qsizetype begin, qsizetype end, const QByteArray& with) {
  QByteArray result;
  result.reserve(content.size() - (end - begin) + with.size());
  result.append(content.constData(), begin);
  result.append(with);
  result.append(content.constData() + end, content.size() - end);
  return result;
}

QByteArray WithValue(const ProfileFile& file, const Name& section, const Name& key, const QByteArray& value) {
  const QByteArray& content = file.Content();
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
  const bool isEnded = content.isEmpty() ? !file.IsUtf16() : IsLineEnd(content.back());
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

}  // namespace

QString GetString(const QString& section, const QString& key, const QString& fallback, int size,
                  const QString& fileName) {
  const ProfileFile file(fileName);
  if (section.isNull() || key.isNull()) {
    const Name name(section);
    const auto names = ListNames(file.Content(), section.isNull() ? nullptr : &name);
    if (names && file.GetState() == ProfileFile::State::Open) {
      return CutText(*names, std::max(size - 2, 0));
    }
  } else {
    const Name name(key);
    const Place place = Find(file.Content(), Name(section), &name);
    if (place.key) {
      return CutText(Unquote(place.key->value), std::max(size - 1, 0));
    }
  }
  QByteArray standIn = EncodeText(CutAtNul(fallback));
  while (standIn.endsWith(' ')) {
    standIn.chop(1);
  }
  return CutText(standIn, std::max(size - 1, 0));
}

quint32 GetInt(const QString& section, const QString& key, qint32 fallback, const QString& fileName) {
  const auto missing = static_cast<quint32>(fallback);
  if (section.isNull() || key.isNull()) {
    return missing;
  }
  const ProfileFile file(fileName);
  const Name name(key);
  const Place place = Find(file.Content(), Name(section), &name);
  if (!place.key) {
    return missing;
  }
  QByteArrayView digits = TrimBlanks(Unquote(place.key->value));
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

bool WriteString(const QString& section, const QString& key, const QString& value, const QString& fileName) {
  if (section.isNull()) {
    // Nothing is held back, so there is nothing to flush.
    return false;
  }
  const ProfileFile file(fileName);
  if (!file.IsWritable()) {
    return false;
  }
  const Name sectionName(section);
  const Name keyName(key);
  const QByteArray content = key.isNull() ? WithoutSection(file.Content(), sectionName)
                             : value.isNull()
                                 ? WithoutKey(file.Content(), sectionName, keyName)
                                 : WithValue(file, sectionName, keyName, EncodeText(CutAtNul(value)));
  if (file.GetState() == ProfileFile::State::Open && content == file.Content()) {
    return true;
  }
  return file.Replace(content);
}

QString MakeTempFile(const QString& folder, const QString& prefix) {
  const QByteArray given = EncodeText(folder.isEmpty() ? QStringLiteral(".") : folder);
  const QByteArray start = EncodeText(prefix.left(3));
  if (given.contains('\0') || start.contains('\0') || start.contains('/')) {
    return {};
  }
  const std::unique_ptr<char, decltype(&std::free)> absolute(::realpath(given.constData(), nullptr),
                                                             &std::free);
  if (absolute == nullptr) {
    return {};
  }
  QByteArray base(absolute.get());
  if (!base.endsWith('/')) {
    base += '/';
  }
  const quint32 first = QRandomGenerator::global()->generate();
  for (quint32 i = 0; i < 0xFFFF; ++i) {
    const quint32 number = (first + i) % 0xFFFF + 1;
    const QByteArray path = base + start + QByteArray::number(number, 16).toUpper() + ".tmp";
    const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (fd >= 0) {
      ::close(fd);
      return DecodeBytes(path);
    }
    if (errno != EEXIST) {
      return {};
    }
  }
  return {};
}

}  // namespace trevane::privateprofile
