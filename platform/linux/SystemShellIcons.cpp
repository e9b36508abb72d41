#include "platform/SystemShellIcons.h"

#include <QMimeDatabase>
#include <QMimeType>

namespace trevane {
namespace {

// A folder can hold any number of different extensions; what is remembered has a bound.
constexpr qsizetype kMostKnown = 2048;

QStringList Distinct(const QStringList& names) {
  QStringList distinct;
  for (const QString& name : names) {
    if (!name.isEmpty() && !distinct.contains(name)) {
      distinct += name;
    }
  }
  return distinct;
}

}  // namespace

// The MIME database, and a number for each list of icon names.
class SystemShellIcons::Source {
 public:
  ShellIcon Icon(const QStringList& themeNames) {
    ShellIcon icon;
    icon.themeNames = themeNames;
    const auto known = indexes_.constFind(themeNames);
    icon.index = known != indexes_.constEnd() ? *known : static_cast<qint32>(indexes_.size()) + 1;
    indexes_.insert(themeNames, icon.index);
    return icon;
  }

  ShellFileInfo File(const QString& probe) {
    // The name alone decides: MatchExtension opens no file.
    const QString name = QStringLiteral("file") + probe.toLower();
    const QMimeType type = database_.mimeTypeForFile(name, QMimeDatabase::MatchExtension);
    const bool isNameless = probe.size() <= 1;
    if (isNameless || !type.isValid() || type.isDefault()) {
      const QString typeName = isNameless ? QStringLiteral("File") : QString();
      return {Icon({QStringLiteral("unknown"), QStringLiteral("application-octet-stream"),
                    QStringLiteral("text-x-generic")}),
              typeName};
    }
    return {Icon(Distinct({type.iconName(), type.genericIconName(), QStringLiteral("text-x-generic"),
                           QStringLiteral("unknown")})),
            type.comment()};
  }

 private:
  QMimeDatabase database_;
  QHash<QStringList, qint32> indexes_;
};

SystemShellIcons::SystemShellIcons() = default;
SystemShellIcons::~SystemShellIcons() = default;

std::optional<ShellFileInfo> SystemShellIcons::ForExtension(const QString& probe) {
  const auto known = known_.constFind(probe);
  if (known != known_.constEnd()) {
    return *known;
  }
  if (source_ == nullptr) {
    source_ = std::make_unique<Source>();
  }
  const ShellFileInfo info = source_->File(probe);
  if (known_.size() >= kMostKnown) {
    known_.clear();
  }
  known_.insert(probe, info);
  return info;
}

std::optional<ShellFileInfo> SystemShellIcons::ForFolder(bool open) {
  if (source_ == nullptr) {
    source_ = std::make_unique<Source>();
  }
  QStringList names{QStringLiteral("folder")};
  if (open) {
    names.prepend(QStringLiteral("folder-open"));
  }
  return ShellFileInfo{source_->Icon(names), QStringLiteral("Folder")};
}

}  // namespace trevane
