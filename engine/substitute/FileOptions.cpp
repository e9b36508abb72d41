#include "engine/substitute/FileOptions.h"

#include "base/RunTimeError.h"

#include <QList>
#include <QStringView>

namespace trevane {

namespace {

constexpr QStringView kPath = u"Path=";

/// Applies one option other than "Path="; false when it is none that is known.
bool Apply(QStringView text, FileOptions& options) {
  const auto is = [text](QStringView known) { return text.compare(known, Qt::CaseInsensitive) == 0; };
  if (is(u"@Create=1")) {
    options.create = FileOptions::Create::File;
  } else if (is(u"@Create=2")) {
    options.create = FileOptions::Create::Folder;
  } else if (is(u"OverWrite=True")) {
    options.overWrite = true;
  } else if (is(u"OverWrite=False")) {
    options.overWrite = false;
  } else {
    return false;
  }
  return true;
}

[[noreturn]] void RefuseOption(const QString& option) {
  throw RunTimeError(error::kInvalidParameter, QStringLiteral("The option is not known: '%1'").arg(option));
}

}  // namespace

FileOptions ParseFileOptions(const QString& option) {
  FileOptions options;
  if (option.isEmpty()) {
    return options;
  }
  if (!option.startsWith(kPath, Qt::CaseInsensitive)) {
    for (const QStringView text : QStringView(option).split(u',')) {
      if (!text.isEmpty() && !Apply(text, options)) {
        RefuseOption(option);
      }
    }
    return options;
  }
  QStringView folder = QStringView(option).mid(kPath.size());
  if (folder.endsWith(u',')) {
    // The list of further options is empty: all else is the folder, whatever it looks like.
    folder.chop(1);
  } else {
    for (qsizetype comma = folder.lastIndexOf(u','); comma >= 0; comma = folder.lastIndexOf(u',')) {
      if (!Apply(folder.mid(comma + 1), options)) {
        break;
      }
      folder.truncate(comma);
    }
  }
  options.folder = folder.toString();
  return options;
}

std::optional<QString> ParsePathOption(const QString& option) {
  if (option.isEmpty()) {
    return std::nullopt;
  }
  if (!option.startsWith(kPath, Qt::CaseInsensitive)) {
    RefuseOption(option);
  }
  return option.mid(kPath.size());
}

}  // namespace trevane
