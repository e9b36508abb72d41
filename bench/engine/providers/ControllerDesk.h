#pragma once

#include "dialogs/WaitClock.h"
#include "dialogs/WindowWaiter.h"
#include "engine/providers/ProviderTable.h"
#include "engine/remote/RemoteContext.h"
#include "tests/app/window/MainWindowFixture.h"
#include "views/bars/HistoryBox.h"

#include <QDir>
#include <QStringList>

#include <chrono>

namespace trevane::bench {

/// The program with its window and waiter, over the shipped providers: the drive C: is a folder, and the
/// controllers of a workspace file are connected. Nothing is asserted.
class ControllerDesk : public test::MainWindowFixture {
 public:
  /// `secrets` are the answers to the questions for passwords.
  ControllerDesk(const QString& drive, const QByteArray& workspace, const QStringList& secrets = {}) {
    volumes_.Set({{QStringLiteral("C:"), drive + u'/', drivetype::kFixed}});
    waiter_ = &waiterOfWindow_;
    learnt_ = context_.learnt;
    createEngine_ = [this]() -> std::shared_ptr<IxoEngine> {
      return std::make_shared<SubstituteEngine>(ShippedProviders(volumes_, nullptr, &context_), &context_);
    };
    Put("cells.fmg", workspace);
    prompts_.AnswerAllChoices(0);
    for (const QString& each : secrets) {
      prompts_.ExpectSecret({}, each);
    }
    Start(u'"' + InFolder("cells.fmg") + u'"');
  }
  ~ControllerDesk() override {
    program_->Window()->close();
    program_.reset();
    context_.controllers->StopAll(std::chrono::seconds(20));
  }
  ControllerDesk(const ControllerDesk&) = delete;
  ControllerDesk& operator=(const ControllerDesk&) = delete;
  void TestBody() override {}

  void Enter(const QString& address) {
    auto& box = Find<HistoryBox>("cmbAddress");
    box.setFocus();
    box.setEditText(address);
    QTest::keyClick(&box, Qt::Key_Return);
    Settle();
  }
  /// Opens the folder that is shown in the list.
  void EnterItem(const QString& name) {
    ClickItem(name);
    List().setFocus();
    QTest::keyClick(&List(), Qt::Key_Return);
    Settle();
  }
  void Do(CommandId id) {
    List().setFocus();
    Window()->Dispatch(id);
    Settle();
  }
  /// Copies an item of the folder to another; what is measured is `paste` alone.
  void TakeUp(const QString& from, const QString& name, const QString& to) {
    Enter(QStringLiteral("Workspace\\") + from);
    ClickItem(name);
    Do(CommandId::Copy);
    Enter(QStringLiteral("Workspace\\") + to);
  }
  void Paste() { Do(CommandId::Paste); }
  [[nodiscard]] int Rows() { return Window()->ListModel().rowCount(); }
  /// What was just learnt of the controllers is forgotten by then.
  static void LetTimePass() { QTest::qWait(2500); }

 private:
  static void Settle() {
    QTest::qWait(0);
    QCoreApplication::processEvents();
  }

  WindowQueue queue_;
  SystemWaitClock clock_;
  WindowWaiter waiterOfWindow_{queue_, prompts_, clock_};
  RemoteContext context_{queue_, waiterOfWindow_, &prompts_};
};

}  // namespace trevane::bench
