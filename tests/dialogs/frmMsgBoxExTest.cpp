#include "dialogs/SelectableText.h"
#include "dialogs/frmMsgBoxEx.h"

#include <QApplication>
#include <QClipboard>
#include <QKeyEvent>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <cmath>
#include <memory>

namespace trevane {
namespace {

const QStringList kFour = {QStringLiteral("Yes(&Y)"), QStringLiteral("Yes All(&A)"), QStringLiteral("No(&N)"),
                           QStringLiteral("Cancel")};

int Pixels(double twips) {
  return int(std::lround(twips / 15));
}

void Press(QWidget* where, Qt::Key key, const QString& text = {},
           Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
  QKeyEvent press(QEvent::KeyPress, key, modifiers, text);
  QApplication::sendEvent(where, &press);
}

struct MsgBoxExTest : testing::Test {
  MsgBoxExTest() {
    box.SetPrompt(QStringLiteral("Overwrite the file?"));
    box.SetButtons(kFour);
  }

  /// Shows the box and calls `act` while it is on the screen.
  template <typename Act>
  int Show(Act act) {
    bool seen = false;
    QTimer::singleShot(0, &box, [&] {
      seen = box.isVisible();
      buttons = box.findChildren<QPushButton*>(QStringLiteral("cmd"));
      act();
    });
    const int answer = box.ShowBox();
    EXPECT_TRUE(seen);
    return answer;
  }

  std::vector<qint32> beeps;
  frmMsgBoxEx box{[this](qint32 sound) { beeps.push_back(sound); }};
  QList<QPushButton*> buttons;
};

TEST_F(MsgBoxExTest, AnswersThePositionOfTheButtonPressed) {
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(Show([&] { buttons[i]->click(); }), i);
  }
}

TEST_F(MsgBoxExTest, IsModalAndShowsPromptAndCaptions) {
  Show([&] {
    EXPECT_TRUE(box.isModal());
    EXPECT_EQ(box.findChild<QLabel*>(QStringLiteral("lblMsg"))->text(),
              QStringLiteral("Overwrite the file?"));
    ASSERT_EQ(buttons.size(), 4);
    for (int i = 0; i < 4; ++i) {
      EXPECT_EQ(buttons[i]->text(), kFour[i]);
    }
    buttons[0]->click();
  });
  EXPECT_FALSE(box.isVisible());
}

TEST_F(MsgBoxExTest, ALongCaptionWidensOnlyItsOwnButton) {
  const QString longCaption = QStringLiteral("A caption that is a good deal longer than the others");
  box.SetButtons({QStringLiteral("A"), longCaption, QStringLiteral("B")});
  Show([&] {
    EXPECT_EQ(buttons[0]->width(), Pixels(1000));
    EXPECT_EQ(buttons[1]->width(), Pixels(box.fontMetrics().horizontalAdvance(longCaption) * 15 + 400));
    EXPECT_EQ(buttons[2]->width(), Pixels(1000));
    buttons[0]->click();
  });
}

TEST_F(MsgBoxExTest, ButtonsKeepTheirDistances) {
  Show([&] {
    const auto* message = box.findChild<QLabel*>(QStringLiteral("lblMsg"));
    for (int i = 0; i < 4; ++i) {
      EXPECT_EQ(buttons[i]->y(), message->y() + message->height() + Pixels(500));
      if (i > 0) {
        // Left edges are reckoned in twips and rounded each for itself.
        EXPECT_NEAR(buttons[i]->x() - buttons[i - 1]->x() - buttons[i - 1]->width(), 100.0 / 15, 1.0);
      }
    }
    buttons[0]->click();
  });
}

TEST_F(MsgBoxExTest, TheRowIsCentredAndTheWindowHoldsMessageAndRow) {
  for (const QString& prompt : {QStringLiteral("?"), QString(40, u'W') + u' ' + QString(300, u'x')}) {
    box.SetPrompt(prompt);
    box.SetMsgIcon(QStringLiteral("Question"));
    Show([&] {
      const int left = buttons.first()->x();
      const int right = box.width() - (buttons.last()->x() + buttons.last()->width());
      EXPECT_NEAR(left, right, 1);
      const QRect inside = box.rect().adjusted(8, 8, -8, -8);
      EXPECT_TRUE(inside.contains(box.findChild<QLabel*>(QStringLiteral("lblMsg"))->geometry()));
      for (const QPushButton* button : buttons) {
        EXPECT_TRUE(inside.contains(button->geometry()));
        EXPECT_TRUE(button->isVisible());
      }
      buttons[0]->click();
    });
  }
}

TEST_F(MsgBoxExTest, AVeryLongPathIsBrokenIntoLinesAndStaysOnTheScreen) {
  box.SetPrompt(QStringLiteral("Workspace\\My Computer\\C:\\") + QString(4000, u'm'));
  Show([&] {
    const QSize screen = box.screen()->availableGeometry().size();
    EXPECT_LE(box.height(), screen.height());
    const auto* message = box.findChild<QLabel*>(QStringLiteral("lblMsg"));
    EXPECT_GT(message->height(), box.fontMetrics().height() * 10);
    buttons[0]->click();
  });
}

TEST_F(MsgBoxExTest, ThePromptIsNeverShownAsMarkup) {
  box.SetPrompt(QStringLiteral("<b>x</b> & y"));
  Show([&] {
    const auto* message = box.findChild<QLabel*>(QStringLiteral("lblMsg"));
    EXPECT_EQ(message->text(), QStringLiteral("<b>x</b> & y"));
    EXPECT_EQ(message->textFormat(), Qt::PlainText);
    buttons[0]->click();
  });
}

TEST_F(MsgBoxExTest, AnInformativeTextStandsBelowThePromptAndCanBeCopied) {
  const QString fingerprint = QStringLiteral("SHA256:uNiVztksCsDhcc0u9e8BgrJXVGDOIrXe5pOlQ2lRRSo");
  box.SetInformativeText(QStringLiteral("<i>Key</i> of cell4:22\n") + fingerprint);
  box.SetMsgIcon(QStringLiteral("Question"));
  Show([&] {
    const auto* message = box.findChild<QLabel*>(QStringLiteral("lblMsg"));
    auto* informative = box.findChild<SelectableText*>(QStringLiteral("txtInformative"));
    ASSERT_NE(informative, nullptr);
    EXPECT_EQ(informative->toPlainText(), box.InformativeText());
    EXPECT_GT(informative->y(), message->y() + message->height());
    EXPECT_EQ(buttons[0]->y(), informative->y() + informative->height() + Pixels(500));
    EXPECT_FALSE(informative->verticalScrollBar()->isVisible());
    EXPECT_TRUE(box.rect().adjusted(8, 8, -8, -8).contains(informative->geometry()));
    EXPECT_TRUE(buttons[0]->hasFocus() || box.focusWidget() == buttons[0]);
    informative->moveCursor(QTextCursor::End);
    informative->moveCursor(QTextCursor::StartOfBlock, QTextCursor::KeepAnchor);
    QTest::keySequence(informative, QKeySequence::Copy);
    EXPECT_EQ(QApplication::clipboard()->text(), fingerprint);
    // An access key works there, too, since nothing can be typed.
    Press(informative, Qt::Key_N, QStringLiteral("n"));
  });
  EXPECT_TRUE(box.findChildren<SelectableText*>().isEmpty());
}

TEST_F(MsgBoxExTest, EnterInTheInformativeTextPressesTheDefaultButton) {
  box.SetInformativeText(QStringLiteral("x"));
  box.SetDefault(2);
  EXPECT_EQ(Show([&] { Press(box.findChild<SelectableText*>(), Qt::Key_Return); }), 2);
}

TEST_F(MsgBoxExTest, AnInformativeTextWithoutEndIsScrolled) {
  box.SetInformativeText(QStringLiteral("line\n").repeated(10000));
  Show([&] {
    EXPECT_LE(box.height(), box.screen()->availableGeometry().height());
    EXPECT_TRUE(box.findChild<SelectableText*>()->verticalScrollBar()->isVisible());
    buttons[0]->click();
  });
}

TEST_F(MsgBoxExTest, TheFramesCloseBoxAnswersTheCancelButton) {
  box.SetCANCEL(1);
  EXPECT_EQ(Show([&] { EXPECT_FALSE(box.close() && box.isVisible()); }), 1);
}

TEST_F(MsgBoxExTest, EscAnswersTheCancelButton) {
  box.SetCANCEL(1);
  box.SetDefault(0);
  EXPECT_EQ(Show([&] { Press(buttons[3], Qt::Key_Escape); }), 1);
}

TEST_F(MsgBoxExTest, EnterPressesTheDefaultButton) {
  box.SetDefault(2);
  EXPECT_EQ(Show([&] {
              EXPECT_TRUE(buttons[2]->isDefault());
              Press(&box, Qt::Key_Return);
            }),
            2);
}

TEST_F(MsgBoxExTest, AnAccessKeyPressesItsButtonWithoutAlt) {
  EXPECT_EQ(Show([&] { Press(buttons[0], Qt::Key_A, QStringLiteral("a")); }), 1);
  EXPECT_EQ(Show([&] { Press(buttons[0], Qt::Key_N, QStringLiteral("n")); }), 2);
}

TEST_F(MsgBoxExTest, AnEmptyIconGivesNoPictureAndNoSound) {
  Show([&] {
    EXPECT_EQ(box.findChild<QLabel*>(QStringLiteral("imgMsg")), nullptr);
    buttons[0]->click();
  });
  EXPECT_TRUE(beeps.empty());
}

TEST_F(MsgBoxExTest, EachIconHasItsPictureAndItsSound) {
  const std::pair<QString, qint32> rows[] = {{QStringLiteral("Question"), 32},
                                             {QStringLiteral("Exclamation"), 48},
                                             {QStringLiteral("Information"), 64},
                                             {QStringLiteral("Critical"), 16}};
  for (const auto& [key, sound] : rows) {
    beeps.clear();
    box.SetMsgIcon(key);
    Show([&] {
      const auto* picture = box.findChild<QLabel*>(QStringLiteral("imgMsg"));
      ASSERT_NE(picture, nullptr);
      EXPECT_FALSE(picture->pixmap(Qt::ReturnByValue).isNull());
      EXPECT_EQ(picture->size(), QSize(32, 32));
      buttons[0]->click();
    });
    EXPECT_EQ(beeps, std::vector<qint32>{sound});
  }
}

TEST_F(MsgBoxExTest, AnEmptyTitleIsTheApplicationsAndAnotherItself) {
  Show([&] {
    EXPECT_EQ(box.windowTitle(), QStringLiteral("Trevane"));
    buttons[0]->click();
  });
  box.SetTitle(QStringLiteral("Copy"));
  Show([&] {
    EXPECT_EQ(box.windowTitle(), QStringLiteral("Copy"));
    buttons[0]->click();
  });
}

TEST_F(MsgBoxExTest, ButtonsDoNotPileUpFromUseToUse) {
  Show([&] { buttons[0]->click(); });
  EXPECT_TRUE(box.findChildren<QPushButton*>().isEmpty());
  box.SetButtons({QStringLiteral("One"), QStringLiteral("Two")});
  Show([&] {
    EXPECT_EQ(buttons.size(), 2);
    buttons[0]->click();
  });
}

TEST_F(MsgBoxExTest, IndexesWithoutAButtonCountAsTheNearestOne) {
  box.SetDefault(9);
  box.SetCANCEL(-3);
  EXPECT_EQ(Show([&] {
              EXPECT_TRUE(buttons[3]->isDefault());
              box.close();
            }),
            0);
}

TEST_F(MsgBoxExTest, CanBeAnsweredWhileTheWindowBelowIsDisabled) {
  QWidget main;
  main.show();
  main.setEnabled(false);
  auto* above = new frmMsgBoxEx([](qint32) {}, &main);
  above->SetButtons(kFour);
  QTimer::singleShot(0, above,
                     [above] { above->findChildren<QPushButton*>(QStringLiteral("cmd"))[2]->click(); });
  EXPECT_EQ(above->ShowBox(), 2);
}

TEST_F(MsgBoxExTest, AnswersCancelWhenItsParentIsDeleted) {
  auto main = std::make_unique<QWidget>();
  main->show();
  const QPointer<frmMsgBoxEx> above = new frmMsgBoxEx([](qint32) {}, main.get());
  above->SetButtons(kFour);
  above->SetCANCEL(3);
  QTimer::singleShot(0, &box, [&main] { main.reset(); });
  EXPECT_EQ(above->ShowBox(), 3);
  EXPECT_TRUE(above.isNull());
}

}  // namespace
}  // namespace trevane
