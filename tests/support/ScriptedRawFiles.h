#pragma once

#include "engine/files/RawFiles.h"
#include "tests/support/FaultyFileSystem.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <map>
#include <optional>

namespace trevane::test {

/// How a scripted server differs from a good one.
struct RawQuirks {
  RawCapabilities can = {};
  /// Of new names; a refused one is error::kInvalidName. Empty: all are taken.
  std::function<bool(const QString& name)> takesName = {};
  /// Names are refused when the content is closed instead of when it is opened.
  bool refusesAtClose = false;
  /// Listings do not tell sizes.
  bool tellsSizes = true;
  /// What was stored is read back with this behind it.
  QByteArray appends = {};
  /// Bytes that all files may have together; -1: without limit.
  qint64 space = -1;
};

/// A server with one folder of files in memory. Its calls are counted, each piece too, and can be made to
/// fail.
class ScriptedRawFiles final : public RawFiles {
 public:
  enum class Fault {
    Refuse,
    /// Does its work and reports a failure.
    DoAndFail,
    /// The line is lost within the call: of a piece half is stored, and all later calls fail.
    LoseLine,
    /// Does its work, and the line is lost with the answer.
    LoseAnswer,
    /// The user cancels within the call: of a piece half is stored, and this and all later calls fail with
    /// error::kCancelled, except those between BeginPutBack and EndPutBack.
    Cancel
  };

  explicit ScriptedRawFiles(RawQuirks quirks = {}) : quirks_(std::move(quirks)) {}

  /// Counts from here: the `call`th call (1 is the next) fails.
  void Arm(int call, Fault fault, FaultSpan span = FaultSpan::Once, qint32 number = error::kTimeOut);
  void Disarm() { armedAt_ = 0; }
  [[nodiscard]] int CallCount() const { return count_; }
  [[nodiscard]] int FaultCount() const { return faults_; }
  /// "Store x", "Rename x y" and so on, without pieces.
  [[nodiscard]] const QStringList& Calls() const { return calls_; }
  void ClearCalls();
  /// Runs before each call, to act as another program.
  void SetHook(std::function<void(const QString& call)> hook) { hook_ = std::move(hook); }

  /// The contents by name, without any call.
  std::map<QString, QByteArray> files;
  std::map<QString, FileTraits> traits;

  [[nodiscard]] RawCapabilities Capabilities() const override { return quirks_.can; }
  [[nodiscard]] std::optional<SeenItem> Find(const QString& path) override;
  [[nodiscard]] std::vector<std::optional<SeenItem>> FindMany(const QStringList& paths) override;
  [[nodiscard]] std::unique_ptr<ContentSource> OpenSource(const QString& path) override;
  [[nodiscard]] std::unique_ptr<RawWriter> Store(const QString& path, Creation creation,
                                                 bool isPrivate) override;
  void Rename(const QString& from, const QString& to) override;
  void Remove(const QString& path) override;
  void CreateFolder(const QString& path) override;
  void BeginPutBack() noexcept override { ++putBacks_; }
  void EndPutBack() noexcept override { --putBacks_; }
  [[nodiscard]] FileTraits Traits(const QString& path) override;
  void SetTraits(const QString& path, const FileTraits& given) override;

 private:
  class Writer;
  class Source;

  /// Does `work` as the armed fault tells; `half` is what a call does whose line is lost in it.
  void Do(const QString& call, const QString& path, const std::function<void()>& work,
          const std::function<void()>& half = {});
  [[nodiscard]] SeenItem ItemOf(const QString& path) const;
  void RequireName(const QString& path) const;
  void RequireSpace(const QString& path, qint64 more) const;

  RawQuirks quirks_;
  QStringList calls_;
  std::function<void(const QString& call)> hook_;
  int count_ = 0;
  int armedAt_ = 0;
  int faults_ = 0;
  /// Of BeginPutBack without its EndPutBack.
  int putBacks_ = 0;
  Fault fault_ = Fault::Refuse;
  FaultSpan span_ = FaultSpan::Once;
  qint32 number_ = 0;
};

}  // namespace trevane::test
