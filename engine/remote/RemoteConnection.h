#pragma once

#include "engine/files/Provider.h"
#include "engine/remote/ControllerLink.h"
#include "engine/remote/RemoteContext.h"

#include <concepts>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace trevane {

/// A controller's calls on a thread of its own, and its connections one after the other: when the line dies
/// the next call makes a new one. The window's thread's alone.
class RemoteConnection final : public std::enable_shared_from_this<RemoteConnection> {
 public:
  using Task = ControllerThread::Task;

  /// How the controller is connected, the first time and again. `name` is that of the controller for texts.
  struct Opening {
    QString name;
    std::function<std::shared_ptr<FileSystem>(const FileSystemRequest&)> open;
    FileSystemRequest request = {};
    /// Describes the type of an item by its entry alone, on the window's thread; null for the default.
    std::function<QString(const FileEntry&)> typeName = {};
    /// What `name` is the name of.
    QString noun = QStringLiteral("controller");
    /// Nothing is heard of the bytes while the system writes them to a medium, however slow: no silence is
    /// counted in calls that write. Cancel ends them.
    bool tellsNoWriting = false;
  };

  /// What a call is for, as texts name it, and the item that it is about.
  struct Purpose {
    QString what;
    QString path;
    bool writes = false;
    /// It is about the top: people are told the controller's name behind `what`.
    bool isOfTop = false;
  };

  enum class Kind {
    /// Changes nothing: it is tried once more over a new connection when the line died.
    Reading,
    /// Is never repeated.
    Writing
  };

  /// How a call ended on its thread.
  struct Ending {
    std::optional<RunTimeError> failure = {};
    /// There was no connection before it, and none could be made.
    bool isOfOpening = false;
  };

  /// A call that the thread works at, or has in its queue.
  class Pending {
   public:
    [[nodiscard]] const std::shared_ptr<RunningCall>& Call() const noexcept { return call_; }

   private:
    friend class RemoteConnection;
    std::shared_ptr<RunningCall> call_;
    std::shared_ptr<ControllerLink> link_;
    /// The worker writes it before the call is done.
    std::shared_ptr<Ending> ending_;
    Purpose purpose_;
  };

  /// Why a call failed. After `lineDied` the connection was given up.
  struct Failure {
    RunTimeError error;
    bool lineDied = false;
    /// The connection was never made.
    bool isOfOpening = false;
  };

  RemoteConnection(RemoteContext& context, Opening opening);
  ~RemoteConnection();
  RemoteConnection(const RemoteConnection&) = delete;
  RemoteConnection& operator=(const RemoteConnection&) = delete;

  [[nodiscard]] const QString& Name() const noexcept { return opening_.name; }
  [[nodiscard]] const Opening& How() const noexcept { return opening_; }
  [[nodiscard]] RemoteContext& Context() const noexcept { return context_; }

  /// Runs `work(bench)` on the thread, waits for it and returns its result. `work` is copied and must hold
  /// nothing but values: a thread that was given up may still run it.
  template <std::invocable<Workbench&> Work>
  auto Run(Kind kind, const Purpose& purpose, const Work& work) -> std::invoke_result_t<Work, Workbench&>;

  /// As Run for work that talks back meanwhile: `begin` makes the task for one attempt.
  void RunTask(Kind kind, const Purpose& purpose, const std::function<Task(RunningCall& call)>& begin);

  /// The current connection; a new one where there is none. Nothing is waited for.
  [[nodiscard]] std::shared_ptr<ControllerLink> Link();
  /// A number for an object that a task keeps on the workbench, the same on each connection.
  [[nodiscard]] quint64 NewNumber() noexcept { return ++lastNumber_; }
  /// The thread ends that object. Nothing is waited for.
  void Drop(quint64 number);
  [[nodiscard]] bool IsConnected() const noexcept { return link_ && !link_->IsGivenUp(); }
  /// The last connection was given up, and no call has asked for a new one since.
  [[nodiscard]] bool HasLostLine() const noexcept { return hasLostLine_ || (link_ && link_->IsGivenUp()); }
  /// The results of a call show that its line died: gives the connection up. False for other failures.
  bool GiveUpAfter(const RunTimeError& failure);

  /// Puts a task into the queue of `link`. Refused while a call is waited for.
  [[nodiscard]] std::shared_ptr<Pending> Start(const std::shared_ptr<ControllerLink>& link,
                                               const Purpose& purpose,
                                               const std::function<Task(RunningCall& call)>& begin);
  [[nodiscard]] std::shared_ptr<Pending> Start(const std::shared_ptr<ControllerLink>& link,
                                               const Purpose& purpose, Task task);
  /// As Start, for a part of what is being waited for.
  [[nodiscard]] std::shared_ptr<Pending> StartPart(const std::shared_ptr<ControllerLink>& link,
                                                   const Purpose& purpose,
                                                   const std::function<Task(RunningCall& call)>& begin);
  /// Waits for it, where it has not ended yet.
  [[nodiscard]] std::optional<Failure> Settle(Pending& pending);
  /// As Settle when the waiting is over.
  [[nodiscard]] std::optional<Failure> Result(Pending& pending);

 private:
  void GiveUp(ControllerLink& link);
  void RequireNotWaiting(const Purpose& purpose) const;

  RemoteContext& context_;
  const Opening opening_;
  std::shared_ptr<ControllerLink> link_;
  quint64 lastNumber_ = 0;
  bool hasLostLine_ = false;
  /// The last call ended because nothing was heard.
  bool isSilent_ = false;
};

template <std::invocable<Workbench&> Work>
auto RemoteConnection::Run(Kind kind, const Purpose& purpose, const Work& work)
    -> std::invoke_result_t<Work, Workbench&> {
  using Answer = std::invoke_result_t<Work, Workbench&>;
  if constexpr (std::is_void_v<Answer>) {
    RunTask(kind, purpose, [&work](RunningCall&) { return Task(work); });
  } else {
    // One for each attempt: a thread that was given up may write into its own later.
    std::shared_ptr<std::optional<Answer>> answer;
    RunTask(kind, purpose, [&](RunningCall&) {
      answer = std::make_shared<std::optional<Answer>>();
      return Task([answer, work](Workbench& bench) { answer->emplace(work(bench)); });
    });
    return *std::move(*answer);
  }
}

}  // namespace trevane
