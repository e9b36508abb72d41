#include "engine/transfer/CopiedLink.h"

#include "base/RunTimeError.h"
#include "engine/transfer/OpenedObjects.h"
#include "engine/transfer/TransferSteps.h"

#include <QStringList>

namespace trevane {

namespace {

constexpr qint32 kWriteFault = error::kWin32Error + 29;

std::optional<QString> LinkTextOf(const std::shared_ptr<IxoFile>& folder, const QString& name) {
  const auto link = FindChild(*folder, name);
  if (!link) {
    return std::nullopt;
  }
  OpenedObjects opened;
  opened.Remember(folder, link);
  return (link->Attribute() & attribute::kLink) != 0 ? link->LinkText() : std::nullopt;
}

/// Why a link that nothing more is known of is not copied.
QString ReasonFor(IxoFile& link) {
  if ((link.Attribute() & attribute::kFolder) != 0) {
    return QStringLiteral("A link to a folder is not copied");
  }
  return link.LeadsNowhere() ? QStringLiteral("The link leads nowhere")
                             : QStringLiteral("A link to a file is not copied");
}

}  // namespace

bool StaysInside(const QString& text, qsizetype depth) {
  QString path = text;
  path.replace(u'\\', u'/');
  // A colon is that of a drive.
  if (depth < 0 || path.isEmpty() || path.startsWith(u'/') || path.contains(u':')) {
    return false;
  }
  for (const QString& piece : path.split(u'/', Qt::SkipEmptyParts)) {
    if (piece == u"..") {
      if (--depth < 0) {
        return false;
      }
    } else if (piece != u".") {
      ++depth;
    }
  }
  return true;
}

std::optional<QString> CopyLink(IxoFile& source, const std::shared_ptr<IxoFile>& folder, const QString& name,
                                qsizetype depth) {
  const std::optional<QString> text = source.LinkText();
  if (!text) {
    return ReasonFor(source);
  }
  if (!StaysInside(*text, depth)) {
    return QStringLiteral("The link leads out of what is copied");
  }
  try {
    folder->CreateLink(name, *text);
  } catch (const RunTimeError& failure) {
    if (failure.Number() == error::kNotSupported) {
      return QStringLiteral("No links can be made there");
    }
    if (failure.Number() != error::kExists || LinkTextOf(folder, name) != text) {
      throw;
    }
    return std::nullopt;
  }
  if (LinkTextOf(folder, name) != text) {
    throw RunTimeError(kWriteFault, QStringLiteral("The link has not arrived: %1").arg(name));
  }
  return std::nullopt;
}

}  // namespace trevane
