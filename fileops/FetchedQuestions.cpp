#include "fileops/FetchedQuestions.h"

#include "base/DisplayText.h"
#include "base/LowerCase.h"
#include "base/RunTimeError.h"
#include "engine/controllers/EventLog.h"
#include "engine/items/clsIxoFile.h"
#include "fileops/OperationGuard.h"
#include "fileops/OperationHost.h"
#include "prompts/ShowFailure.h"
#include "views/addresses/Addresses.h"
#include "views/navigation/Navigator.h"

#include <QDir>
#include <QStringList>

#include <algorithm>
#include <memory>
#include <utility>

namespace trevane {

namespace {

QString NameOf(const FetchedRecord& record) {
  return DisplayText(LastPiece(record.path));
}

/// Enter means No: the question comes by itself, and something else may just be typed.
bool AskYesNo(UserPrompts& prompts, const QString& question) {
  return prompts.ShowMessage({.text = question,
                              .icon = PromptIcon::Question,
                              .buttons = PromptButtons::YesNo,
                              .defaultAnswer = PromptAnswer::No}) == PromptAnswer::Yes;
}

bool IsChanged(const FetchedFiles::Kept& kept) {
  return kept.why == FetchedFiles::Kept::Why::Changed;
}

QString LineOf(const FetchedFiles::Kept& kept) {
  using Why = FetchedFiles::Kept::Why;
  const QString name = DisplayText(kept.name);
  if (kept.why == Why::Unknown) {
    return QStringLiteral("%1 (it is not known where it belongs): %2").arg(name, kept.folder);
  }
  const QString line = QStringLiteral("%1 (%2): %3").arg(name, DisplayText(kept.controller), kept.folder);
  if (kept.why == Why::Changed) {
    return line;
  }
  return kept.beside.isEmpty() ? line + QStringLiteral(", still open")
                               : line + QStringLiteral(", still open, or beside it is unsaved work: ") +
                                     DisplayText(kept.beside.join(QStringLiteral(", ")));
}

}  // namespace

FetchedQuestions::FetchedQuestions(const OperationParts& parts, OperationGuard& guard, FetchedFiles& fetched,
                                   std::function<bool()> isBusy, std::function<void()> refresh)
    : parts_(parts),
      guard_(guard),
      fetched_(fetched),
      isBusy_(std::move(isBusy)),
      refresh_(std::move(refresh)) {
  connect(&fetched_, &FetchedFiles::ToBeAsked, this, &FetchedQuestions::AskNext);
}

bool FetchedQuestions::IsYes(const QString& question) {
  return AskYesNo(parts_.files.Prompts(), question);
}

void FetchedQuestions::AskNext() {
  if (isBusy_()) {
    return;
  }
  const FetchedFiles::File file = fetched_.NextToAsk();
  if (!file) {
    return;
  }
  guard_.Run(
      [&] {
        const std::shared_ptr<void> command = parts_.host.BeginCommand();
        Ask(file);
      },
      true);
}

void FetchedQuestions::Ask(const FetchedFiles::File& file) {
  // At one address there may be another machine today: what belongs elsewhere is not offered.
  if (file->IsOffered() && fetched_.IsOfAnotherMachine(file->Record())) {
    file->WasAsked(file->Content());
    return;
  }
  if (parts_.files.Prompts().IsEnding()) {
    return;
  }
  const QString question =
      file->IsOffered()
          ? QStringLiteral(
                "'%1' of '%2' was changed on this computer and is not put back yet. Put it back now?")
          : QStringLiteral("'%1' of '%2' was changed on this computer. Put it back?");
  // It may be changed once more while the question stands there.
  const QByteArray content = file->Content();
  const bool isWanted =
      IsYes(question.arg(NameOf(file->Record()), DisplayText(fetched_.ControllerOf(file->Record()))));
  if (parts_.files.Prompts().IsEnding()) {
    return;
  }
  file->WasAsked(content);
  if (isWanted) {
    PutBack(*file, content);
  }
}

void FetchedQuestions::PutBack(FetchedFile& file, const QByteArray& content) {
  using Result = FetchedFiles::PutBackResult;
  const QString address = fetched_.AddressOf(file.Record());
  const QString name = NameOf(file.Record());
  parts_.host.SetBusyPointer(true);
  try {
    const Result result = fetched_.PutBack(file, content, [&] {
      return IsYes(QStringLiteral("'%1' was changed on '%2', too, since it was fetched. Replace it?")
                       .arg(name, DisplayText(fetched_.ControllerOf(file.Record()))));
    });
    if (result == Result::Done) {
      parts_.log.LogEvent(QStringLiteral("COPY"), QDir::toNativeSeparators(file.Path()),
                          AddressToEnginePath(address));
      ShowAnew(address);
    }
  } catch (const RunTimeError& failure) {
    const QString reason = ReasonOf(failure.Number(), failure.Description()) +
                           QStringLiteral("\nThe changed file is kept: ") +
                           QDir::toNativeSeparators(file.Path());
    ShowFailure(parts_.files.Prompts(), parts_.host, QStringLiteral("Failed to put the file back."),
                {.item = name, .reason = reason});
  }
  parts_.host.SetBusyPointer(false);
}

void FetchedQuestions::ShowAnew(const QString& address) {
  const QString folder = address.left(address.lastIndexOf(kAddressSeparator));
  if (!parts_.files.Prompts().IsEnding() && EqualIgnoringCase(parts_.navigator.CurrentAddress(), folder)) {
    refresh_();
  }
}

void FetchedQuestions::End() {
  kept_ = fetched_.End();
}

void FetchedQuestions::NameKept() {
  constexpr size_t kMostNamed = 10;
  if (kept_.empty()) {
    return;
  }
  QStringList lines;
  for (size_t i = 0; i < std::min(kept_.size(), kMostNamed); ++i) {
    lines += LineOf(kept_[i]);
  }
  if (kept_.size() > kMostNamed) {
    lines += QStringLiteral("and %1 more").arg(kept_.size() - kMostNamed);
  }
  const bool hasChanged = std::ranges::any_of(kept_, IsChanged);
  if (std::ranges::all_of(kept_, IsChanged)) {
    lines += QStringLiteral("They are kept there, and offered again when their controllers are connected.");
  } else if (hasChanged) {
    lines += QStringLiteral(
        "They are kept there. What was changed is offered again when its controller is connected.");
  } else {
    lines += QStringLiteral("They are kept there.");
  }
  parts_.files.Prompts().ShowMessage(
      {.text = hasChanged ? QStringLiteral("Files that were changed on this computer are not put back.")
                          : QStringLiteral("Files that may hold changes are still on this computer."),
       .icon = PromptIcon::Exclamation,
       .informativeText = lines.join(u'\n'),
       .isLastWord = true});
}

void RunFetched(FetchedFiles& fetched, clsIxoFile& file, UserPrompts& prompts) {
  const FetchedFiles::File copy = fetched.CopyOf(file);
  if (copy) {
    copy->LookNow();
  }
  if (copy && copy->MayBeChanged()) {
    const bool isWanted = AskYesNo(
        prompts, QStringLiteral("'%1' was changed on this computer and is not put back. Open the changed "
                                "file? No opens the one on the controller.")
                     .arg(NameOf(copy->Record())));
    if (prompts.IsEnding()) {
      return;
    }
    if (isWanted) {
      fetched.Open(*copy);
      return;
    }
  }
  fetched.Run(file);
}

}  // namespace trevane
