#include "engine/providers/ftp/ListMessages.h"

#include <algorithm>
#include <array>

namespace trevane::ftp {
namespace {

/// "total" in the encodings that a server may have.
constexpr std::array<QByteArrayView, 34> kTotals{
    "total", "insgesamt", "gesamt", "summe", "totale", "totaal", "totalt", "summa", "yhteens\xC3\xA4",
    "yhteens\xE4", "razem", "celkem", "toplam", "totals", "ialt", "sammenlagt", "i alt",
    // Hungarian, Russian in UTF-8, Windows-1251, KOI8-R and DOS.
    "\xC3\xB6sszesen", "\xF6sszesen", "\xD0\xB8\xD1\x82\xD0\xBE\xD0\xB3\xD0\xBE",
    "\xD0\x98\xD1\x82\xD0\xBE\xD0\xB3\xD0\xBE", "\xE8\xF2\xEE\xE3\xEE", "\xC9\xD4\xCF\xC7\xCF",
    "\xA8\xE2\xAE\xA3\xAE",
    // Japanese in UTF-8, Shift-JIS, EUC-JP; Chinese in UTF-8 (three words) and GBK (two); Korean in UTF-8.
    "\xE5\x90\x88\xE8\xA8\x88", "\x8D\x87\x8Cv", "\xB9\xE7\xB7\xD7", "\xE6\x80\xBB\xE7\x94\xA8\xE9\x87\x8F",
    "\xE6\x80\xBB\xE8\xAE\xA1", "\xE7\xB8\xBD\xE8\xA8\x88", "\xD7\xDC\xD3\xC3\xC1\xBF", "\xD7\xDC\xBC\xC6",
    "\xED\x95\xA9\xEA\xB3\x84", "\xEC\xA0\x84\xEC\xB2\xB4"};

constexpr std::array<QByteArrayView, 6> kBeginnings{
    "Volume in drive ", "Volume Serial Number is ", "Volume in Laufwerk ", "Volumeseriennummer: ",
    "Directory of ",    "Verzeichnis von ",
};

constexpr std::array<QByteArrayView, 17> kEmpty{"File not found",
                                                "Files not found",
                                                "No file found",
                                                "No files found",
                                                "No files",
                                                "No files in directory",
                                                "Directory is empty",
                                                "Directory empty",
                                                "Empty directory",
                                                "The directory is empty",
                                                "Folder is empty",
                                                "Empty folder",
                                                "No entries",
                                                "No entries found",
                                                "Datei nicht gefunden",
                                                "Keine Dateien gefunden",
                                                "%DIRECT-W-NOFILES, no files found"};

template <size_t Size>
bool IsOneOf(QByteArrayView text, const std::array<QByteArrayView, Size>& texts) {
  return std::any_of(texts.begin(), texts.end(), [text](QByteArrayView one) { return IsSame(text, one); });
}

/// "12", "12K", "1,234", "4.5M".
bool IsAmount(QByteArrayView word) {
  return !word.isEmpty() && IsDigit(word.front()) && std::all_of(word.begin(), word.end(), [](char c) {
    return IsDigit(c) || c == '.' || c == ',' || c == 'K' || c == 'k' || c == 'M' || c == 'G' || c == 'B';
  });
}

/// "total 12", "total: 12".
bool IsTotal(const ListWords& words) {
  QByteArrayView word = words.At(0);
  if (word.endsWith(':')) {
    word.chop(1);
  }
  return words.Count() == 2 && IsAmount(words.At(1)) && IsOneOf(word, kTotals);
}

/// "2 File(s)  1,234 bytes", "1 Dir(s)  12345 bytes free", "Total of 3 files, 9 blocks."
bool IsSummary(const ListWords& words) {
  const QByteArrayView word = words.At(1);
  if (IsNumber(words.At(0)) && words.Count() >= 2 && words.Count() <= 6) {
    return IsSame(word, "File(s)") || IsSame(word, "Dir(s)") || IsSame(word, "Datei(en),") ||
           IsSame(word, "Verzeichnis(se),");
  }
  return IsSame(words.At(0), "Total") && IsSame(word, "of") && IsNumber(words.At(2)) &&
         BeginsWith(words.At(3), "file") && words.Count() <= 6;
}

/// "size date time name", "Permission Owner Group Size Date Name": words of headings alone.
bool IsColumnTitles(const ListWords& words) {
  static constexpr std::array<QByteArrayView, 19> kTitles{
      "size",      "date",  "time",     "name", "permission",  "permissions", "owner",
      "group",     "links", "mode",     "last", "modified",    "attributes",  "sector",
      "bytecount", "type",  "filename", "attr", "modification"};
  if (words.Count() < 3) {
    return false;
  }
  for (int i = 0; i < words.Count(); ++i) {
    if (!IsOneOf(words.At(i), kTitles)) {
      return false;
    }
  }
  return true;
}

bool IsRule(QByteArrayView line) {
  constexpr qsizetype kShortest = 4;
  return line.size() >= kShortest &&
         std::all_of(line.begin(), line.end(), [](char c) { return c == '-' || c == '=' || IsBlank(c); });
}

/// The folder itself: "/PROG:", ".:", "Directory DISK:[USER]".
bool IsFolderHeading(const ListWords& words) {
  const QByteArrayView word = words.At(0);
  if (words.Count() == 1) {
    return word.size() >= 2 && word.endsWith(':') && (word.startsWith('/') || word == ".:");
  }
  return words.Count() == 2 && IsSame(word, "Directory") && words.At(1).endsWith(']');
}

}  // namespace

bool IsHeading(const ListWords& words) {
  const QByteArrayView line = WithoutOuterBlanks(words.Line());
  if (line.isEmpty() || IsRule(line) || IsTotal(words) || IsSummary(words) || IsColumnTitles(words) ||
      IsFolderHeading(words)) {
    return true;
  }
  // What a server means for the control connection.
  if (line.startsWith("226 ") || line.startsWith("150 ")) {
    return true;
  }
  return std::any_of(kBeginnings.begin(), kBeginnings.end(),
                     [line](QByteArrayView beginning) { return BeginsWith(line, beginning); });
}

bool TellsEmpty(QByteArrayView line) {
  QByteArrayView text = WithoutOuterBlanks(line);
  while (text.endsWith('.') || text.endsWith('!')) {
    text.chop(1);
  }
  return IsOneOf(text, kEmpty);
}

}  // namespace trevane::ftp
