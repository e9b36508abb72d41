#include "engine/providers/ftp/FtpBatches.h"

#include "base/LowerCase.h"
#include "engine/files/RawPutBack.h"
#include "engine/files/StagedPlacement.h"
#include "engine/files/StagedSink.h"
#include "engine/files/TemporaryName.h"
#include "engine/model/BatchWatch.h"
#include "engine/model/ContentSteps.h"
#include "engine/providers/ftp/FtpErrors.h"
#include "engine/providers/ftp/FtpRawFiles.h"
#include "engine/providers/ftp/FtpSource.h"
#include "engine/providers/ftp/PlacesTogether.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <iterator>
#include <utility>

namespace trevane::ftp {
namespace {

/// For fewer files of a folder a look at each costs less than a listing.
constexpr std::size_t kFewestToList = 3;
/// For fewer it is not asked whether a server takes several commands at once.
constexpr std::size_t kFewestTogether = 8;

QString FolderOf(const QString& path) {
  return path.first(path.lastIndexOf(u'\\') + 1);
}

/// The files of one folder, by their names there.
using Listed = QHash<QByteArray, ListedItem>;

Listed ListedOf(const ParsedListing& listing) {
  Listed listed;
  listed.reserve(static_cast<qsizetype>(listing.items.size()));
  for (const ListedItem& item : listing.items) {
    listed.insert(item.name, item);
  }
  return listed;
}

/// After it nothing more of a batch is begun.
bool EndsBatch(const RunTimeError& failure) {
  const qint32 number = failure.Number();
  return number == error::kCancelled || number == error::kTimeOut || number == kConnectionLost;
}

/// Files of one folder on a server that is known to take temporary names and to rename.
class BatchWriter {
 public:
  BatchWriter(std::shared_ptr<Server> server, const std::vector<NewContent>& files, std::size_t first,
              std::size_t end)
      : server_(std::move(server)),
        raw_(server_),
        place_(raw_.StagedHere()),
        files_(files),
        first_(first),
        end_(end),
        folder_(server_->Above(server_->At(files[first].name))),
        rung_(place_.learnt.FirstRung(place_.server, FolderOf(files[first].name))) {}

  void Run(std::vector<WriteResult>& results) {
    isTogether_ = end_ - first_ >= kFewestTogether && PlacesTogether(*server_, raw_).IsPossible();
    try {
      SendAll(results);
      LookAtAll();
      PlaceAll(results);
      ShowAll(results);
    } catch (const RunTimeError& failure) {
      Fill(results, failure);
    }
    RemoveLeft();
  }

 private:
  struct Sent {
    std::size_t at = 0;
    Place built;
    Place target;
    /// The permissions that it must be given.
    std::optional<quint32> mode = {};
    /// Its date is set together with its name.
    bool lacksDate = false;
    bool isPlaced = false;
    /// What the listing shows in its place.
    std::optional<ListedItem> there = {};
  };

  void SendAll(std::vector<WriteResult>& results) {
    sent_.reserve(end_ - first_);
    for (std::size_t i = first_; i < end_; ++i) {
      const NewContent& file = files_[i];
      try {
        Sent sent{.at = i, .built = {}, .target = server_->At(file.name)};
        if (file.request.mode == SinkRequest::Mode::New) {
          server_->RequireFits(sent.target);
        }
        sent.built = NewName(sent.target);
        sent_.push_back(std::move(sent));
        Send(sent_.back(), file);
      } catch (const RunTimeError& failure) {
        results[i].failure = failure;
        place_.learnt.Doubt(place_.server, FolderOf(file.name));
        if (EndsBatch(failure)) {
          throw;
        }
        return;
      }
    }
  }

  /// STOR overwrites: two files of a batch must not be built under one name, and the short names are few.
  [[nodiscard]] Place NewName(const Place& target) {
    const QString folder = FolderOf(target.text);
    for (;;) {
      const QString name = MakeTemporaryName(nameladder::FormOf(rung_), target.name);
      // The extension may be another one, but a device may not tell names by it.
      const QString stem = LowerCase(rung_ == NameRung::Long ? name : name.section(u'.', 0, 0));
      if (!stems_.contains(stem)) {
        stems_.insert(stem);
        return server_->At(folder + name);
      }
    }
  }

  void Send(Sent& sent, const NewContent& file) {
    const FileTraits date{.modified = file.request.traits.modified};
    try {
      // Its size is looked at for all of them.
      raw_.StoreUnseen(sent.built.text, file.content);
      sent.lacksDate = isTogether_ && TraitCommands(*server_, sent.built, date).has_value();
      if (!sent.lacksDate) {
        SetTraitsAt(*server_, sent.built, date);
      }
    } catch (const RunTimeError& failure) {
      throw ToldOf(failure, sent.built.text, sent.target.text);
    }
    BatchWatch::FileDone(file.content.size());
  }

  [[nodiscard]] FileTraits LackedBy(const Sent& sent) const {
    return {.permissions = sent.mode,
            .modified = sent.lacksDate ? files_[sent.at].request.traits.modified : Date()};
  }

  /// What has arrived, and what stands where it belongs.
  void LookAtAll() {
    const bool isOne = sent_.size() < kFewestToList;
    Listed there;
    if (!isOne) {
      there = ListedOf(server_->ReadFolder(folder_));
    }
    for (Sent& sent : sent_) {
      const auto built = there.constFind(sent.built.ownName);
      const std::optional<ListedItem> now =
          built != there.cend() ? std::optional(*built) : server_->Look(sent.built);
      sizes_.push_back(now ? now->size : qint64{-2});
      const auto target = there.constFind(sent.target.ownName);
      // A replaced file keeps its permissions.
      const bool isNew = files_[sent.at].request.mode == SinkRequest::Mode::New;
      sent.mode = isNew ? files_[sent.at].request.traits.permissions
                        : (target != there.cend() ? target->mode : std::nullopt);
      if (!now || !now->mode || now->mode == sent.mode) {
        sent.mode.reset();
      }
      if (target != there.cend()) {
        sent.there = *target;
        raw_.Know(sent.target, *target);
      } else if (!isOne && IsSurelyMissing(there, sent.target)) {
        raw_.Know(sent.target, std::nullopt);
      }
    }
  }

  /// Of a name that is not listed as it is.
  [[nodiscard]] bool IsSurelyMissing(const Listed& there, const Place& target) {
    if (server_->Can().caseSensitive == Seen::Works && server_->ShowsHidden()) {
      return true;
    }
    if (folded_.isEmpty()) {
      for (const ListedItem& item : there) {
        folded_.insert(LowerCase(server_->Names().FromServer(item.name)));
      }
    }
    return !folded_.contains(LowerCase(target.name)) &&
           (server_->ShowsHidden() || !target.ownName.startsWith('.'));
  }

  void PlaceAll(std::vector<WriteResult>& results) {
    for (std::size_t i = 0; i < sent_.size(); ++i) {
      if (!PlacePlainOnes(i, results)) {
        return;
      }
      if (i == sent_.size()) {
        return;
      }
      Sent& sent = sent_[i];
      const NewContent& file = files_[sent.at];
      if (results[sent.at].failure) {
        continue;
      }
      try {
        RequireArrived(sizes_[i], file, sent);
        if (file.request.mode == SinkRequest::Mode::New) {
          RequireFree(sent);
        } else if (sent.there) {
          RequireReplaceable(*sent.there, sent.target.text);
        }
        if (sent.mode || sent.lacksDate) {
          SetTraitsAt(*server_, sent.built, LackedBy(sent));
        }
        StagedPlacement(place_, rung_, file.content.size())
            .Put(sent.built.text, sent.target.text, file.request.mode);
        sent.isPlaced = true;
      } catch (const RunTimeError& failure) {
        results[sent.at].failure = failure;
        return;
      }
    }
  }

  /// Those from `at` on that need no other command than the common ones get their names together, and `at`
  /// is behind them then. False after a failure.
  [[nodiscard]] bool PlacePlainOnes(std::size_t& at, std::vector<WriteResult>& results) {
    std::vector<PlacesTogether::File> plain;
    for (std::size_t i = at; isTogether_ && i < sent_.size(); ++i) {
      const Sent& sent = sent_[i];
      const NewContent& file = files_[sent.at];
      std::optional<QByteArrayList> traits = TraitCommands(*server_, sent.built, LackedBy(sent));
      const bool isPlain = !results[sent.at].failure && file.request.mode == SinkRequest::Mode::New &&
                           !sent.there && sizes_[i] == file.content.size() && traits;
      if (!isPlain) {
        break;
      }
      plain.push_back({.built = sent.built, .target = sent.target, .traits = *std::move(traits)});
    }
    constexpr std::size_t kFewest = 2;
    if (plain.size() < kFewest) {
      return true;
    }
    PlacesTogether::Outcome outcome = PlacesTogether(*server_, raw_).Run(plain);
    for (const std::size_t end = at + outcome.placed; at < end; ++at) {
      sent_[at].isPlaced = true;
    }
    // A server that is not plain is not asked so again and again.
    isTogether_ = outcome.placed > 0;
    if (outcome.failure) {
      results[sent_[at].at].failure = std::move(outcome.failure);
    }
    return !outcome.failure;
  }

  /// The listing is older than the renames before, and a rename may replace what has come since.
  void RequireFree(const Sent& sent) {
    if (sent.there || server_->Can().refusesTaken) {
      return;
    }
    // One round trip in place of a listing; a folder is not replaced.
    const bool asksSize = server_->Can().mlst == Seen::Refused && server_->Can().size == Seen::Works;
    if (asksSize ? server_->SizeOf(sent.target).has_value() : server_->Look(sent.target).has_value()) {
      Fail(error::kExists, sent.target.text);
    }
    raw_.Know(sent.target, std::nullopt);
  }

  void RequireArrived(qint64 size, const NewContent& file, const Sent& sent) {
    constexpr qint64 kMissing = -2;
    if (size == kMissing) {
      Fail(providererror::kChanged, QStringLiteral("The new content did not arrive"), sent.target.text);
    }
    if (size < 0) {
      // Nothing tells the size: what was sent is read back.
      Source source(server_, sent.built, 0);
      if (ReadAll(source) != file.content) {
        Fail(providererror::kChanged, QStringLiteral("Another content arrived than was sent"),
             sent.target.text);
      }
      return;
    }
    if (size != file.content.size()) {
      Fail(providererror::kChanged,
           QStringLiteral("%1 of %2 bytes arrived").arg(size).arg(file.content.size()), sent.target.text);
    }
  }

  /// What stands there now.
  void ShowAll(std::vector<WriteResult>& results) {
    QStringList placed;
    for (const Sent& sent : sent_) {
      if (sent.isPlaced) {
        placed += sent.target.text;
      }
    }
    if (placed.isEmpty()) {
      return;
    }
    std::vector<std::optional<SeenItem>> found = raw_.FindMany(placed);
    std::size_t next = 0;
    for (Sent& sent : sent_) {
      if (!sent.isPlaced) {
        continue;
      }
      std::optional<SeenItem>& item = found[next++];
      const qint64 written = files_[sent.at].content.size();
      const bool isOther = !item || (item->entry.size >= 0 && item->entry.size != written);
      if (isOther && server_->Look(sent.built)) {
        sent.isPlaced = false;
        results[sent.at].failure = NotRenamed({}, sent.target.text);
      } else if (item) {
        results[sent.at].item = std::move(item);
      } else {
        results[sent.at].failure = ProviderError(error::kNotFound, sent.target.text);
      }
    }
  }

  /// A failure of what serves all of them.
  void Fill(std::vector<WriteResult>& results, const RunTimeError& failure) const {
    for (const Sent& sent : sent_) {
      if (!results[sent.at].failure) {
        results[sent.at].failure = failure;
        if (!sent.isPlaced) {
          return;
        }
      }
    }
  }

  void RemoveLeft() noexcept {
    const RawPutBack putBack(raw_);
    for (const Sent& sent : sent_) {
      if (sent.isPlaced) {
        continue;
      }
      try {
        raw_.Remove(sent.built.text);
      } catch (const RunTimeError& failure) {
        if (failure.Number() != error::kNotFound) {
          server_->LeaveBehind(sent.built.text);
        }
      }
    }
  }

  std::shared_ptr<Server> server_;
  RawServer raw_;
  StagedPlace place_;
  const std::vector<NewContent>& files_;
  const std::size_t first_;
  const std::size_t end_;
  const Place folder_;
  const NameRung rung_;
  std::vector<Sent> sent_;
  /// Of what was built, -1 where the server does not tell it, -2 for what is missing.
  std::vector<qint64> sizes_;
  /// Commands are sent several at once.
  bool isTogether_ = false;
  QSet<QString> folded_;
  /// Of the names that were built under, in lower case.
  QSet<QString> stems_;
};

/// A batch needs names that are proved.
bool IsProved(Server& server, const QString& path) {
  LearntNaming& learnt = Server::Naming();
  const QString folder = FolderOf(path);
  const Capabilities& can = server.Can();
  return can.rename == Seen::Works && learnt.IsProved(server.Key(), folder) &&
         learnt.FirstRung(server.Key(), folder) != NameRung::InPlace;
}

}  // namespace

std::vector<ReadResult> ReadBatch(const std::shared_ptr<Server>& server, const QStringList& paths) {
  QHash<QString, std::size_t> counts;
  for (const QString& path : paths) {
    ++counts[FolderOf(path)];
  }
  QHash<QString, Listed> folders;
  return ReadOneByOne(paths, [&](const QString& path) -> std::unique_ptr<ContentSource> {
    const Place place = server->At(path);
    const QString folder = FolderOf(path);
    if (place.IsTop() || counts.value(folder) < kFewestToList) {
      return std::make_unique<Source>(server, place, 0);
    }
    auto listed = folders.find(folder);
    if (listed == folders.end()) {
      listed = folders.insert(folder, ListedOf(server->ReadRecently(server->Above(place))));
    }
    const auto item = listed->constFind(place.ownName);
    return std::make_unique<Source>(server, place, 0,
                                    item == listed->cend() ? std::nullopt : std::optional(*item));
  });
}

std::vector<WriteResult> WriteBatch(const std::shared_ptr<Server>& server,
                                    const std::vector<NewContent>& files) {
  std::vector<WriteResult> results(files.size());
  for (std::size_t first = 0; first < files.size();) {
    std::size_t end = first + 1;
    try {
      if (IsProved(*server, files[first].name)) {
        const QString folder = FolderOf(files[first].name);
        while (end < files.size() && FolderOf(files[end].name) == folder) {
          ++end;
        }
        BatchWriter(server, files, first, end).Run(results);
      } else {
        // The first one learns how the others can be written.
        const NewContent& file = files[first];
        const std::unique_ptr<ContentSink> sink = OpenSinkAt(server, file.name, file.request);
        if (!file.content.isEmpty()) {
          sink->Write(file.content);
        }
        results[first].item = sink->Commit();
        BatchWatch::FileDone(file.content.size());
      }
    } catch (const RunTimeError& failure) {
      results[first].failure = failure;
    }
    const bool hasFailed = std::any_of(results.begin() + static_cast<std::ptrdiff_t>(first),
                                       results.begin() + static_cast<std::ptrdiff_t>(end),
                                       [](const WriteResult& result) { return result.failure.has_value(); });
    if (hasFailed) {
      break;
    }
    first = end;
  }
  return results;
}

}  // namespace trevane::ftp
