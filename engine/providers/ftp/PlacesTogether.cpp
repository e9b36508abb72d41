#include "engine/providers/ftp/PlacesTogether.h"

#include "engine/files/RawPutBack.h"
#include "engine/providers/ftp/FtpErrors.h"

namespace trevane::ftp {

bool PlacesTogether::IsPossible() {
  const Capabilities& can = server_.Can();
  const bool looksAtOnce = can.mlst == Seen::Works || (can.mlst == Seen::Refused && can.size == Seen::Works);
  return looksAtOnce && can.rename == Seen::Works && can.sawRename && server_.TakesTogether();
}

bool PlacesTogether::AsksFacts() const {
  const Capabilities& can = server_.Can();
  return !can.refusesTaken && can.mlst != Seen::Refused;
}

bool PlacesTogether::AsksSize() const {
  const Capabilities& can = server_.Can();
  return !can.refusesTaken && can.size == Seen::Works;
}

bool PlacesTogether::IsFree(const Place& target, const std::vector<Reply>& replies, std::size_t& at) const {
  constexpr int kNothingThere = 550;
  bool isFree = true;
  bool isSure = !AsksFacts();
  if (AsksFacts()) {
    const Reply& facts = replies[at++];
    const qint32 number = NumberOf(facts, target.path);
    isSure = facts.code >= 400 && number == error::kNotFound;
    // Some do not say why they tell nothing.
    isFree = isSure || (facts.code == kNothingThere && number == providererror::kGeneralFailure);
  }
  if (AsksSize()) {
    // A folder is not replaced, so it need not be told from what is missing.
    const bool hasNoSize = replies[at++].code == kNothingThere;
    isFree = isFree && hasNoSize;
    isSure = isSure || hasNoSize;
  }
  return isFree && isSure;
}

QByteArrayList PlacesTogether::Before(const File& file) const {
  QByteArrayList commands = file.traits;
  if (AsksFacts()) {
    commands << "MLST " + file.target.path;
  }
  if (AsksSize()) {
    commands << "SIZE " + file.target.path;
  }
  // At the end: some servers take nothing but RNTO behind it.
  commands << "RNFR " + file.built.path;
  return commands;
}

bool PlacesTogether::IsReady(const File& file, const std::vector<Reply>& replies, std::size_t at) {
  bool isReady = true;
  for (qsizetype i = 0; i < file.traits.size(); ++i) {
    isReady = replies[at++].IsDone() && isReady;
  }
  isReady = IsFree(file.target, replies, at) && isReady;
  const bool isKnown = replies[at].IsMore();
  if (isKnown && !isReady) {
    GiveUpRename(file);
  }
  return isKnown && isReady;
}

void PlacesTogether::GiveUpRename(const File& file) {
  // Some servers take no other command until it has come, and a file is not harmed by its own name.
  const RawPutBack putBack(raw_);
  static_cast<void>(server_.Line().Command("RNTO " + file.built.path));
}

void PlacesTogether::GiveUpIfBegun(const File& file) noexcept {
  try {
    GiveUpRename(file);
  } catch (...) {
    // The line is gone, and what it had begun.
  }
}

bool PlacesTogether::HasItsName(const File& file) noexcept {
  const RawPutBack putBack(raw_);
  try {
    return !raw_.Find(file.built.text) && raw_.Find(file.target.text).has_value();
  } catch (...) {
    return false;
  }
}

PlacesTogether::Outcome PlacesTogether::Run(const std::vector<File>& files) {
  Outcome outcome;
  for (const File& file : files) {
    // What was listed is older than the renames before.
    raw_.Forget(file.target);
  }
  std::size_t& placed = outcome.placed;
  bool isRenaming = false;
  try {
    bool isReady = IsReady(files.front(), server_.Line().Together(Before(files.front())), 0);
    while (isReady) {
      const File& file = files[placed];
      const File* const next = placed + 1 < files.size() ? &files[placed + 1] : nullptr;
      QByteArrayList commands{"RNTO " + file.target.path};
      if (next != nullptr) {
        commands << Before(*next);
      }
      isRenaming = true;
      const std::vector<Reply> replies = server_.Line().Together(commands);
      if (!replies.front().IsDone()) {
        if (next != nullptr && replies.back().IsMore()) {
          GiveUpRename(*next);
        }
        raw_.EndRename(file.built, file.target, replies.front());
      }
      isRenaming = false;
      ++placed;
      isReady = next != nullptr && IsReady(*next, replies, 1);
    }
  } catch (const RunTimeError& failure) {
    if (isRenaming) {
      // A cancel may have come before it was sent.
      GiveUpIfBegun(files[placed]);
    }
    if (isRenaming && HasItsName(files[placed])) {
      ++placed;
    } else {
      outcome.failure = failure;
    }
  }
  return outcome;
}

}  // namespace trevane::ftp
