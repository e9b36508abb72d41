#include "views/navigation/FolderFilling.h"

#include "views/addresses/NodeTags.h"
#include "views/list/FileListModel.h"
#include "views/navigation/DisplayRequests.h"
#include "views/navigation/ListFiller.h"
#include "views/navigation/NavigatorListener.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace trevane {

void FolderFilling::Discard() {
  if (!treeBatch_) {
    return;
  }
  Flush();
  parts_.list.Clear();
  treeBatch_.reset();
  gauge_.reset();
  batches_.clear();
  respellings_.clear();
  messages_.clear();
  count_ = 0;
  reserved_ = 0;
  added_ = 0;
}

void FolderFilling::Begin(const QString& name, bool onController) {
  Discard();
  name_ = name;
  onController_ = onController;
  treeBatch_.emplace(parts_.tree, node_);
  clock_ = FlushClock();
}

bool FolderFilling::Add(Listing&& entries) {
  const bool isFirst = batches_.empty();
  if (!isFirst && !gauge_) {
    // There is more to come: what was read is painted meanwhile.
    parts_.listener.LetEventsRun();
    cancelled_ = cancelled_ || IsCancelled();
  }
  if (cancelled_) {
    return false;
  }
  count_ += static_cast<qsizetype>(entries.size());
  batches_.push_back(std::move(entries));
  Reserve();
  UpdateGauge();
  // Not by reference: a turn of the events adds no batch, but need not be trusted with that.
  const size_t batch = batches_.size() - 1;
  for (size_t i = 0; i < batches_[batch].size(); ++i) {
    AddEntry(batches_[batch][i]);
    ++added_;
    if (!gauge_) {
      continue;
    }
    parts_.files.Prompts().Gauge().IncrementGageValue(QStringLiteral("Display ") + batches_[batch][i].name);
    if (clock_.IsDue()) {
      Flush();
    }
    parts_.listener.LetEventsRun();
    if (IsCancelled()) {
      cancelled_ = true;
      return false;
    }
  }
  if (isFirst || clock_.IsDue()) {
    Flush();
  }
  return true;
}

void FolderFilling::Finish() {
  Flush();
  if (!cancelled_ && !parts_.requests.IsCancelled() && treeBatch_) {
    parts_.builder.Respell(node_, std::move(respellings_), batches_);
  }
}

void FolderFilling::ShowMessages() {
  for (const Message& message : std::exchange(messages_, {})) {
    if (IsCancelled()) {
      return;
    }
    parts_.files.Prompts().ShowMessage(message);
  }
}

bool FolderFilling::IsCancelled() const {
  return parts_.requests.IsCancelled() || (gauge_ && parts_.files.Prompts().IsCancelled());
}

void FolderFilling::Reserve() {
  if (count_ > reserved_) {
    // Room for a few more each time would move all items each time.
    reserved_ = batches_.size() == 1 ? count_ : std::max(count_, reserved_ * 2);
    parts_.list.Reserve(reserved_);
  }
}

void FolderFilling::UpdateGauge() {
  if (count_ < FolderDisplay::kGaugeFrom) {
    return;
  }
  ProgressGauge& gauge = parts_.files.Prompts().Gauge();
  const bool isNew = !gauge_;
  if (isNew) {
    gauge_.emplace(gauge);
    gauge.ShowGage(QStringLiteral("Display Folder:") + name_);
  }
  gauge.SetGageMax(static_cast<qint32>(std::min<qsizetype>(count_, std::numeric_limits<qint32>::max() - 1)));
  if (isNew) {
    gauge.CancelEnable(true);
    // Those of earlier batches.
    for (qsizetype i = 0; i < added_; ++i) {
      gauge.IncrementGageValue(QString());
    }
  }
}

void FolderFilling::AddEntry(const FileEntry& entry) {
  if (entry.IsFolder()) {
    parts_.builder.UpdateFolderNode(node_, entry, onController_, respellings_);
  }
  if (!IsShownInList(entry.attributes)) {
    return;
  }
  if (entry.IsFolder() || !parts_.listener.IsFilteredOut(entry.name)) {
    if (std::optional<Message> message = parts_.filler.AddFileItem(entry, onController_)) {
      messages_.push_back(*std::move(message));
    }
  }
}

void FolderFilling::Flush() {
  parts_.tree.FlushBatch();
  parts_.list.FlushStaged();
  clock_.Flushed();
}

}  // namespace trevane
