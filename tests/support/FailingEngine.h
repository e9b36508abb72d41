#pragma once

#include "engine/model/IxoEngine.h"
#include "tests/support/FaultyFileSystem.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

namespace trevane::test {

/// The effect of the Nth call of the engine.
enum class EngineFault {
  /// Raises a RunTimeError without reaching the object.
  Raise,
  /// A member that answers an object answers none; any other raises.
  YieldNothing
};

/// Wraps an engine tree object by object, counts the calls of its members and makes the Nth go wrong. It also
/// knows which file objects of the wrapped engine are alive, which shows what was left cached.
class FailingEngine final : public IxoEngine {
 public:
  struct State;

  explicit FailingEngine(std::shared_ptr<IxoEngine> inner);
  ~FailingEngine() override;
  FailingEngine(const FailingEngine&) = delete;
  FailingEngine& operator=(const FailingEngine&) = delete;

  [[nodiscard]] std::shared_ptr<IxoWorkspaces> Workspaces() override;

  /// Counts anew: the `call`th call from here (1 is the next) fails.
  void Arm(int call, FaultSpan span = FaultSpan::Once, qint32 number = error::kTimeOut,
           EngineFault fault = EngineFault::Raise);
  void Disarm();
  /// How many calls failed since Arm.
  [[nodiscard]] int FaultCount() const;
  /// Runs when the first call since Arm fails: for objects that fail together with the engine.
  void SetOnFault(std::function<void()> hook);

  /// False makes it an engine that knows no IxoFile::List: the model's default is used.
  void SetKnowsList(bool on);
  /// False makes it an engine that knows contents only as whole values, and no links and batches.
  void SetKnowsContent(bool on);

  [[nodiscard]] int CallCount() const;
  /// "IxoFile.OpenFile" and so on, in order.
  [[nodiscard]] const QStringList& Calls() const;
  void ClearCalls();

  /// File objects of the wrapped engine that were handed out and are held by somebody still, be it the
  /// engine's own cache.
  [[nodiscard]] int LiveFiles() const;
  /// Their names, for the message of a failing test.
  [[nodiscard]] QStringList LiveFileNames() const;
  /// File objects of this wrapper that the program holds.
  [[nodiscard]] int HeldFiles() const;

 private:
  std::shared_ptr<IxoEngine> inner_;
  std::shared_ptr<State> state_;
};

}  // namespace trevane::test
