#include "engine/transfer/CopiedLink.h"

#include "base/RunTimeError.h"
#include "engine/transfer/OpenedObjects.h"
#include "engine/transfer/OverlapGuard.h"
#include "engine/transfer/TransferSteps.h"

#include <QStringList>

#include <utility>

namespace trevane {

namespace {

constexpr qint32 kWriteFault = error::kWin32Error + 29;

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

LinkCopy::LinkCopy(IxoFile& source, std::shared_ptr<IxoFile> folder, const QString& name, qsizetype depth)
    : source_(source), folder_(std::move(folder)), name_(name), depth_(depth) {}

LinkCopy::Outcome LinkCopy::LeaveOut(const QString& reason) {
  reason_ = reason;
  return Outcome::LeftOut;
}

LinkCopy::Outcome LinkCopy::Make() {
  const std::optional<QString> text = source_.LinkText();
  if (!text) {
    return LeaveOut(ReasonFor(source_));
  }
  if (!StaysInside(*text, depth_)) {
    return LeaveOut(QStringLiteral("The link leads out of what is copied"));
  }
  text_ = *text;
  return Create();
}

LinkCopy::Outcome LinkCopy::Create() {
  try {
    folder_->CreateLink(name_, text_);
    isNew_ = true;
  } catch (const RunTimeError& failure) {
    if (failure.Number() == error::kNotSupported) {
      return LeaveOut(QStringLiteral("No links can be made there"));
    }
    if (failure.Number() != error::kExists) {
      throw;
    }
    const auto there = FindChild(*folder_, name_);
    if (!there) {
      throw;
    }
    OpenedObjects opened;
    opened.Remember(folder_, there);
    if ((there->Attribute() & attribute::kLink) == 0) {
      return LeaveOut(QStringLiteral("An item of another kind has its name"));
    }
    return there->LinkText() == text_ ? Outcome::Made : Outcome::OtherLink;
  }
  RequireMade();
  return Outcome::Made;
}

void LinkCopy::RequireMade() {
  const auto link = FindChild(*folder_, name_);
  std::optional<QString> text;
  if (link) {
    OpenedObjects opened;
    opened.Remember(folder_, link);
    text = (link->Attribute() & attribute::kLink) != 0 ? link->LinkText() : std::nullopt;
  }
  if (text != text_) {
    throw RunTimeError(kWriteFault, QStringLiteral("The link has not arrived: %1").arg(name_));
  }
}

LinkCopy::Outcome LinkCopy::Replace() {
  std::optional<QString> old;
  // Another program may have replaced it while the question was open.
  if (const auto there = FindChild(*folder_, name_)) {
    OpenedObjects opened;
    opened.Remember(folder_, there);
    if ((there->Attribute() & attribute::kLink) == 0) {
      return LeaveOut(QStringLiteral("An item of another kind has its name"));
    }
    OverlapGuard::RefuseSame(source_, *there, name_);
    old = there->LinkText();
    if (!old) {
      return LeaveOut(QStringLiteral("The link that has its name cannot be read"));
    }
    there->DeleteAlone();
  }
  try {
    const Outcome outcome = Create();
    isNew_ = isNew_ && !old;
    if (outcome != Outcome::OtherLink) {
      if (outcome == Outcome::LeftOut && old) {
        PutBack(*old, RunTimeError(error::kNotSupported, reason_));
      }
      return outcome;
    }
  } catch (const RunTimeError& failure) {
    if (old) {
      PutBack(*old, failure);
    }
    throw;
  }
  return LeaveOut(QStringLiteral("Another link has taken its name"));
}

void LinkCopy::PutBack(const QString& text, const RunTimeError& failure) {
  try {
    if (folder_->HasLostLine()) {
      throw failure;
    }
    folder_->CreateLink(name_, text);
  } catch (const RunTimeError& notPutBack) {
    if (notPutBack.Number() != error::kExists) {
      throw RunTimeError(failure.Number(),
                         QStringLiteral("%1. The link %2 led to %3, and is not there any more")
                             .arg(failure.Description(), name_, text));
    }
  }
}

}  // namespace trevane
