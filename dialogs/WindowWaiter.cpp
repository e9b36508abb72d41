#include "dialogs/WindowWaiter.h"

#include "dialogs/WaitClock.h"
#include "dialogs/WaitHost.h"
#include "dialogs/WaitingWindow.h"
#include "dialogs/frmGage.h"
#include "engine/remote/NestedCall.h"
#include "prompts/UserPrompts.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QMetaObject>
#include <QScopeGuard>

#include <utility>

namespace trevane {

namespace {

void ClosePopups() {
  while (QWidget* const popup = QApplication::activePopupWidget()) {
    popup->close();
    if (popup == QApplication::activePopupWidget()) {
      break;
    }
  }
}

}  // namespace

WindowWaiter::WindowWaiter(WindowQueue& queue, UserPrompts& prompts, WaitClock& clock)
    : queue_(queue),
      prompts_(prompts),
      clock_(clock),
      swallower_({.takesInput = [this](const QWidget& window) { return TakesInput(window); },
                  .choosesAnotherPlace =
                      [this](const QWidget& widget, const QPoint& position) {
                        return host_ != nullptr && host_->ChoosesAnotherPlace(widget, position);
                      },
                  .takesText =
                      [this](const QWidget& widget) {
                        return host_ != nullptr && host_->TakesAnotherAddress(widget);
                      },
                  .takesKey =
                      [this](const QWidget& widget, const QKeyEvent& key) {
                        return host_ != nullptr && host_->ChoosesAnotherPlace(widget, key);
                      },
                  .escPressed = [this] { EscPressed(); }}) {
  tick_.setInterval(kTick);
  connect(&tick_, &QTimer::timeout, this, &WindowWaiter::Turn);
  retry_.setInterval(kTick);
  retry_.setSingleShot(true);
  connect(&retry_, &QTimer::timeout, this, &WindowWaiter::EventsRan);
  queue_.SetQuestionOpener([this] {
    // An open menu would stand above it.
    if (call_ != nullptr) {
      BeginEvents();
    }
  });
}

WindowWaiter::~WindowWaiter() {
  queue_.SetQuestionOpener(nullptr);
  delete window_;
}

void WindowWaiter::SetMainWindow(QWidget* window, WaitHost* host) {
  delete window_;
  main_ = window;
  host_ = host;
}

void WindowWaiter::Wait(RunningCall& call) {
  Q_ASSERT(call_ == nullptr);
  call_ = &call;
  const qint64 now = clock_.Now();
  if (!std::exchange(inChain_, true)) {
    chainBegan_ = now;
  }
  gaugeWasClicked_ = prompts_.Gauge().IsClickedCancel();
  if (!prompts_.IsEnding()) {
    endingSince_ = -1;
  } else if (endingSince_ < 0) {
    // What is cleaned up at the end has a moment for it.
    endingSince_ = now;
  }
  if (std::exchange(cancelNext_, false)) {
    call.Cancel();
  }
  const auto end = qScopeGuard([this] { EndWait(); });
  call.Advance(now);
  if (!WaitQuietly()) {
    WaitWithEvents();
  }
  if (queue_.HasPosted()) {
    RunPosted();
  }
  if (eventsRun_ || (isSwallowing_ && clock_.Now() - now >= kQuiet)) {
    // Input that came until now belongs to what ends now.
    QCoreApplication::processEvents();
  }
}

void WindowWaiter::EndWait() {
  ShowTold(QString());
  told_.clear();
  if (std::exchange(isSwallowing_, false)) {
    tick_.stop();
    if (operations_ == 0) {
      swallower_.End();
    }
  }
  if (std::exchange(eventsRun_, false)) {
    queue_.SetWaker(nullptr);
    blocked_ = 0;
  }
  call_ = nullptr;
  EndChainLater();
}

void WindowWaiter::BeginOperation() {
  if (operations_++ == 0 && call_ == nullptr) {
    EndGestures();
    modalBefore_ = QApplication::activeModalWidget();
  }
}

void WindowWaiter::EndOperation() {
  if (--operations_ == 0 && call_ == nullptr) {
    const WithinCall within;
    // Input that came until now belongs to what ends now.
    QCoreApplication::processEvents();
    if (operations_ == 0) {
      swallower_.End();
    }
  }
}

void WindowWaiter::EndGestures() {
  swallower_.Begin();
  ClosePopups();
  if (host_ != nullptr) {
    host_->EndGestures();
  }
}

bool WindowWaiter::WaitQuietly() {
  if (blocked_ >= kQuietInARow) {
    return call_->IsOver();
  }
  const qint64 began = clock_.Now();
  qint64 now = began;
  while (!call_->IsOver() && now - began < kQuiet && !eventsRun_) {
    if (queue_.HasPosted()) {
      RunPosted();
    } else {
      clock_.Block(queue_, kQuiet - (now - began));
    }
    now = clock_.Now();
    call_->Advance(now);
  }
  blocked_ += now - began;
  return call_->IsOver();
}

void WindowWaiter::WaitWithEvents() {
  BeginEvents();
  for (;;) {
    RunPosted();
    Turn();
    if (call_->IsOver()) {
      return;
    }
    clock_.LetEventsRun();
  }
}

void WindowWaiter::RunPosted() {
  BeginSwallowing();
  queue_.RunPosted();
}

void WindowWaiter::BeginSwallowing() {
  if (!std::exchange(isSwallowing_, true)) {
    swallower_.Begin();
    modalBefore_ = QApplication::activeModalWidget();
    tick_.start();
  }
}

void WindowWaiter::BeginEvents() {
  if (std::exchange(eventsRun_, true)) {
    return;
  }
  // What is open now would take its input later, or act on something else.
  EndGestures();
  BeginSwallowing();
  pointer_.Show();
  QAbstractEventDispatcher* const dispatcher = QAbstractEventDispatcher::instance();
  queue_.SetWaker([dispatcher] { dispatcher->wakeUp(); });
}

void WindowWaiter::Turn() {
  if (call_ == nullptr) {
    return;
  }
  // Work that lets events run for so long is no quick one.
  BeginEvents();
  const qint64 now = clock_.Now();
  if (prompts_.IsEnding()) {
    EndCall(now);
  } else if (!gaugeWasClicked_ && prompts_.Gauge().IsClickedCancel()) {
    call_->Cancel();
  }
  call_->Advance(now);
  ShowProgress(now);
}

void WindowWaiter::EndCall(qint64 now) {
  if (endingSince_ < 0) {
    endingSince_ = now;
    call_->Cancel();
  }
  if (now - endingSince_ >= kLongestAtEnd) {
    call_->Abandon();
  }
}

void WindowWaiter::ShowProgress(qint64 now) {
  if (prompts_.IsAsking() || prompts_.IsEnding() || call_->IsOver()) {
    if (prompts_.IsAsking() || prompts_.IsEnding()) {
      HideProgress();
    }
    return;
  }
  pointer_.Show();
  if (Gauge() != nullptr) {
    if (window_ != nullptr) {
      window_->hide();
    }
    ShowTold(call_->Told());
    return;
  }
  if (now - chainBegan_ < kShowAfter) {
    return;
  }
  QWidget* const modal = QApplication::activeModalWidget();
  QWidget* const parent = modal != nullptr                         ? modal
                          : main_ != nullptr && main_->isVisible() ? main_.data()
                                                                   : nullptr;
  if (window_ != nullptr && window_->parentWidget() != parent) {
    delete window_;
  }
  if (window_ == nullptr && parent != nullptr && parent->window()->isMinimized()) {
    // It would stand there alone. It comes when the window below is back.
    return;
  }
  if (window_ == nullptr) {
    window_ = new WaitingWindow(parent);
    connect(window_, &WaitingWindow::Cancelled, this, &WindowWaiter::Cancel);
  }
  window_->ShowWaiting(call_->Controller(), call_->What(), !call_->IsCancelled());
}

void WindowWaiter::ShowTold(const QString& told) {
  const QString label = told.isEmpty() ? QString() : QStringLiteral("%1: %2").arg(call_->Controller(), told);
  frmGage* const gauge = label == told_ ? nullptr : Gauge();
  if (gauge == nullptr) {
    return;
  }
  if (told_.isEmpty()) {
    ownLabel_ = gauge->GageLabel();
  }
  // The operation may have set another one meanwhile.
  if (!label.isEmpty() || gauge->GageLabel() == told_) {
    gauge->SetGageLabel(label.isEmpty() ? ownLabel_ : label);
  }
  told_ = label;
}

void WindowWaiter::HideProgress() {
  pointer_.Hide();
  if (window_ != nullptr) {
    window_->hide();
  }
}

bool WindowWaiter::IsCancelling() const {
  return call_ != nullptr && call_->IsCancelled();
}

void WindowWaiter::Cancel() {
  if (call_ == nullptr) {
    // Pressed between two calls of a command.
    cancelNext_ = window_ != nullptr && window_->isVisible();
  } else {
    CancelRunning();
  }
}

void WindowWaiter::CancelRunning() {
  if (call_ == nullptr) {
    return;
  }
  call_->Cancel();
  if (window_ != nullptr) {
    window_->ShowCancelling();
  }
}

void WindowWaiter::EscPressed() {
  if (frmGage* const gauge = Gauge()) {
    gauge->reject();
  } else {
    Cancel();
  }
}

frmGage* WindowWaiter::Gauge() {
  const QWidgetList windows = QApplication::topLevelWidgets();
  for (QWidget* const window : windows) {
    auto* const gauge = qobject_cast<frmGage*>(window);
    if (gauge != nullptr && gauge->CanCancel()) {
      connect(gauge, &frmGage::Cancelled, this, &WindowWaiter::CancelRunning, Qt::UniqueConnection);
      return gauge;
    }
  }
  return nullptr;
}

bool WindowWaiter::TakesInput(const QWidget& window) const {
  const QWidget* const modal = QApplication::activeModalWidget();
  const QWidget* const question = modal != modalBefore_ ? modal : nullptr;
  for (const QWidget* each = &window; each != nullptr; each = each->parentWidget()) {
    const auto* const gauge = qobject_cast<const frmGage*>(each);
    if (each == window_ || each == question || (gauge != nullptr && gauge->isVisible())) {
      return true;
    }
    // The list that drops down from a box.
    if (each != main_ && host_ != nullptr && host_->TakesAnotherAddress(*each)) {
      return true;
    }
  }
  return false;
}

void WindowWaiter::EndChainLater() {
  if (!std::exchange(endPosted_, true)) {
    QMetaObject::invokeMethod(this, &WindowWaiter::EventsRan, Qt::QueuedConnection);
  }
}

void WindowWaiter::EventsRan() {
  endPosted_ = false;
  if (call_ != nullptr) {
    return;
  }
  blocked_ = 0;
  if (host_ != nullptr && host_->IsInCommand() && !prompts_.IsAsking() && !prompts_.IsEnding()) {
    // A command that lets events run between its calls.
    retry_.start();
    return;
  }
  CommandEnded();
}

void WindowWaiter::CommandEnded() {
  if (call_ == nullptr && std::exchange(inChain_, false)) {
    cancelNext_ = false;
    HideProgress();
  }
}

}  // namespace trevane
