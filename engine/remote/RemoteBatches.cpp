#include "engine/remote/RemoteBatches.h"

#include "engine/files/ProviderError.h"
#include "engine/model/BatchWatch.h"
#include "engine/remote/Delivery.h"

#include <QSet>

#include <algorithm>
#include <iterator>
#include <type_traits>
#include <utility>

namespace trevane::remotebatches {

using Kind = RemoteConnection::Kind;
using Task = RemoteConnection::Task;

namespace {

/// Closes a delivery also when the call fails.
template <class Item>
class Closing final {
 public:
  Closing() = default;
  ~Closing() {
    if (delivery_) {
      try {
        delivery_->Close(false);
      } catch (...) {
        // The call's own failure is under way.
      }
    }
  }
  Closing(const Closing&) = delete;
  Closing& operator=(const Closing&) = delete;

  void Set(std::shared_ptr<Delivery<Item>> delivery) {
    if (delivery_) {
      delivery_->Close(false);
    }
    delivery_ = std::move(delivery);
  }
  [[nodiscard]] Delivery<Item>& Get() const { return *delivery_; }

 private:
  std::shared_ptr<Delivery<Item>> delivery_;
};

/// Runs a batch. The watch of the window's thread is told of each file that the controller's has done, for
/// all calls of a batch together: a file that is done once more over a new connection is not told again.
class WatchedRun final {
 public:
  WatchedRun(RemoteConnection& connection, const RemoteConnection::Purpose& purpose)
      : connection_(connection), purpose_(purpose), receive_(BatchWatch::Current()) {}

  template <class Work>
  auto Run(Kind kind, const Work& work) -> std::invoke_result_t<Work, Workbench&> {
    if (!receive_) {
      return connection_.Run(kind, purpose_, work);
    }
    using Answer = std::invoke_result_t<Work, Workbench&>;
    const BatchStep before = told_;
    const Delivery<BatchStep>::Receiver hand = [this, &before](BatchStep&& done) {
      Tell({before.files + done.files, before.bytes + done.bytes});
      return true;
    };
    Closing<BatchStep> closing;
    // One for each attempt, as for every call.
    std::shared_ptr<std::optional<Answer>> answer;
    connection_.RunTask(kind, purpose_, [&](RunningCall& call) {
      answer = std::make_shared<std::optional<Answer>>();
      const auto delivery = std::make_shared<Delivery<BatchStep>>(call, hand, true);
      closing.Set(delivery);
      return Task([answer, work, delivery](Workbench& bench) {
        BatchStep done;
        const BatchWatch watch([&](const BatchStep& step) {
          done.files += step.files;
          done.bytes += step.bytes;
          delivery->Put(BatchStep(done));
        });
        answer->emplace(work(bench));
      });
    });
    closing.Get().Close(true);
    return *std::move(*answer);
  }

 private:
  void Tell(const BatchStep& done) {
    if (done.files > told_.files) {
      const BatchStep step{done.files - told_.files, std::max<qint64>(done.bytes - told_.bytes, 0)};
      told_ = done;
      receive_(step);
    }
  }

  RemoteConnection& connection_;
  const RemoteConnection::Purpose& purpose_;
  const BatchWatch::Receiver receive_;
  BatchStep told_;
};

}  // namespace

void List(RemoteConnection& connection, const RemoteConnection::Purpose& purpose,
          const ListingReceiver& receive,
          const std::function<void(Workbench& bench, const ListingReceiver& receiver)>& work) {
  QSet<QString> seen;
  bool isRepeated = false;
  const Delivery<Listing>::Receiver hand = [&](Listing&& batch) {
    if (isRepeated) {
      std::erase_if(batch, [&seen](const FileEntry& entry) { return seen.contains(entry.name); });
    }
    for (const FileEntry& entry : batch) {
      seen.insert(entry.name);
    }
    return receive(std::move(batch));
  };
  Closing<Listing> closing;
  int attempts = 0;
  try {
    connection.RunTask(Kind::Reading, purpose, [&](RunningCall& call) {
      isRepeated = ++attempts > 1;
      const auto delivery = std::make_shared<Delivery<Listing>>(call, hand, false);
      closing.Set(delivery);
      return Task([delivery, work, control = connection.Link()->Control()](Workbench& bench) {
        work(bench, [&delivery, &control](Listing&& batch) {
          control->Alive();
          delivery->Put(std::move(batch));
          return !control->IsCancelled();
        });
      });
    });
  } catch (const RunTimeError&) {
    if (attempts > 0 && closing.Get().HasEnded()) {
      // The receiver ended it. What it has thrown comes first.
      closing.Get().Close(false);
      return;
    }
    throw;
  }
  closing.Get().Close(true);
}

std::vector<ReadResult> Read(
    RemoteConnection& connection, const RemoteConnection::Purpose& purpose, const QStringList& names,
    const std::function<std::vector<ReadResult>(Workbench& bench, const QStringList& some)>& work) {
  WatchedRun watched(connection, purpose);
  std::vector<ReadResult> results =
      watched.Run(Kind::Reading, [work, names](Workbench& bench) { return work(bench, names); });
  const auto dead = std::find_if(results.begin(), results.end(), [&](const ReadResult& result) {
    return result.failure && connection.GiveUpAfter(*result.failure);
  });
  if (dead == results.end()) {
    return results;
  }
  // An overlapping one may have read some behind the failure.
  QStringList missing;
  std::vector<size_t> places;
  for (size_t i = 0; i < results.size(); ++i) {
    if (!results[i].content && i < static_cast<size_t>(names.size())) {
      missing.append(names[static_cast<qsizetype>(i)]);
      places.push_back(i);
    }
  }
  std::vector<ReadResult> again =
      watched.Run(Kind::Writing, [work, missing](Workbench& bench) { return work(bench, missing); });
  for (size_t i = 0; i < places.size() && i < again.size(); ++i) {
    results[places[i]] = std::move(again[i]);
  }
  for (const ReadResult& result : results) {
    if (result.failure && connection.GiveUpAfter(*result.failure)) {
      break;
    }
  }
  return results;
}

std::vector<WriteResult> Write(RemoteConnection& connection, const RemoteConnection::Purpose& purpose,
                               const std::function<std::vector<WriteResult>(Workbench& bench)>& work) {
  std::vector<WriteResult> results = WatchedRun(connection, purpose).Run(Kind::Writing, work);
  for (const WriteResult& result : results) {
    if (result.failure && connection.GiveUpAfter(*result.failure)) {
      break;
    }
  }
  return results;
}

void Observe(RemoteConnection& connection, const RemoteConnection::Purpose& purpose,
             const ItemObserver& observer,
             const std::function<void(Workbench& bench, const ItemObserver& observer)>& work) {
  const Delivery<ItemProgress>::Receiver hand = [&observer](ItemProgress&& item) {
    return !observer || observer(item);
  };
  Closing<ItemProgress> closing;
  bool hasBegun = false;
  try {
    connection.RunTask(Kind::Writing, purpose, [&](RunningCall& call) {
      const auto delivery = std::make_shared<Delivery<ItemProgress>>(call, hand, true);
      closing.Set(delivery);
      hasBegun = true;
      return Task([delivery, work, isObserved = static_cast<bool>(observer),
                   control = connection.Link()->Control()](Workbench& bench) {
        work(bench, [&delivery, &control, isObserved](const ItemProgress& item) {
          control->Alive();
          if (isObserved) {
            delivery->Put(ItemProgress(item));
          }
          return !control->IsCancelled();
        });
      });
    });
  } catch (const RunTimeError&) {
    if (hasBegun) {
      // What the observer has thrown comes first.
      closing.Get().Close(false);
    }
    throw;
  }
  closing.Get().Close(false);
}

}  // namespace trevane::remotebatches
