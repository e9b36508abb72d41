#pragma once

// The real window over the shipped providers, for controllers of a network.
#include "app/window/CommandBars.h"
#include "app/window/ToolBar.h"
#include "dialogs/WaitClock.h"
#include "dialogs/WindowWaiter.h"
#include "engine/providers/ProviderTable.h"
#include "engine/remote/RemoteContext.h"
#include "tests/app/window/MainWindowFixture.h"

#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

#include <chrono>
#include <memory>

namespace trevane::test {

/// A folder of its own stands for the user's home: known hosts, keys and trusted certificates are this
/// test's.
class NetworkStory : public MainWindowFixture {
 protected:
  NetworkStory() {
    qputenv("HOME", QFile::encodeName(home_.path()));
    qunsetenv("SSH_AUTH_SOCK");
    volumes_.Set({{QStringLiteral("C:"), QDir::toNativeSeparators(disk_.path() + u'/'), drivetype::kFixed}});
    createEngine_ = [this]() -> std::shared_ptr<IxoEngine> {
      RemoteContext* const remote = &threads_->context;
      return std::make_shared<SubstituteEngine>(
          ShippedProviders(volumes_, nullptr, remote, nullptr, {TrustFile()}), remote);
    };
  }
  ~NetworkStory() override {
    if (program_ && program_->Window()) {
      Quit();
    }
    qputenv("HOME", usualHome_);
    if (!usualAgent_.isNull()) {
      qputenv("SSH_AUTH_SOCK", usualAgent_);
    }
  }

  void Run(const QString& commandLine = {}) {
    threads_ = std::make_unique<Threads>(prompts_);
    waiter_ = &threads_->waiter;
    learnt_ = threads_->context.learnt;
    Start(commandLine);
  }
  void Quit() {
    Stop();
    EXPECT_TRUE(threads_->context.controllers->StopAll(std::chrono::seconds(20)));
    threads_.reset();
  }

  void PutOnDisk(const char* path, const QByteArray& content) {
    WriteFile(disk_.filePath(QString::fromLatin1(path)), content);
  }
  [[nodiscard]] QByteArray OnDisk(const char* path) const {
    return ContentOf(disk_.filePath(QString::fromLatin1(path)));
  }

  static void Type(QLineEdit* field, const QString& text) {
    ASSERT_NE(field, nullptr);
    field->selectAll();
    QTest::keyClick(field, Qt::Key_Delete);
    QTest::keyClicks(field, text);
  }
  /// Connects through the menu and the dialog.
  void Connect(const QString& providerName, const QString& name, const QString& machine,
               const QString& option, const QString& root) {
    QTimer::singleShot(0, Window(), [&] {
      auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(dialog, nullptr);
      auto* provider = dialog->findChild<QComboBox*>(QStringLiteral("cmbProvider"));
      const int row = provider->findText(providerName);
      ASSERT_GE(row, 0);
      provider->setCurrentIndex(row);
      Type(dialog->findChild<QComboBox*>(QStringLiteral("cmbController"))->lineEdit(), name);
      Type(dialog->findChild<QLineEdit*>(QStringLiteral("txtMachine")), machine);
      Type(dialog->findChild<QLineEdit*>(QStringLiteral("txtOption")), option);
      Type(dialog->findChild<QLineEdit*>(QStringLiteral("txtRoot")), root);
      QTest::mouseClick(dialog->findChild<QPushButton*>(QStringLiteral("cmdConnect")), Qt::LeftButton);
    });
    Trigger(CommandPlace::FileMenu, CommandId::Connect);
  }
  [[nodiscard]] QString TrustFile() const { return home_.filePath(QStringLiteral("Trevane.ini.trust")); }

  QTemporaryDir home_;
  QTemporaryDir disk_;

 private:
  /// What the process has for one run of the program.
  struct Threads {
    explicit Threads(UserPrompts& prompts)
        : waiter(queue, prompts, clock), context{queue, waiter, &prompts} {}

    WindowQueue queue;
    SystemWaitClock clock;
    WindowWaiter waiter;
    RemoteContext context;
  };

  const QByteArray usualHome_ = qgetenv("HOME");
  const QByteArray usualAgent_ = qgetenv("SSH_AUTH_SOCK");
  std::unique_ptr<Threads> threads_;
};

}  // namespace trevane::test
