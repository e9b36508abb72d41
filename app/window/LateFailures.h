#pragma once

#include "prompts/ShowFailure.h"

#include <QObject>
#include <QTimer>

#include <functional>
#include <vector>

namespace trevane {

class UserPrompts;

/// Failures to open a file that the system reports only later. Each is shown as soon as nothing else runs or
/// is open, and none once the program is ending.
class LateFailures final : public QObject {
  Q_OBJECT

 public:
  /// `isBusy` reports that no box may be opened now. All of it outlives this object.
  LateFailures(UserPrompts& prompts, ReasonLine& reasonLine, std::function<bool()> isBusy);

  void Add(const Failure& failure);

 private:
  void ShowNext();

  UserPrompts& prompts_;
  ReasonLine& reasonLine_;
  std::function<bool()> isBusy_;
  std::vector<Failure> failures_;
  /// Runs as long as there are failures.
  QTimer timer_;
};

}  // namespace trevane
