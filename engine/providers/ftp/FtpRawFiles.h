#pragma once

#include "engine/files/RawFiles.h"
#include "engine/files/StagedPlace.h"
#include "engine/providers/ftp/FtpServer.h"

#include <QByteArray>
#include <QByteArrayList>
#include <QHash>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace trevane::ftp {

/// The primitives of an FTP server.
class RawServer final : public RawFiles {
 public:
  explicit RawServer(std::shared_ptr<Server> server) : server_(std::move(server)) {}

  [[nodiscard]] RawCapabilities Capabilities() const override;
  [[nodiscard]] std::optional<SeenItem> Find(const QString& path) override;
  [[nodiscard]] std::vector<std::optional<SeenItem>> FindMany(const QStringList& paths) override;
  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource(const QString& path) override;
  [[nodiscard]] std::unique_ptr<RawWriter> Store(const QString& path, Creation creation,
                                                 bool isPrivate) override;
  void Rename(const QString& from, const QString& to) override;
  void Remove(const QString& path) override;
  void CreateFolder(const QString& path) override;
  void BeginPutBack() noexcept override { server_->BeginPutBack(); }
  void EndPutBack() noexcept override { server_->EndPutBack(); }
  [[nodiscard]] FileTraits Traits(const QString& path) override;
  void SetTraits(const QString& path, const FileTraits& traits) override;

  /// Stores a whole content; whether all of it has arrived is looked at elsewhere.
  void StoreUnseen(const QString& path, const QByteArray& content);
  /// What was just seen at a path: the next Find of it asks nothing.
  void Know(const Place& place, const std::optional<ListedItem>& item) { known_.insert(place.path, item); }
  void Forget(const Place& place) { known_.remove(place.path); }
  /// After RNFR and RNTO: learns from the answer to the second one, and fails for a refusal.
  void EndRename(const Place& source, const Place& target, const Reply& reply);

  /// For contents that are staged with these primitives.
  [[nodiscard]] StagedPlace StagedHere();

 private:
  class Writer;

  /// Looks whether a rename that the server tells as done was done, until it was seen to do what it tells.
  void RequireRenamed(const Place& source, const Place& target, const Reply& reply, bool replaces);

  std::shared_ptr<Server> server_;
  QHash<QByteArray, std::optional<ListedItem>> known_;
  /// Where the last Find has seen a file.
  QByteArray taken_;
};

/// A refusal of new content or a new name: a text that tells nothing is one of rights, so that another name
/// is tried. Servers tell neither clearly that the folder is missing: it is looked for.
[[nodiscard]] RunTimeError StoringError(Server& server, const Reply& reply, const Place& place);

/// Fails unless new content can take the place of the item. A link would be written through.
void RequireReplaceable(const ListedItem& item, const QString& text);

/// As FileSystem::OpenSink.
[[nodiscard]] std::unique_ptr<ContentSink> OpenSinkAt(const std::shared_ptr<Server>& server,
                                                      const QString& path, const SinkRequest& request);

/// Learns whether the server can rename at all, where that is not known. Something stands at the path.
void LearnRename(Server& server, const QByteArray& path);

/// Sets date and permissions as far as the server has them; true when anything was set.
bool SetTraitsAt(Server& server, const Place& place, const FileTraits& traits);
/// The commands with which SetTraitsAt would do that; nothing where it must be tried how the server does it.
[[nodiscard]] std::optional<QByteArrayList> TraitCommands(Server& server, const Place& place,
                                                          const FileTraits& traits);

}  // namespace trevane::ftp
