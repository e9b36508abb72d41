#include "dialogs/Prompts.h"
#include "dialogs/SecretEdit.h"
#include "dialogs/SelectableText.h"
#include "dialogs/frmSecret.h"

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QFontMetrics>
#include <QKeySequence>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <memory>

namespace trevane {
namespace {

const SecretQuestion kPassword = {.title = QStringLiteral("Log on to cell 4"),
                                  .prompt = QStringLiteral("Password of joe on cell4:22"),
                                  .offersRemember = true};

struct SecretWindowTest : testing::Test {
  SecretWindowTest() {
    main.show();
    prompts.SetMainWindow(&main);
  }

  /// Asks, and calls `act` with the window on the screen.
  template <typename Act>
  std::optional<SecretAnswer> Ask(const SecretQuestion& question, Act act) {
    bool seen = false;
    QTimer::singleShot(0, &main, [&] {
      auto* window = qobject_cast<frmSecret*>(QApplication::activeModalWidget());
      seen = window != nullptr;
      ASSERT_TRUE(seen);
      act(*window);
    });
    const std::optional<SecretAnswer> answer = prompts.AskSecret(question);
    EXPECT_TRUE(seen);
    EXPECT_EQ(main.findChild<frmSecret*>(), nullptr);
    return answer;
  }

  static SecretEdit& Edit(frmSecret& window) {
    return *window.findChild<SecretEdit*>(QStringLiteral("txtSecret"));
  }
  static QCheckBox* Remember(frmSecret& window) {
    return window.findChild<QCheckBox*>(QStringLiteral("chkRemember"));
  }
  static QPushButton& Button(frmSecret& window, const char* name) {
    return *window.findChild<QPushButton*>(QLatin1StringView(name));
  }

  QWidget main;
  Prompts prompts{[](qint32) {}, [](qint32) {}};
};

TEST_F(SecretWindowTest, WhatIsTypedIsHiddenAndIsTheAnswerToEnter) {
  const auto answer = Ask(kPassword, [this](frmSecret& window) {
    EXPECT_EQ(window.windowTitle(), QStringLiteral("Log on to cell 4"));
    EXPECT_EQ(window.parentWidget(), &main);
    EXPECT_TRUE(window.isModal());
    EXPECT_EQ(window.findChild<QLabel*>(QStringLiteral("lblPrompt"))->text(), kPassword.prompt);
    EXPECT_EQ(window.findChild<SelectableText*>(), nullptr);
    EXPECT_EQ(Edit(window).echoMode(), QLineEdit::Password);
    EXPECT_TRUE(Edit(window).inputMethodHints().testFlag(Qt::ImhHiddenText));
    EXPECT_TRUE(Edit(window).hasFocus() || window.focusWidget() == &Edit(window));
    QTest::keyClicks(&Edit(window), QStringLiteral("s3cret "));
    Edit(window).insert(QStringLiteral("\u00E4\u65E5"));
    EXPECT_FALSE(Edit(window).displayText().contains(u's'));
    QTest::keyClick(&Edit(window), Qt::Key_Return);
  });
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->secret, Secret(u"s3cret \u00E4\u65E5"));
  EXPECT_FALSE(answer->remember);
}

TEST_F(SecretWindowTest, AnAnswerThatIsNoSecretIsShownAsItIsTyped) {
  SecretQuestion question = kPassword;
  question.isHidden = false;
  question.offersRemember = false;
  const auto answer = Ask(question, [](frmSecret& window) {
    EXPECT_EQ(Edit(window).echoMode(), QLineEdit::Normal);
    EXPECT_FALSE(Edit(window).inputMethodHints().testFlag(Qt::ImhHiddenText));
    EXPECT_TRUE(Edit(window).inputMethodHints().testFlag(Qt::ImhNoPredictiveText));
    EXPECT_EQ(Remember(window), nullptr);
    QTest::keyClicks(&Edit(window), QStringLiteral("123456"));
    EXPECT_EQ(Edit(window).displayText(), QStringLiteral("123456"));
    Button(window, "cmdOK").click();
  });
  EXPECT_EQ(answer->secret, Secret(u"123456"));
}

TEST_F(SecretWindowTest, AnEmptySecretIsAnAnswer) {
  const auto answer = Ask(kPassword, [](frmSecret& window) { Button(window, "cmdOK").click(); });
  ASSERT_TRUE(answer);
  EXPECT_TRUE(answer->secret.Bytes().isEmpty());
}

TEST_F(SecretWindowTest, EscTheCloseBoxAndCancelAnswerNothing) {
  const auto type = [](frmSecret& window) { QTest::keyClicks(&Edit(window), QStringLiteral("abc")); };
  EXPECT_FALSE(Ask(kPassword, [&](frmSecret& window) {
    type(window);
    QTest::keyClick(&Edit(window), Qt::Key_Escape);
  }));
  EXPECT_FALSE(Ask(kPassword, [&](frmSecret& window) {
    type(window);
    window.close();
  }));
  EXPECT_FALSE(Ask(kPassword, [&](frmSecret& window) {
    type(window);
    Button(window, "cmdCancel").click();
  }));
}

TEST_F(SecretWindowTest, AWithdrawnQuestionAnswersNothing) {
  EXPECT_FALSE(Ask(kPassword, [this](frmSecret& window) {
    QTest::keyClicks(&Edit(window), QStringLiteral("abc"));
    prompts.WithdrawQuestions();
  }));
  prompts.End(UserPrompts::Ending::ByUser);
  EXPECT_FALSE(prompts.AskSecret(kPassword));
}

TEST_F(SecretWindowTest, AQuestionDeletedWithItsWindowAnswersNothing) {
  auto parent = std::make_unique<QWidget>();
  parent->show();
  prompts.SetMainWindow(parent.get());
  EXPECT_FALSE(Ask(kPassword, [&parent](frmSecret&) { parent.reset(); }));
}

TEST_F(SecretWindowTest, TheBoxRemembersOnRequestOnly) {
  const auto answer = Ask(kPassword, [](frmSecret& window) {
    ASSERT_NE(Remember(window), nullptr);
    EXPECT_TRUE(Remember(window)->isEnabled());
    EXPECT_FALSE(Remember(window)->isChecked());
    EXPECT_FALSE(Remember(window)->toolTip().isEmpty());
    Remember(window)->click();
    Button(window, "cmdOK").click();
  });
  EXPECT_TRUE(answer->remember);
}

TEST_F(SecretWindowTest, ABoxThatIsOffSaysWhy) {
  SecretQuestion question = kPassword;
  question.whyNotRemember = QStringLiteral("The password store is locked.");
  const auto answer = Ask(question, [&question](frmSecret& window) {
    ASSERT_NE(Remember(window), nullptr);
    EXPECT_FALSE(Remember(window)->isEnabled());
    EXPECT_EQ(Remember(window)->toolTip(), question.whyNotRemember);
    EXPECT_EQ(Remember(window)->accessibleDescription(), question.whyNotRemember);
    EXPECT_EQ(window.findChild<QLabel*>(QStringLiteral("lblWhyNot"))->text(), question.whyNotRemember);
    Remember(window)->click();
    Button(window, "cmdOK").click();
  });
  EXPECT_FALSE(answer->remember);
}

TEST_F(SecretWindowTest, TheServersWordsAreTextAndNothingElse) {
  SecretQuestion question = kPassword;
  question.prompt = QStringLiteral("<b>Password</b>\x1B[2J:");
  question.informativeText = QStringLiteral("<h1>Cell 4</h1>\r\nexe\u202Etxt\a");
  Ask(question, [](frmSecret& window) {
    const auto* prompt = window.findChild<QLabel*>(QStringLiteral("lblPrompt"));
    EXPECT_EQ(prompt->textFormat(), Qt::PlainText);
    EXPECT_EQ(prompt->text(), QStringLiteral("<b>Password</b>\u241B[2J:"));
    const auto* words = window.findChild<SelectableText*>(QStringLiteral("txtWords"));
    ASSERT_NE(words, nullptr);
    EXPECT_EQ(words->toPlainText(), QStringLiteral("<h1>Cell 4</h1>\nexe\uFFFDtxt\u2407"));
    EXPECT_EQ(Edit(window).accessibleName(), prompt->text());
    EXPECT_EQ(Edit(window).accessibleDescription(), words->toPlainText());
    window.reject();
  });
}

TEST_F(SecretWindowTest, TextsWithoutEndStayOnTheScreen) {
  SecretQuestion question = kPassword;
  question.title = QString(50000, u't');
  question.prompt = QString(50000, u'p');
  question.informativeText = QStringLiteral("words of the server\n").repeated(5000);
  question.whyNotRemember = QString(50000, u'y');
  Ask(question, [](frmSecret& window) {
    const QSize screen = window.screen()->availableGeometry().size();
    EXPECT_LE(window.height(), screen.height());
    EXPECT_LE(window.width(), screen.width());
    auto* words = window.findChild<SelectableText*>();
    EXPECT_LE(words->height(), SelectableText::kMostLines * words->fontMetrics().lineSpacing());
    EXPECT_TRUE(words->verticalScrollBar()->isVisible());
    EXPECT_GT(words->verticalScrollBar()->maximum(), 10);
    for (const QWidget* each : window.findChildren<QWidget*>(QString(), Qt::FindDirectChildrenOnly)) {
      EXPECT_TRUE(window.rect().contains(each->geometry())) << each->objectName().toStdString();
    }
    window.reject();
  });
}

TEST_F(SecretWindowTest, TheServersWordsCanBeCopiedByKeys) {
  SecretQuestion question = kPassword;
  question.informativeText = QStringLiteral("One line and\nanother one");
  Ask(question, [&question](frmSecret& window) {
    auto* words = window.findChild<SelectableText*>();
    words->setFocus();
    QTest::keySequence(words, QKeySequence::SelectAll);
    QTest::keySequence(words, QKeySequence::Copy);
    EXPECT_EQ(QApplication::clipboard()->text(), question.informativeText);
    QTest::keyClicks(words, QStringLiteral("x"));
    EXPECT_EQ(words->toPlainText(), question.informativeText);
    QTest::keyClick(words, Qt::Key_Escape);
  });
}

struct SecretEditTest : testing::Test {
  void Use(bool isHidden) {
    edit = std::make_unique<SecretEdit>(isHidden);
    edit->show();
    QApplication::clipboard()->setText(QStringLiteral("before"));
  }

  std::unique_ptr<SecretEdit> edit;
};

TEST_F(SecretEditTest, NothingIsCopiedCutOrUndone) {
  for (const bool isHidden : {true, false}) {
    Use(isHidden);
    QTest::keyClicks(edit.get(), QStringLiteral("s3cret"));
    edit->selectAll();
    QTest::keySequence(edit.get(), QKeySequence::Copy);
    QTest::keySequence(edit.get(), QKeySequence::Cut);
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("before"));
    QTest::keySequence(edit.get(), QKeySequence::Undo);
    QTest::keySequence(edit.get(), QKeySequence::Redo);
    EXPECT_EQ(edit->text(), QStringLiteral("s3cret"));
    EXPECT_FALSE(edit->dragEnabled());
    EXPECT_FALSE(edit->acceptDrops());
  }
}

TEST_F(SecretEditTest, ASecretCanBePasted) {
  Use(true);
  QTest::keySequence(edit.get(), QKeySequence::Paste);
  EXPECT_EQ(edit->Typed(), Secret(u"before"));
}

TEST_F(SecretEditTest, ItsMenuOffersNothingButPasting) {
  Use(true);
  QStringList offered;
  QTimer::singleShot(0, edit.get(), [&] {
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    for (const QAction* action : menu->actions()) {
      offered += action->text();
    }
    menu->setActiveAction(menu->actions().front());
    QTest::keyClick(menu, Qt::Key_Return);
  });
  QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(), edit->mapToGlobal(QPoint()));
  QApplication::sendEvent(edit.get(), &event);
  EXPECT_EQ(offered, QStringList{QStringLiteral("&Paste")});
  EXPECT_EQ(edit->text(), QStringLiteral("before"));
}

TEST_F(SecretEditTest, WipingOverwritesTheCharactersThemselves) {
  Use(true);
  QTest::keyClicks(edit.get(), QStringLiteral("s3cret"));
  const QString shared = edit->text();
  edit->Wipe();
  EXPECT_TRUE(edit->text().isEmpty());
  EXPECT_EQ(shared, QString(6, QChar(u'\0'))) << "who shares the characters sees them overwritten";
  edit->undo();
  EXPECT_TRUE(edit->text().isEmpty());
}

TEST_F(SecretEditTest, ItIsLimited) {
  Use(true);
  edit->insert(QString(5000, u'x'));
  EXPECT_EQ(edit->text().size(), SecretEdit::kLongest);
}

}  // namespace
}  // namespace trevane
