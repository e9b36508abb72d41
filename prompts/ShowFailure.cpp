#include "prompts/ShowFailure.h"

#include "base/RunTimeError.h"

#include <QStringList>

#include <algorithm>
#include <new>

namespace trevane {

namespace {

QString FirstLine(const QString& text) {
  const auto isEnd = [](QChar unit) { return unit == u'\n' || unit == u'\r'; };
  const QString trimmed = text.trimmed();
  return trimmed.left(std::find_if(trimmed.begin(), trimmed.end(), isEnd) - trimmed.begin());
}

}  // namespace

QString ReasonOf(const std::exception& failure) {
  if (const auto* error = dynamic_cast<const RunTimeError*>(&failure)) {
    return ReasonOf(error->Number(), error->Description());
  }
  if (dynamic_cast<const std::bad_alloc*>(&failure) != nullptr) {
    return QStringLiteral("There is not enough memory");
  }
  return QString::fromUtf8(failure.what());
}

QString ReasonOf(qint32 number, const QString& text) {
  // Where it was cancelled is of no interest to the one who did it.
  return number == error::kCancelled ? QStringLiteral("Cancelled.") : text;
}

Message FailureMessage(const QString& text, const Failure& failure, PromptIcon icon) {
  QStringList lines;
  if (!failure.item.isEmpty()) {
    lines += failure.item;
  }
  if (!failure.reason.isEmpty() && failure.reason != text) {
    lines += failure.reason;
  }
  return {.text = text, .icon = icon, .informativeText = lines.join(u'\n')};
}

void ShowFailure(UserPrompts& prompts, ReasonLine& line, const QString& text, const Failure& failure) {
  if (const QString first = FirstLine(failure.reason); !first.isEmpty()) {
    line.ShowReason(first);
  }
  prompts.ShowMessage(FailureMessage(text, failure));
}

}  // namespace trevane
