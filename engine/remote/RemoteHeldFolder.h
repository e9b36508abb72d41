#pragma once

#include "engine/files/HeldFolder.h"
#include "engine/remote/RemoteObject.h"

#include <memory>
#include <optional>
#include <vector>

namespace trevane {

/// A folder that is held on its controller's thread, by the file system's own means. After the line died it
/// is held anew by its path, and those that were entered from it by their names.
class RemoteHeldFolder final : public HeldFolder {
 public:
  /// Holds it and waits for that.
  RemoteHeldFolder(const std::shared_ptr<RemoteConnection>& connection, const QString& path);

  [[nodiscard]] QString Path() const override { return path_; }
  [[nodiscard]] std::optional<FileIdentity> KnownIdentity() const override {
    return way_.steps.back().identity;
  }
  [[nodiscard]] qint64 DateStep() const override { return dateStep_; }
  [[nodiscard]] std::shared_ptr<HeldFolder> Enter(const QString& name) override;
  [[nodiscard]] std::shared_ptr<HeldFolder> EnterSeen(const QString& name, const SeenItem& seen) override;
  [[nodiscard]] Listing List() override;
  [[nodiscard]] std::optional<SeenItem> Find(const QString& name) override;
  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource(const QString& name, qint64 offset = 0) override;
  [[nodiscard]] std::unique_ptr<ContentSink> OpenSink(const QString& name, const SinkRequest& request,
                                                      const std::optional<SeenItem>& seen) override;
  [[nodiscard]] std::vector<ReadResult> ReadMany(const QStringList& names) override;
  [[nodiscard]] std::vector<WriteResult> WriteMany(const std::vector<NewContent>& files) override;
  [[nodiscard]] std::optional<QString> ReadLink(const QString& name) override;
  void CreateLink(const QString& name, const QString& target) override;
  void ListInBatches(const ListingReceiver& receive) override;
  [[nodiscard]] FileTraits Traits(const QString& name) override;
  void SetTraits(const QString& name, const FileTraits& traits) override;
  void SetTraitsOf(const SeenItem& seen, const FileTraits& traits) override;
  void CreateFolder(const QString& name, bool closed) override;
  [[nodiscard]] std::optional<SeenItem> MakeFolder(const QString& name, bool closed) override;
  void RemoveAlone(const QString& name, const SeenItem& seen) override;
  void RemoveMany(const std::vector<SeenItem>& items) override;
  void Flush(const QString& name) override;

 private:
  /// The way to it on the thread: the path that is held and the names that are entered from there, each with
  /// its number on the workbench.
  struct Way {
    struct Step {
      quint64 number = 0;
      QString name;
      /// What was held first: after the line died no other folder is taken for it. Nothing where the file
      /// system tells none.
      std::optional<FileIdentity> identity;
    };
    QString path;
    std::vector<Step> steps;

    /// The folder; holds again what the workbench does not hold any more.
    [[nodiscard]] std::shared_ptr<HeldFolder> Hold(Workbench& bench) const;
  };

  /// With `seen` it is taken for what was seen the first time it is entered.
  RemoteHeldFolder(const RemoteHeldFolder& above, const QString& name, const std::optional<SeenItem>& seen);

  /// Holds it for the first time.
  void HoldFirst(const std::optional<SeenItem>& seen);

  [[nodiscard]] QString PathOf(const QString& name) const;
  template <class Work>
  auto Read(const RemoteConnection::Purpose& purpose, const Work& work);
  template <class Work>
  auto Change(const RemoteConnection::Purpose& purpose, const Work& work);

  RemoteObject object_;
  const QString path_;
  Way way_;
  qint64 dateStep_ = 0;
};

}  // namespace trevane
