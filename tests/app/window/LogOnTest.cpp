// Controllers that ask the user something while they connect, and what the window shows of a connection.
#include "tests/app/window/RealPromptsWorld.h"
#include "tests/app/window/WaitingWorld.h"

#include <QComboBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QTimer>

#include <algorithm>
#include <optional>

namespace trevane::test {
namespace {

const QString kNotConnected = QStringLiteral("Failed in connecting to the controller( %1 ).");

SecretQuestion PasswordOf(const QString& name) {
  return {.title = QStringLiteral("Log on to ") + name,
          .prompt = QStringLiteral("Password of joe on ") + name,
          .offersRemember = true};
}

/// Connects with this password, and else not.
ScriptedServer::Question AskPassword(const QString& name, const QString& right) {
  return [name, right](UserPrompts& prompts) {
    const std::optional<SecretAnswer> answer = prompts.AskSecret(PasswordOf(name));
    if (!answer) {
      throw RunTimeError(error::kCancelled, QString());
    }
    if (answer->secret != Secret(QStringView(right))) {
      throw RunTimeError(error::kLogonFailure, QStringLiteral("The password was refused"));
    }
  };
}

void Type(QWidget& window, const char* text) {
  for (; *text != 0; ++text) {
    QTest::keyClick(window.windowHandle(), *text);
  }
}

TEST(LogOnTest, ThePasswordWindowStandsOverTheWait) {
  RealPromptsWorld world;
  ScriptedServer& cell = world.Cell(0);
  cell.HangAtOpening(ScriptedServer::Hearing::ObeysCancel);
  cell.AskAtOpening(AskPassword(RealPromptsWorld::Name(0), QStringLiteral("s3cret")));
  const QString file = world.File(1);
  world.program.StartWith(QString());
  ASSERT_NE(world.program.Window(), nullptr);
  world.prompts.SetMainWindow(world.program.Window());
  bool isAnswered = false;
  bool wasWaiting = false;
  world.clock.onTurn = [&] {
    // The opening has been slow before it asks.
    if (!wasWaiting && cell.IsHanging()) {
      wasWaiting = true;
      cell.Release();
    }
  };
  QElapsedTimer shownFor;
  QTimer typist;
  QObject::connect(&typist, &QTimer::timeout, world.program.Window(), [&] {
    QWidget* const window = VisibleWindow(QStringLiteral("frmSecret"));
    if (window == nullptr || isAnswered) {
      return;
    }
    // The wait takes back what it shows with its next tick.
    if (!shownFor.isValid()) {
      shownFor.start();
    }
    if (QApplication::overrideCursor() != nullptr && shownFor.elapsed() < 5000) {
      return;
    }
    isAnswered = true;
    EXPECT_EQ(QApplication::activeModalWidget(), window);
    EXPECT_EQ(VisibleWindow(QStringLiteral("frmWaiting")), nullptr);
    EXPECT_EQ(QApplication::overrideCursor(), nullptr) << "nothing is waited for but the user";
    QWidget* const gauge = VisibleWindow(QStringLiteral("frmGage"));
    ASSERT_NE(gauge, nullptr);
    EXPECT_FALSE(window->frameGeometry().intersects(gauge->frameGeometry()));
    // Input for the window below is dropped, that for the question is not.
    QTest::keyClick(world.program.Window()->windowHandle(), Qt::Key_F5);
    Type(*window, "s3cret");
    Click(*window, "cmdOK");
  });
  typist.start(1);
  EXPECT_TRUE(world.program.Window()->Workspace().OpenWorkspace(file));
  EXPECT_TRUE(wasWaiting);
  EXPECT_TRUE(isAnswered);
  EXPECT_EQ(world.program.Session().gIxoCtrls().Count(), 2);
  EXPECT_EQ(VisibleWindow(QStringLiteral("frmSecret")), nullptr);
}

TEST(LogOnTest, ThePasswordWindowTakesThePlaceOfTheWaitingWindow) {
  RealPromptsWorld world;
  ScriptedServer& cell = world.Cell(0);
  cell.HangAtOpening(ScriptedServer::Hearing::ObeysCancel);
  cell.AskAtOpening(AskPassword(RealPromptsWorld::Name(0), QStringLiteral("s3cret")));
  world.program.StartWith(QString());
  ASSERT_NE(world.program.Window(), nullptr);
  world.prompts.SetMainWindow(world.program.Window());
  int waited = 0;
  bool isAnswered = false;
  QTimer user;
  QObject::connect(&user, &QTimer::timeout, world.program.Window(), [&] {
    QWidget* const waiting = VisibleWindow(QStringLiteral("frmWaiting"));
    QWidget* const secret = VisibleWindow(QStringLiteral("frmSecret"));
    if (waiting != nullptr && cell.IsHanging()) {
      ++waited;
      cell.Release();
    } else if (secret != nullptr && waiting == nullptr && !isAnswered) {
      isAnswered = true;
      EXPECT_EQ(QApplication::activeModalWidget(), secret);
      Type(*secret, "s3cret");
      QTest::keyClick(secret->windowHandle(), Qt::Key_Return);
    }
  });
  user.start(5);
  QTimer::singleShot(0, world.program.Window(), [] {
    QWidget* const dialog = VisibleWindow(QStringLiteral("frmConnIxoCtrl"));
    ASSERT_NE(dialog, nullptr);
    dialog->findChild<QComboBox*>(QStringLiteral("cmbProvider"))
        ->setCurrentText(QStringLiteral("IxoProv.Slow"));
    dialog->findChild<QLineEdit*>(QStringLiteral("txtMachine"))->setText(RealPromptsWorld::Name(0));
    Click(*dialog, "cmdConnect");
  });
  world.program.Window()->Dispatch(CommandId::Connect);
  EXPECT_GE(waited, 1);
  EXPECT_TRUE(isAnswered);
  EXPECT_EQ(world.program.Session().gIxoCtrls().Count(), 2);
  EXPECT_EQ(VisibleWindow(QStringLiteral("frmWaiting")), nullptr);
}

TEST(LogOnTest, CancelOfTheGaugeWithdrawsThePasswordWindow) {
  RealPromptsWorld world;
  world.Cell(0).AskAtOpening(AskPassword(RealPromptsWorld::Name(0), QStringLiteral("s3cret")));
  const QString file = world.File(1);
  world.program.StartWith(QString());
  world.prompts.SetMainWindow(world.program.Window());
  bool wasShown = false;
  QTimer user;
  QObject::connect(&user, &QTimer::timeout, world.program.Window(), [&] {
    QWidget* const gauge = VisibleWindow(QStringLiteral("frmGage"));
    if (VisibleWindow(QStringLiteral("frmSecret")) != nullptr && gauge != nullptr && !wasShown) {
      wasShown = true;
      Click(*gauge, "cmdCancel");
    }
  });
  user.start(1);
  EXPECT_TRUE(world.program.Window()->Workspace().OpenWorkspace(file));
  EXPECT_TRUE(wasShown);
  EXPECT_EQ(world.program.Session().gIxoCtrls().Count(), 1);
  EXPECT_EQ(VisibleWindow(QStringLiteral("frmSecret")), nullptr);
}

TEST(LogOnTest, AWorkspaceAsksForOneControllerAfterTheOther) {
  WaitingWorld world;
  world.server->AskAtOpening(AskPassword(QStringLiteral("Robot"), QStringLiteral("same")));
  world.cellServer->AskAtOpening(AskPassword(QStringLiteral("Cell"), QStringLiteral("same")));
  world.prompts_.ExpectSecret(QString(), QStringLiteral("same"));
  world.prompts_.ExpectSecret(QString(), QStringLiteral("same"));
  int open = 0;
  world.prompts_.onQuestion = [&](const AskedQuestion& question) {
    EXPECT_EQ(open++, 0) << question.text.toStdString();
    EXPECT_EQ(question.kind, AskedQuestion::Kind::Secret);
    EXPECT_TRUE(question.isHidden);
    // The other one comes meanwhile.
    for (int i = 0; i < 50; ++i) {
      QCoreApplication::processEvents(QEventLoop::AllEvents, 2);
    }
    --open;
  };
  world.Connect("both.fmg");
  QStringList texts = world.prompts_.Texts();
  std::sort(texts.begin(), texts.end());
  EXPECT_EQ(texts, QStringList({PasswordOf(QStringLiteral("Cell")).prompt,
                                PasswordOf(QStringLiteral("Robot")).prompt}));
  EXPECT_EQ(world.program_->Session().gIxoCtrls().Count(), 3);
}

TEST(LogOnTest, ACancelledQuestionLeavesOutThatControllerAlone) {
  WaitingWorld world;
  world.server->AskAtOpening(AskPassword(QStringLiteral("Robot"), QStringLiteral("x")));
  world.prompts_.ExpectCancelledSecret(PasswordOf(QStringLiteral("Robot")).prompt);
  world.prompts_.ExpectBox(kNotConnected.arg(QStringLiteral("Robot")));
  world.Connect("both.fmg");
  ASSERT_EQ(world.prompts_.Asked().size(), 2U);
  EXPECT_EQ(world.prompts_.Asked()[1].informativeText, QStringLiteral("Robot\nCancelled."));
  EXPECT_EQ(world.prompts_.Asked()[1].icon, PromptIcon::Exclamation);
  EXPECT_EQ(world.program_->Session().gIxoCtrls().Count(), 2);
  EXPECT_NE(world.Node(QStringLiteral("Workspace\\Cell")), nullptr);
  const FolderTreeModel& tree = world.Window()->TreeModel();
  EXPECT_EQ(tree.ImageKey(world.Node(WaitingWorld::Robot())), QStringLiteral("ERRCONTROLLER"));
}

TEST(LogOnTest, ARefusedLogOnGivesItsReasonInBoxAndStatusLine) {
  WaitingWorld world;
  world.server->AskAtOpening(AskPassword(QStringLiteral("Robot"), QStringLiteral("right")));
  world.prompts_.ExpectSecret(QString(), QStringLiteral("wrong"));
  world.prompts_.ExpectBox(kNotConnected.arg(QStringLiteral("Robot")));
  world.Connect();
  ASSERT_EQ(world.prompts_.Asked().size(), 2U);
  EXPECT_EQ(world.prompts_.Asked()[1].informativeText, QStringLiteral("Robot\nThe password was refused"));
  EXPECT_EQ(world.Window()->findChild<QLabel*>(QStringLiteral("sbarMainText"))->text(),
            QStringLiteral("The password was refused"));
}

TEST(LogOnTest, ANoticeStandsInTheStatusBarWhileItsControllerIsShown) {
  WaitingWorld world;
  const QString notice = QStringLiteral("Old algorithms are in use: <b>not</b> safe.");
  world.server->SetNotice(notice);
  world.ShowRobot("both.fmg");
  auto* const bar = world.Window()->findChild<QWidget*>(QStringLiteral("sbarMainNotice"));
  auto* const text = world.Window()->findChild<QLabel*>(QStringLiteral("sbarMainNoticeText"));
  ASSERT_NE(bar, nullptr);
  EXPECT_TRUE(bar->isVisible());
  EXPECT_EQ(text->text(), notice);
  EXPECT_EQ(text->textFormat(), Qt::PlainText);
  EXPECT_TRUE(bar->toolTip().contains(QStringLiteral("&lt;b&gt;"))) << "its tooltip is no markup";
  world.ClickNode(WaitingWorld::Robot(QStringLiteral("programs")));
  EXPECT_TRUE(bar->isVisible());
  for (const char* const other : {"Workspace\\Cell", "Workspace", "Workspace\\My Computer"}) {
    world.ClickNode(QString::fromLatin1(other));
    EXPECT_FALSE(bar->isVisible()) << other;
  }
  world.ClickNode(WaitingWorld::Robot());
  EXPECT_TRUE(bar->isVisible());
}

TEST(LogOnTest, PropertiesTellWhatElseIsKnownForAtMostTwoRoundTrips) {
  WaitingWorld world;
  const QStringList ofFile{QStringLiteral("Owner: joe"), QStringLiteral("Permissions: rw-r--r--")};
  const QStringList ofController{QStringLiteral("Server: OpenSSH")};
  world.server->SetDetails(QStringLiteral("readme.txt"), ofFile);
  world.server->SetDetails(QString(), ofController);
  world.ShowRobot();
  world.ClickItem(QStringLiteral("readme.txt"));
  world.server->ClearCalls();
  world.Window()->Dispatch(CommandId::Properties);
  ASSERT_EQ(world.prompts_.ShownProperties().size(), 1U);
  EXPECT_EQ(world.prompts_.ShownProperties()[0].details, ofFile);
  EXPECT_LE(world.server->RoundTrips(), 2) << world.server->Calls().join(u'\n').toStdString();

  world.ClickNode(WaitingWorld::Robot());
  world.Tree().setFocus();
  world.server->ClearCalls();
  world.Window()->Dispatch(CommandId::Properties);
  ASSERT_EQ(world.prompts_.ShownProperties().size(), 2U);
  EXPECT_EQ(world.prompts_.ShownProperties()[1].details, ofController);
  EXPECT_EQ(world.prompts_.ShownProperties()[1].labels.size(), 5);
  EXPECT_LE(world.server->RoundTrips(), 2) << world.server->Calls().join(u'\n').toStdString();
}

TEST(LogOnTest, PropertiesOfADeadControllerGiveTheReason) {
  WaitingWorld world;
  world.ShowRobot();
  world.Tree().setFocus();
  world.server->RefuseOpening(error::kLogonFailure);
  world.server->DropAt(1);
  world.Window()->Dispatch(CommandId::Properties);
  ASSERT_EQ(world.prompts_.ShownProperties().size(), 1U);
  const PropertyTable& table = world.prompts_.ShownProperties()[0];
  EXPECT_EQ(table.values.value(0), QStringLiteral("Robot"));
  ASSERT_EQ(table.details.size(), 1);
  EXPECT_TRUE(table.details[0].startsWith(QStringLiteral("No more can be read: ")))
      << table.details[0].toStdString();
}

}  // namespace
}  // namespace trevane::test
