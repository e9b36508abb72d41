#include "engine/remote/RemoteHeldFolder.h"

#include "engine/files/ProviderError.h"
#include "engine/files/ProviderPath.h"
#include "engine/remote/CallTexts.h"
#include "engine/remote/RemoteBatches.h"
#include "engine/remote/RemoteSink.h"
#include "engine/remote/RemoteSource.h"

#include <tuple>
#include <utility>

namespace trevane {

using Kind = RemoteConnection::Kind;

std::shared_ptr<HeldFolder> RemoteHeldFolder::Way::Hold(Workbench& bench) const {
  std::shared_ptr<HeldFolder> held;
  size_t next = steps.size();
  while (next > 0 && !held) {
    held = bench.Kept<HeldFolder>(steps[next - 1].number);
    if (!held) {
      --next;
    }
  }
  for (; next < steps.size(); ++next) {
    held = next == 0 ? bench.Files().Hold(path) : held->Enter(steps[next].name);
    if (steps[next].identity && held->KnownIdentity() != steps[next].identity) {
      Fail(providererror::kChanged, held->Path());
    }
    bench.Keep(steps[next].number, held);
  }
  return held;
}

RemoteHeldFolder::RemoteHeldFolder(const std::shared_ptr<RemoteConnection>& connection, const QString& path)
    : object_(connection), path_(path), way_{path, {{object_.Number(), QString(), std::nullopt}}} {
  HoldFirst(std::nullopt);
}

RemoteHeldFolder::RemoteHeldFolder(const RemoteHeldFolder& above, const QString& name,
                                   const std::optional<SeenItem>& seen)
    : object_(above.object_.SharedConnection()), path_(above.PathOf(name)), way_(above.way_) {
  way_.steps.push_back({object_.Number(), name, std::nullopt});
  HoldFirst(seen);
}

void RemoteHeldFolder::HoldFirst(const std::optional<SeenItem>& seen) {
  std::tie(way_.steps.back().identity, dateStep_) = object_.Connection().Run(
      Kind::Reading, calltexts::Reading(path_), [way = way_, seen](Workbench& bench) {
        if (seen) {
          Way above = way;
          above.steps.pop_back();
          bench.Keep(way.steps.back().number, above.Hold(bench)->EnterSeen(way.steps.back().name, *seen));
        }
        const std::shared_ptr<HeldFolder> held = way.Hold(bench);
        return std::pair(held->KnownIdentity(), held->DateStep());
      });
}

QString RemoteHeldFolder::PathOf(const QString& name) const {
  return providerpath::Child(path_, name);
}

template <class Work>
auto RemoteHeldFolder::Read(const RemoteConnection::Purpose& purpose, const Work& work) {
  return object_.Connection().Run(Kind::Reading, purpose,
                                  [way = way_, work](Workbench& bench) { return work(*way.Hold(bench)); });
}

template <class Work>
auto RemoteHeldFolder::Change(const RemoteConnection::Purpose& purpose, const Work& work) {
  return object_.Connection().Run(Kind::Writing, purpose,
                                  [way = way_, work](Workbench& bench) { return work(*way.Hold(bench)); });
}

std::shared_ptr<HeldFolder> RemoteHeldFolder::Enter(const QString& name) {
  return std::shared_ptr<HeldFolder>(new RemoteHeldFolder(*this, name, std::nullopt));
}

std::shared_ptr<HeldFolder> RemoteHeldFolder::EnterSeen(const QString& name, const SeenItem& seen) {
  return std::shared_ptr<HeldFolder>(new RemoteHeldFolder(*this, name, seen));
}

Listing RemoteHeldFolder::List() {
  return Read(calltexts::Reading(path_), [](HeldFolder& folder) { return folder.List(); });
}

std::optional<SeenItem> RemoteHeldFolder::Find(const QString& name) {
  return Read(calltexts::Reading(PathOf(name)), [name](HeldFolder& folder) { return folder.Find(name); });
}

std::unique_ptr<ContentSource> RemoteHeldFolder::OpenSource(const QString& name, qint64 offset) {
  return std::make_unique<RemoteSource>(
      object_.SharedConnection(), PathOf(name), offset, [way = way_, name](Workbench& bench, qint64 from) {
        const std::shared_ptr<HeldFolder> folder = way.Hold(bench);
        return std::shared_ptr<ContentSource>(folder->OpenSource(name, from).release(),
                                              // The folder ends after what was opened in it.
                                              [folder](ContentSource* source) { delete source; });
      });
}

std::unique_ptr<ContentSink> RemoteHeldFolder::OpenSink(const QString& name, const SinkRequest& request,
                                                        const std::optional<SeenItem>& seen) {
  return std::make_unique<RemoteSink>(
      object_.SharedConnection(), PathOf(name), [way = way_, name, request, seen](Workbench& bench) {
        const std::shared_ptr<HeldFolder> folder = way.Hold(bench);
        return std::shared_ptr<ContentSink>(folder->OpenSink(name, request, seen).release(),
                                            [folder](ContentSink* sink) { delete sink; });
      });
}

std::vector<ReadResult> RemoteHeldFolder::ReadMany(const QStringList& names) {
  return remotebatches::Read(
      object_.Connection(), calltexts::Reading(path_), names,
      [way = way_](Workbench& bench, const QStringList& some) { return way.Hold(bench)->ReadMany(some); });
}

std::vector<WriteResult> RemoteHeldFolder::WriteMany(const std::vector<NewContent>& files) {
  return remotebatches::Write(
      object_.Connection(), calltexts::Writing(path_),
      [way = way_, files](Workbench& bench) { return way.Hold(bench)->WriteMany(files); });
}

std::optional<QString> RemoteHeldFolder::ReadLink(const QString& name) {
  return Read(calltexts::Reading(PathOf(name)), [name](HeldFolder& folder) { return folder.ReadLink(name); });
}

void RemoteHeldFolder::CreateLink(const QString& name, const QString& target) {
  Change(calltexts::Writing(PathOf(name)),
         [name, target](HeldFolder& folder) { folder.CreateLink(name, target); });
}

void RemoteHeldFolder::ListInBatches(const ListingReceiver& receive) {
  remotebatches::List(object_.Connection(), calltexts::Reading(path_), receive,
                      [way = way_](Workbench& bench, const ListingReceiver& receiver) {
                        way.Hold(bench)->ListInBatches(receiver);
                      });
}

FileTraits RemoteHeldFolder::Traits(const QString& name) {
  return Read(calltexts::Reading(PathOf(name)), [name](HeldFolder& folder) { return folder.Traits(name); });
}

void RemoteHeldFolder::SetTraits(const QString& name, const FileTraits& traits) {
  Change(calltexts::Writing(PathOf(name)),
         [name, traits](HeldFolder& folder) { folder.SetTraits(name, traits); });
}

void RemoteHeldFolder::SetTraitsOf(const SeenItem& seen, const FileTraits& traits) {
  Change(calltexts::Writing(PathOf(seen.entry.name)),
         [seen, traits](HeldFolder& folder) { folder.SetTraitsOf(seen, traits); });
}

std::optional<SeenItem> RemoteHeldFolder::MakeFolder(const QString& name, bool closed) {
  return Change(calltexts::Writing(PathOf(name)),
                [name, closed](HeldFolder& folder) { return folder.MakeFolder(name, closed); });
}

void RemoteHeldFolder::CreateFolder(const QString& name, bool closed) {
  Change(calltexts::Writing(PathOf(name)),
         [name, closed](HeldFolder& folder) { folder.CreateFolder(name, closed); });
}

void RemoteHeldFolder::RemoveAlone(const QString& name, const SeenItem& seen) {
  Change(calltexts::Deleting(PathOf(name)),
         [name, seen](HeldFolder& folder) { folder.RemoveAlone(name, seen); });
}

void RemoteHeldFolder::RemoveMany(const std::vector<SeenItem>& items) {
  Change(calltexts::Deleting(path_), [items](HeldFolder& folder) { folder.RemoveMany(items); });
}

void RemoteHeldFolder::Flush(const QString& name) {
  Change(calltexts::Writing(PathOf(name)), [name](HeldFolder& folder) { folder.Flush(name); });
}

}  // namespace trevane
