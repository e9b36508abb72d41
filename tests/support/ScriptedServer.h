#pragma once

#include "engine/files/Provider.h"

#include <QStringList>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace trevane {
class UserPrompts;
}

namespace trevane {
class RunningCall;
}  // namespace trevane

namespace trevane::test {

struct ScriptedOptions {
  enum class Identities {
    None,
    /// Those of the file system behind it, each for one round trip.
    Numbers,
    /// The server's name and the path, which cost nothing.
    Texts
  };
  bool dates = true;
  /// Dates are rounded down to it; milliseconds.
  qint64 dateStep = 0;
  Identities identities = Identities::Numbers;
  bool folders = true;
  /// Permissions and the like.
  bool traits = false;
  /// A batch costs what one file costs.
  bool overlapping = false;
  /// For each round trip; a cancelled call does not wait for it.
  std::chrono::milliseconds delay = {};
  /// Listings tell where links lead; without it they tell that they are links, and no more.
  bool listsTargets = true;
};

/// A slow controller over a file system that answers at once: it counts round trips, and does at the Nth what
/// a test has told it. A listing is one round trip, and so is Find, CreateFolder, Rename and RemoveAlone;
/// opening a source is one and each piece of it, the end is none; a sink is one to open, one a piece and one
/// to commit. All members may be called from any thread.
class ScriptedServer final : public std::enable_shared_from_this<ScriptedServer> {
 public:
  enum class Hearing {
    ObeysCancel,
    /// Cancel ends the call, and the connection with it.
    ClosesTheLine,
    Deaf
  };
  enum class Drop { BeforeTheCall, AfterTheCall };
  using Question = std::function<void(UserPrompts& prompts)>;

  explicit ScriptedServer(std::shared_ptr<FileSystem> behind, ScriptedOptions options = {})
      : behind_(std::move(behind)), options_(options) {}
  ScriptedServer(const ScriptedServer&) = delete;
  ScriptedServer& operator=(const ScriptedServer&) = delete;

  /// A slow provider each of whose connections leads here.
  [[nodiscard]] Provider AsProvider(const QString& name);
  /// A new connection. It is a round trip of its own, counted apart.
  [[nodiscard]] std::shared_ptr<FileSystem> Open(std::shared_ptr<CallControl> control = {});

  // The script. Round trips are counted from the last call of Expect... or ClearCalls, from 1.

  /// Does not answer until Release, or until the call is cancelled. What is released is answered as usual.
  void HangAt(int call, Hearing hearing);
  void HangAtOpening(Hearing hearing);
  /// Each listing hangs, until it is cancelled or released, before it hands over its batch of that number,
  /// from 2.
  void HangAtBatch(int batch);
  /// The line dies: this call and all later ones of the connection fail with error::kWin32Error + 64.
  void DropAt(int call, Drop drop = Drop::BeforeTheCall);
  /// From now on connecting fails.
  void RefuseOpening(qint32 number);
  void AskAt(int call, Question question);
  /// Each connection asks this before it is there; where nobody answers, it is cancelled. What the question
  /// throws is the failure of connecting.
  void AskAtOpening(Question question);
  void SetDelay(std::chrono::milliseconds delay);
  /// Of connections that are made from now on.
  void SetNotice(const QString& notice);
  /// What FileSystem::Details answers for that path, for one round trip.
  void SetDetails(const QString& path, const QStringList& lines);
  void Release();
  [[nodiscard]] bool IsHanging();
  /// Blocks until a call hangs.
  void WaitUntilHanging();
  /// Also until the call is done, which may be one that does not hang: false then.
  [[nodiscard]] bool WaitUntilHanging(const RunningCall& call);

  [[nodiscard]] int RoundTrips();
  /// Such as "List a\b", in order.
  [[nodiscard]] QStringList Calls();
  void ClearCalls();
  [[nodiscard]] int Openings();
  /// On which threads connections, sources, sinks and held folders ended.
  [[nodiscard]] std::vector<std::thread::id> EndedOn();
  /// The threads of all calls.
  [[nodiscard]] std::vector<std::thread::id> CalledOn();
  /// Of AskAt: what AskUser returned; nothing while it is open.
  [[nodiscard]] std::optional<bool> Answered();
  [[nodiscard]] int LiveConnections();

 private:
  friend class ScriptedFileSystem;
  friend class ScriptedSource;
  friend class ScriptedSink;
  friend class ScriptedFolder;

  struct Line {
    std::shared_ptr<CallControl> control;
    bool isDead = false;
  };

  /// One round trip: what the script says of it, then `work` on the file system behind.
  void RoundTrip(Line& line, const QString& call, const std::function<void(FileSystem& behind)>& work);
  void AskInOpening(Line& line, const Question& question);
  void BeforeBatch(Line& line, int batch);
  /// Work that costs nothing.
  void Free(const std::function<void(FileSystem& behind)>& work);
  void Hang(std::unique_lock<std::mutex>& lock, Line& line, Hearing hearing, const QString& call);
  void Ended();
  [[nodiscard]] QString Notice();
  [[nodiscard]] QStringList DetailsOf(const QString& path);
  [[nodiscard]] FileEntry Shown(FileEntry entry) const;
  [[nodiscard]] FileEntry Listed(FileEntry entry) const;
  [[nodiscard]] std::optional<FileIdentity> IdentityOf(const QString& path) const;

  const std::shared_ptr<FileSystem> behind_;
  const ScriptedOptions options_;
  /// The file system behind is that of one thread at a time.
  std::mutex behindMutex_;
  std::mutex mutex_;
  std::condition_variable changed_;
  QStringList calls_;
  int openings_ = 0;
  int liveConnections_ = 0;
  std::optional<std::chrono::milliseconds> delay_;
  QString notice_;
  std::map<QString, QStringList> details_;
  int hangAt_ = 0;
  Hearing hearing_ = Hearing::ObeysCancel;
  std::optional<Hearing> hangAtOpening_;
  int hangAtBatch_ = 0;
  int hanging_ = 0;
  int released_ = 0;
  int dropAt_ = 0;
  Drop drop_ = Drop::BeforeTheCall;
  qint32 refusedOpening_ = 0;
  int askAt_ = 0;
  Question question_;
  Question questionOfOpening_;
  std::optional<bool> answered_;
  std::vector<std::thread::id> endedOn_;
  std::vector<std::thread::id> calledOn_;
};

}  // namespace trevane::test
