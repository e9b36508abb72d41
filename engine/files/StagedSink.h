#pragma once

#include "base/RunTimeError.h"
#include "engine/files/StagedPlace.h"
#include "engine/files/StagedPrivateFile.h"
#include "engine/model/Content.h"

#include <QString>

#include <memory>
#include <optional>
#include <vector>

namespace trevane {

/// Keeps the promise of FileSystem::OpenSink over the primitives of a simple server. It tries the rungs of
/// NameRung. Until one is proved for a server the content is kept on this computer, too, so that the next
/// rung can have it from the beginning.
class StagedSink final : public ContentSink {
 public:
  StagedSink(StagedPlace place, QString path, const SinkRequest& request);
  ~StagedSink() override;
  StagedSink(const StagedSink&) = delete;
  StagedSink& operator=(const StagedSink&) = delete;

  void Write(const QByteArray& piece) override;
  [[nodiscard]] std::optional<QString> TemporaryName() const override;
  [[nodiscard]] SeenItem Commit() override;

  /// The first half of Commit: the content has its name then, and was not asked about.
  void Place();

 private:
  /// The first time, begins on the first rung.
  void Open();
  void BeginRung();
  /// Continues on another rung where the failure asks for one and all of the content is at hand; else throws
  /// the failure.
  void LeaveRung(const RunTimeError& failure);
  /// A replaced file keeps its permissions.
  void FindTraits();
  void SetTraits(const QString& path);
  /// The whole content has arrived under the name of the rung, if that has one.
  void FinishRung();
  void GiveName();
  /// Removes what was built. What cannot be removed is left behind.
  void Discard() noexcept;

  StagedPlace place_;
  QString path_;
  /// Of the path.
  QString folder_;
  SinkRequest request_;
  FileTraits traits_;
  NameRung rung_ = NameRung::Long;
  bool isOpen_ = false;
  /// The rungs before were refused for their names, not for rights that one folder may have.
  bool isOfServer_ = true;
  qint64 written_ = 0;
  /// All of the content so far. Always there on the rung InPlace.
  std::unique_ptr<StagedPrivateFile> copy_;
  std::unique_ptr<RawWriter> writer_;
  /// The path under which the content is built; empty when nothing is.
  QString built_;
  /// The same, once it was given its name.
  QString placedFrom_;
};

/// WriteMany over the primitives of a simple server: one file after the other, and all of them asked for
/// together when they have their names. The names are paths.
[[nodiscard]] std::vector<WriteResult> WriteManyStaged(const StagedPlace& place,
                                                       const std::vector<NewContent>& files);

/// The same failure for people who know nothing of temporary names: a text that ends with `built` ends with
/// `path`, the item for which it was built.
[[nodiscard]] RunTimeError ToldOf(const RunTimeError& failure, const QString& built, const QString& path);

/// CreateFolder on a simple server: fails with error::kNotSupported before anything is asked where it has no
/// folders, with error::kExists when anything has that name.
void CreateFolderStaged(RawFiles& files, const QString& path);

}  // namespace trevane
