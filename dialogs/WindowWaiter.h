#pragma once

#include "dialogs/InputSwallower.h"
#include "dialogs/WaitPointer.h"
#include "engine/remote/CallWaiter.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

namespace trevane {

class UserPrompts;
class WaitClock;
class WaitHost;
class WaitingWindow;
class WindowQueue;
class frmGage;

/// Keeps the window alive while a call runs on a controller's thread.
///
/// A quick call is waited for without an event loop. Then events run: the windows paint, the pointer shows
/// that the program waits, and input that is not meant for the gauge, the waiting window or a question is
/// swallowed. The gauge of the operation, or after a moment a waiting window, offers to cancel the call; Esc
/// and the end of the program cancel it, too.
///
/// Calls that follow each other without a return to the program's event loop are one wait to the user: the
/// pointer and the window stay between them.
class WindowWaiter final : public QObject, public CallWaiter {
  Q_OBJECT

 public:
  /// Milliseconds.
  static constexpr qint64 kQuiet = 20;
  static constexpr qint64 kQuietInARow = 50;
  static constexpr int kTick = 100;
  static constexpr qint64 kShowAfter = 500;
  /// For all calls together, once the program is ending.
  static constexpr qint64 kLongestAtEnd = 500;

  /// All of them outlive this object.
  WindowWaiter(WindowQueue& queue, UserPrompts& prompts, WaitClock& clock);
  ~WindowWaiter() override;

  /// The window that the waiting window is shown above, and its part in a wait; null for none, also while
  /// the program has no window.
  void SetMainWindow(QWidget* window, WaitHost* host);

  void Wait(RunningCall& call) override;
  [[nodiscard]] bool IsWaiting() const override { return call_ != nullptr; }

  /// An operation begins that works within the window's thread and lets events run now and then: input is
  /// swallowed as in a wait, also what is pressed while no event runs. Every call needs an EndOperation.
  void BeginOperation();
  void EndOperation();

  /// The call that is waited for was told to end.
  [[nodiscard]] bool IsCancelling() const;
  /// The call that is waited for is to end; between two calls the next one, where the waiting window is
  /// shown.
  void Cancel();
  /// No command is on the stack any more.
  void CommandEnded();

 private:
  /// True when the call is over.
  [[nodiscard]] bool WaitQuietly();
  void WaitWithEvents();
  void EndWait();
  void EndGestures();
  /// What was posted may let events run, and be quick nevertheless: input is swallowed, and nothing shows.
  void RunPosted();
  void BeginSwallowing();
  /// Before events in a call that is not quick.
  void BeginEvents();
  /// Once a turn of the event loop and at least every kTick, also while a question is open.
  void Turn();
  void EndCall(qint64 now);
  void ShowProgress(qint64 now);
  void HideProgress();
  /// In place of the gauge's own label, as long as the worker tells something.
  void ShowTold(const QString& told);
  void EscPressed();
  /// The gauge keeps in mind itself that its Cancel was pressed between two calls.
  void CancelRunning();
  /// The program's event loop has run since the last call, as far as it is known.
  void EventsRan();
  void EndChainLater();
  [[nodiscard]] bool TakesInput(const QWidget& window) const;
  /// The operation's gauge, if its Cancel can be pressed.
  [[nodiscard]] frmGage* Gauge();

  WindowQueue& queue_;
  UserPrompts& prompts_;
  WaitClock& clock_;
  InputSwallower swallower_;
  WaitPointer pointer_;
  QPointer<QWidget> main_;
  WaitHost* host_ = nullptr;
  QPointer<WaitingWindow> window_;
  QTimer tick_;
  /// Looks again whether the command has ended.
  QTimer retry_;

  /// Null while nothing is waited for.
  RunningCall* call_ = nullptr;
  bool eventsRun_ = false;
  bool isSwallowing_ = false;
  int operations_ = 0;
  /// Cancel was pressed before this call.
  bool gaugeWasClicked_ = false;
  /// The dialog that was open before events ran, which is none of a question's.
  QPointer<QWidget> modalBefore_;
  /// Since when the program is ending; -1 before.
  qint64 endingSince_ = -1;

  /// What the gauge shows for a worker, and its own label meanwhile; both empty for none.
  QString told_;
  QString ownLabel_;

  /// Of the calls that follow each other.
  bool inChain_ = false;
  bool endPosted_ = false;
  bool cancelNext_ = false;
  qint64 chainBegan_ = 0;
  /// So long no event ran.
  qint64 blocked_ = 0;
};

}  // namespace trevane
