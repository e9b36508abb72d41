#include "engine/providers/network/SecretDesk.h"

#include "base/RunTimeError.h"
#include "engine/providers/network/SecretMemory.h"
#include "engine/remote/CallControl.h"
#include "platform/SecretStore.h"
#include "prompts/UserPrompts.h"

#include <algorithm>
#include <utility>

namespace trevane {

SecretDesk::SecretDesk(QString title, std::shared_ptr<SecretMemory> memory, SecretStore* store,
                       CallControl* control)
    : title_(std::move(title)), memory_(std::move(memory)), store_(store), control_(control) {}

SecretDesk::Given* SecretDesk::Find(const QString& account) {
  const auto found = std::find_if(given_.begin(), given_.end(),
                                  [&account](const Given& given) { return given.account == account; });
  return found == given_.end() ? nullptr : &*found;
}

void SecretDesk::Drop(const QString& account) {
  std::erase_if(given_, [&account](const Given& given) { return given.account == account; });
}

std::optional<Secret> SecretDesk::Get(const Request& request) {
  if (!request.account.isEmpty() && memory_ && !refused_.contains(request.account)) {
    if (std::optional<Secret> typed = memory_->Find(request.account)) {
      neededTheUser_ = true;
      return typed;
    }
  }
  return Ask(request);
}

std::optional<Secret> SecretDesk::Ask(const Request& request) {
  if (control_ == nullptr) {
    return std::nullopt;
  }
  const bool canBeKept = !request.account.isEmpty();
  const bool mayBeStored = canBeKept && store_ != nullptr && !refused_.contains(request.account);
  SecretQuestion question;
  question.title = title_;
  question.prompt = request.prompt;
  question.informativeText = request.informativeText;
  question.isHidden = request.isHidden;
  question.offersRemember = canBeKept;
  std::optional<Secret> stored;
  std::optional<SecretAnswer> answer;
  // The store belongs to the window's thread, too, and may ask for its own password there.
  const bool wasAsked = control_->AskUser([&](UserPrompts& prompts) {
    if (mayBeStored) {
      stored = store_->Find(request.account);
    }
    if (stored) {
      return;
    }
    if (canBeKept) {
      const SecretStore::Condition condition =
          store_ != nullptr
              ? store_->Look()
              : SecretStore::Condition{false, QStringLiteral("This system has no password store.")};
      question.whyNotRemember = condition.isReady ? QString() : condition.whyNot;
    }
    answer = prompts.AskSecret(question);
  });
  if (!wasAsked && !control_->IsCancelled()) {
    return std::nullopt;
  }
  if (stored) {
    return stored;
  }
  if (!wasAsked || !answer) {
    throw RunTimeError(error::kCancelled, QStringLiteral("Cancelled"));
  }
  neededTheUser_ = true;
  ++typed_;
  if (canBeKept) {
    // The last of several is the one that counts.
    Drop(request.account);
    given_.push_back({request.account, answer->secret, answer->remember});
  }
  return std::move(answer->secret);
}

void SecretDesk::Refuse(const QString& account) {
  if (account.isEmpty()) {
    return;
  }
  Drop(account);
  if (memory_) {
    memory_->Forget(account);
  }
  if (!refused_.contains(account)) {
    refused_.append(account);
    if (store_ != nullptr && control_ != nullptr) {
      // Kept wrong ones lock users out, one attempt at a time.
      static_cast<void>(
          control_->AskUser([this, &account](UserPrompts& /*prompts*/) { store_->Forget(account); }));
    }
  }
}

void SecretDesk::LeftUnanswered(const QString& account) {
  if (!account.isEmpty() && memory_ && memory_->NoteUnanswered(account)) {
    Refuse(account);
  }
}

void SecretDesk::Accept(const QString& account) {
  if (memory_) {
    memory_->NoteAnswered(account);
  }
  if (Given* const given = Find(account)) {
    given->isAccepted = true;
    if (memory_) {
      memory_->Keep(account, given->secret);
    }
  }
}

void SecretDesk::StoreRemembered() {
  std::erase_if(given_, [](const Given& given) { return !given.isAccepted || !given.remember; });
  if (given_.empty() || store_ == nullptr || control_ == nullptr) {
    given_.clear();
    return;
  }
  static_cast<void>(control_->AskUser([this](UserPrompts& prompts) {
    for (const Given& given : given_) {
      try {
        store_->Keep(given.account, given.secret);
      } catch (const RunTimeError& failure) {
        prompts.ShowMessage({.text = QStringLiteral("The secret could not be remembered."),
                             .icon = PromptIcon::Exclamation,
                             .title = title_,
                             .informativeText = failure.Description()});
      }
    }
  }));
  given_.clear();
}

}  // namespace trevane
