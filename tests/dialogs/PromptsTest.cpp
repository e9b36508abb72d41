#include "dialogs/BesideGauge.h"
#include "dialogs/Prompts.h"
#include "dialogs/frmMsgBoxEx.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <ostream>

namespace trevane {
namespace {

using namespace Qt::StringLiterals;

struct PromptsTest : testing::Test {
  PromptsTest() { main.show(); }

  /// Asks, and calls `act` with the box that stands on the screen.
  template <typename Act>
  PromptAnswer Ask(PromptButtons buttons, Act act, PromptIcon icon = PromptIcon::Exclamation,
                   const QString& title = {}) {
    bool seen = false;
    QTimer::singleShot(0, &main, [&] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      seen = box != nullptr;
      ASSERT_TRUE(seen);
      act(*box);
    });
    const PromptAnswer answer = prompts.MessageBox(u"Failed in copy operation."_s, icon, buttons, title);
    EXPECT_TRUE(seen);
    return answer;
  }

  QWidget main;
  std::vector<qint32> beeps;
  Prompts prompts{[this](qint32 sound) { beeps.push_back(sound); }, [](qint32) {}};
};

void PressEscape(QWidget& where) {
  QKeyEvent press(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
  QApplication::sendEvent(&where, &press);
}

TEST_F(PromptsTest, ABoxShowsTextIconAndTheApplicationsNameAsTitle) {
  Ask(PromptButtons::Ok, [](QMessageBox& box) {
    EXPECT_EQ(box.text(), u"Failed in copy operation."_s);
    EXPECT_EQ(box.icon(), QMessageBox::Warning);
    EXPECT_EQ(box.windowTitle(), u"Trevane"_s);
    EXPECT_EQ(box.standardButtons(), QMessageBox::Ok);
    box.button(QMessageBox::Ok)->click();
  });
}

TEST_F(PromptsTest, ItemAndReasonStandBelowTheTextAndAreNoMarkup) {
  const QString reason = u"<b>a.pac</b>\nThe disk is full."_s;
  QTimer::singleShot(0, &main, [&] {
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->text(), u"Failed in copy operation."_s);
    EXPECT_EQ(box->informativeText(), reason);
    const auto labels = box->findChildren<QLabel*>();
    const auto label = std::find_if(labels.begin(), labels.end(),
                                    [&reason](const QLabel* one) { return one->text() == reason; });
    ASSERT_NE(label, labels.end());
    EXPECT_EQ((*label)->textFormat(), Qt::PlainText);
    box->button(QMessageBox::Ok)->click();
  });
  prompts.ShowMessage(
      {.text = u"Failed in copy operation."_s, .icon = PromptIcon::Exclamation, .informativeText = reason});
}

TEST_F(PromptsTest, EnterPressesTheDefaultThatAQuestionNames) {
  QTimer::singleShot(0, &main, [] {
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    ASSERT_NE(box, nullptr);
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QApplication::sendEvent(box, &press);
  });
  EXPECT_EQ(prompts.ShowMessage({.text = u"Remove this file?"_s,
                                 .icon = PromptIcon::Question,
                                 .buttons = PromptButtons::YesNo,
                                 .defaultAnswer = PromptAnswer::No}),
            PromptAnswer::No);
}

TEST_F(PromptsTest, TheWindowBehindABoxGivesTheFocusBack) {
  prompts.SetMainWindow(&main);
  Ask(PromptButtons::Ok, [this](QMessageBox& box) {
    EXPECT_TRUE(QTest::qWaitForWindowActive(&box));
    const QSignalSpy changes(qGuiApp, &QGuiApplication::focusWindowChanged);
    main.activateWindow();
    EXPECT_TRUE(QTest::qWaitFor([&] { return changes.size() >= 2 && box.isActiveWindow(); }, 2000));
    box.button(QMessageBox::Ok)->click();
  });
}

TEST_F(PromptsTest, ABoxWithATitleShowsIt) {
  Ask(
      PromptButtons::Ok,
      [](QMessageBox& box) {
        EXPECT_EQ(box.windowTitle(), u"About"_s);
        box.button(QMessageBox::Ok)->click();
      },
      PromptIcon::Information, u"About"_s);
}

TEST_F(PromptsTest, EachIconIsTheSystemsOfThatMeaning) {
  const std::pair<PromptIcon, QMessageBox::Icon> rows[] = {
      {PromptIcon::None, QMessageBox::NoIcon},
      {PromptIcon::Critical, QMessageBox::Critical},
      {PromptIcon::Question, QMessageBox::Question},
      {PromptIcon::Exclamation, QMessageBox::Warning},
      {PromptIcon::Information, QMessageBox::Information}};
  for (const auto& row : rows) {
    Ask(
        PromptButtons::Ok,
        [&row](QMessageBox& box) {
          EXPECT_EQ(box.icon(), row.second);
          box.button(QMessageBox::Ok)->click();
        },
        row.first);
  }
}

struct ButtonRow {
  const char* name;
  PromptButtons buttons;
  QMessageBox::StandardButton button;
  const char* text;
  PromptAnswer answer;
};

void PrintTo(const ButtonRow& row, std::ostream* out) {
  *out << row.name;
}

class PromptButton : public PromptsTest, public testing::WithParamInterface<ButtonRow> {};

TEST_P(PromptButton, HasItsEnglishTextAndGivesItsAnswer) {
  const ButtonRow& row = GetParam();
  const PromptAnswer answer = Ask(row.buttons, [&row](QMessageBox& box) {
    ASSERT_NE(box.button(row.button), nullptr);
    EXPECT_EQ(box.button(row.button)->text(), QLatin1StringView(row.text));
    box.button(row.button)->click();
  });
  EXPECT_EQ(answer, row.answer);
}

INSTANTIATE_TEST_SUITE_P(
    Prompts, PromptButton,
    testing::Values(
        ButtonRow{"OkAlone", PromptButtons::Ok, QMessageBox::Ok, "OK", PromptAnswer::Ok},
        ButtonRow{"OkOfOkCancel", PromptButtons::OkCancel, QMessageBox::Ok, "OK", PromptAnswer::Ok},
        ButtonRow{"CancelOfOkCancel", PromptButtons::OkCancel, QMessageBox::Cancel, "Cancel",
                  PromptAnswer::Cancel},
        ButtonRow{"Retry", PromptButtons::RetryCancel, QMessageBox::Retry, "&Retry", PromptAnswer::Retry},
        ButtonRow{"CancelOfRetryCancel", PromptButtons::RetryCancel, QMessageBox::Cancel, "Cancel",
                  PromptAnswer::Cancel},
        ButtonRow{"Yes", PromptButtons::YesNo, QMessageBox::Yes, "&Yes", PromptAnswer::Yes},
        ButtonRow{"No", PromptButtons::YesNo, QMessageBox::No, "&No", PromptAnswer::No}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(PromptsTest, EscAndTheCloseBoxGiveTheAnswerThatDoesNothing) {
  const std::pair<PromptButtons, PromptAnswer> rows[] = {{PromptButtons::Ok, PromptAnswer::Ok},
                                                         {PromptButtons::OkCancel, PromptAnswer::Cancel},
                                                         {PromptButtons::RetryCancel, PromptAnswer::Cancel},
                                                         {PromptButtons::YesNo, PromptAnswer::No}};
  for (const auto& [buttons, answer] : rows) {
    EXPECT_EQ(Ask(buttons, [](QMessageBox& box) { PressEscape(box); }), answer);
    EXPECT_EQ(Ask(buttons, [](QMessageBox& box) { box.close(); }), answer);
  }
}

TEST_F(PromptsTest, TextIsNeverReadAsMarkup) {
  QTimer::singleShot(0, &main, [] {
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->textFormat(), Qt::PlainText);
    EXPECT_EQ(box->text(), u"<h1>a&amp;b</h1>"_s);
    box->button(QMessageBox::Ok)->click();
  });
  prompts.MessageBox(u"<h1>a&amp;b</h1>"_s, PromptIcon::None);
}

TEST_F(PromptsTest, ABoxIsModalToTheMainWindow) {
  prompts.SetMainWindow(&main);
  Ask(PromptButtons::Ok, [this](QMessageBox& box) {
    EXPECT_EQ(box.parentWidget(), &main);
    EXPECT_EQ(box.windowModality(), Qt::WindowModal);
    box.button(QMessageBox::Ok)->click();
  });
}

TEST_F(PromptsTest, ABoxStandsAloneWhileTheMainWindowIsNotShown) {
  main.hide();
  prompts.SetMainWindow(&main);
  Ask(PromptButtons::Ok, [](QMessageBox& box) {
    EXPECT_EQ(box.parentWidget(), nullptr);
    EXPECT_TRUE(box.isModal());
    box.button(QMessageBox::Ok)->click();
  });
}

TEST_F(PromptsTest, ABoxOutOfADialogStandsAboveTheDialog) {
  prompts.SetMainWindow(&main);
  QDialog dialog(&main);
  QTimer::singleShot(0, &main, [&] {
    Ask(PromptButtons::Ok, [&dialog](QMessageBox& box) {
      EXPECT_EQ(box.parentWidget(), &dialog);
      box.button(QMessageBox::Ok)->click();
    });
    dialog.reject();
  });
  dialog.exec();
}

TEST_F(PromptsTest, ABoxWhoseParentGoesAnswersAsEscDoes) {
  auto parent = std::make_unique<QWidget>();
  parent->show();
  prompts.SetMainWindow(parent.get());
  EXPECT_EQ(Ask(PromptButtons::OkCancel, [&parent](QMessageBox&) { parent.reset(); }), PromptAnswer::Cancel);
  // And the next one knows that the window is gone.
  Ask(PromptButtons::Ok, [](QMessageBox& box) {
    EXPECT_EQ(box.parentWidget(), nullptr);
    box.button(QMessageBox::Ok)->click();
  });
}

TEST_F(PromptsTest, AChoiceIsAskedInTheExtendedBox) {
  prompts.SetMainWindow(&main);
  QTimer::singleShot(0, &main, [this] {
    auto* box = qobject_cast<frmMsgBoxEx*>(QApplication::activeModalWidget());
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->parentWidget(), &main);
    EXPECT_EQ(box->Prompt(), u"Overwrite?"_s);
    EXPECT_EQ(box->windowTitle(), u"Copy"_s);
    EXPECT_EQ(box->MsgIcon(), u"Question"_s);
    EXPECT_EQ(box->Default(), 2);
    EXPECT_EQ(box->CANCEL(), 1);
    EXPECT_EQ(box->findChildren<QPushButton*>(u"cmd"_s).size(), 3);
    box->close();
  });
  const int answer =
      prompts.Choose({u"Overwrite?"_s, u"Copy"_s, PromptIcon::Question, {u"A"_s, u"B"_s, u"C"_s}, 2, 1});
  EXPECT_EQ(answer, 1);
  EXPECT_EQ(beeps, std::vector<qint32>{32});
  EXPECT_TRUE(main.findChildren<frmMsgBoxEx*>().isEmpty());
}

TEST_F(PromptsTest, TheFileDialogOffersItsFiltersAndAllFilesAreAllWithADotOrWithout) {
  QStringList filters;
  QString title;
  QTimer::singleShot(0, &main, [&] {
    auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
    ASSERT_NE(dialog, nullptr);
    filters = dialog->nameFilters();
    title = dialog->windowTitle();
    EXPECT_EQ(dialog->selectedNameFilter(), filters.value(0));
    dialog->reject();
  });
  const FileQuestion question{.mode = FileQuestion::Mode::Open,
                              .title = u"Open"_s,
                              .filter = u"FileMgr File (*.fmg)|*.fmg|All Files (*.*)|*.*"_s,
                              .fileName = {},
                              .initialFolder = QDir::tempPath()};
  EXPECT_EQ(prompts.ChooseFile(question), QString());
  EXPECT_EQ(title, u"Open"_s);
  EXPECT_EQ(filters, (QStringList{u"FileMgr File (*.fmg)"_s, u"All Files (*)"_s}));
}

/// A click as the window system reports it, which a modal window keeps from the windows it blocks.

TEST_F(PromptsTest, TheGaugeIsAWindowAboveTheMainWindow) {
  prompts.SetMainWindow(&main);
  prompts.Gauge().ShowGage(u"Open Controllers"_s);
  auto* window = main.findChild<frmGage*>();
  ASSERT_NE(window, nullptr);
  EXPECT_EQ(window->windowTitle(), u"Open Controllers"_s);
  prompts.Gauge().UnloadGage();
  EXPECT_EQ(main.findChild<frmGage*>(), nullptr);
}

/// The question with four buttons: Esc presses "Yes All", and the end of the program does not.
ChoiceQuestion Remove() {
  return {.prompt = u"Remove?"_s,
          .title = u"Remove"_s,
          .icon = PromptIcon::Information,
          .captions = {u"Yes(&Y)"_s, u"Yes All(&A)"_s, u"No(&N)"_s, u"Cancel"_s},
          .defaultButton = 0,
          .cancelButton = 1,
          .harmlessButton = 3};
}

TEST_F(PromptsTest, BoxesOnTopOfEachOtherEndTogether) {
  PromptAnswer box = PromptAnswer::Yes;
  int choice = 0;
  bool settingsShown = false;
  bool fileAsked = false;
  QString file = u"none"_s;
  QTimer::singleShot(0, &main, [&] {
    QTimer::singleShot(0, &main, [&] {
      QTimer::singleShot(0, &main, [&] {
        QTimer::singleShot(0, &main, [&] {
          settingsShown = QApplication::activeModalWidget()->objectName() == u"frmSetting"_s;
          EXPECT_TRUE(prompts.IsAsking());
          prompts.End(UserPrompts::Ending::ByUser);
        });
        prompts.ShowSettings();
      });
      file = prompts.ChooseFile(FileQuestion{});
      fileAsked = true;
    });
    choice = prompts.Choose(Remove());
  });
  box = prompts.MessageBox(u"Remove this file?"_s, PromptIcon::Question, PromptButtons::YesNo);
  EXPECT_EQ(box, PromptAnswer::No);
  EXPECT_EQ(choice, 3);
  EXPECT_TRUE(settingsShown);
  EXPECT_TRUE(fileAsked);
  EXPECT_EQ(file, QString());
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
  EXPECT_FALSE(prompts.IsAsking());
}

TEST_F(PromptsTest, NobodyIsAskedAfterTheEndHasBegun) {
  prompts.End(UserPrompts::Ending::ByUser);
  EXPECT_EQ(prompts.MessageBox(u"?"_s, PromptIcon::Question, PromptButtons::OkCancel), PromptAnswer::Cancel);
  EXPECT_EQ(prompts.MessageBox(u"?"_s, PromptIcon::Question, PromptButtons::RetryCancel),
            PromptAnswer::Cancel);
  EXPECT_EQ(prompts.MessageBox(u"?"_s, PromptIcon::Question, PromptButtons::YesNo), PromptAnswer::No);
  EXPECT_EQ(prompts.Choose(Remove()), 3);
  EXPECT_EQ(prompts.ChooseFile({}), QString());
  prompts.ShowSettings();
  prompts.ShowProperties({});
  EXPECT_TRUE(prompts.IsCancelled());
  for (const QWidget* window : QApplication::topLevelWidgets())
    EXPECT_TRUE(window == &main || !window->isVisible()) << window->objectName().toStdString();
}

TEST_F(PromptsTest, ALastWordIsShownToTheUserWhoClosesAlone) {
  const Message message{.text = u"Failed Save Ini File."_s, .isLastWord = true};
  int shown = 0;
  prompts.End(UserPrompts::Ending::ByUser);
  for (int i = 0; i < 2; ++i) {
    QTimer::singleShot(0, &main, [&shown] {
      if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
        ++shown;
        box->button(QMessageBox::Ok)->click();
      }
    });
    EXPECT_EQ(prompts.ShowMessage(message), PromptAnswer::Ok);
    QApplication::processEvents();
    prompts.End(UserPrompts::Ending::BySystem);
    prompts.End(UserPrompts::Ending::ByUser);
  }
  EXPECT_EQ(shown, 1);
}

TEST_F(PromptsTest, AQuestionThatGoesWithItsWindowIsAnsweredCancel) {
  auto* window = new QWidget;
  window->show();
  prompts.SetMainWindow(window);
  QTimer::singleShot(0, &main, [window] { delete window; });
  EXPECT_EQ(prompts.Choose(Remove()), 3);
}

struct GaugeAndQuestionTest : PromptsTest {
  GaugeAndQuestionTest() {
    main.resize(600, 400);
    prompts.SetMainWindow(&main);
    prompts.Gauge().ShowGage(u"COPY Files/Directories"_s);
    prompts.Gauge().CancelEnable(true);
    main.setEnabled(false);
    QApplication::processEvents();
    gauge = main.findChild<frmGage*>();
  }

  void PressCancel() {
    auto* cancel = gauge->findChild<QPushButton*>(u"cmdCancel"_s);
    // Through the window system's door: a window that a modal one blocks hears nothing.
    QTest::mouseClick(gauge->windowHandle(), Qt::LeftButton, {}, cancel->geometry().center());
  }

  /// What holds while a question stands.
  void ExpectBeside() {
    const QWidget* question = QApplication::activeModalWidget();
    ASSERT_NE(question, nullptr);
    EXPECT_FALSE(question->frameGeometry().intersects(gauge->frameGeometry()));
  }

  frmGage* gauge = nullptr;
};

TEST_F(GaugeAndQuestionTest, TheGaugesCancelAnswersTheQuestionBesideIt) {
  QTimer::singleShot(0, &main, [this] {
    ExpectBeside();
    PressCancel();
  });
  EXPECT_EQ(prompts.Choose(Remove()), 3);
  EXPECT_TRUE(prompts.IsCancelled());
  EXPECT_TRUE(gauge->isVisible());
  EXPECT_FALSE(prompts.IsEnding());
}

TEST_F(GaugeAndQuestionTest, TheGaugesCancelEndsTheBoxBesideIt) {
  QTimer::singleShot(0, &main, [this] {
    ExpectBeside();
    PressCancel();
  });
  EXPECT_EQ(prompts.MessageBox(u"Place a disk in your drive(a)."_s, PromptIcon::Exclamation,
                               PromptButtons::RetryCancel),
            PromptAnswer::Cancel);
  EXPECT_TRUE(gauge->IsClickedCancel());
}

TEST_F(GaugeAndQuestionTest, TheGaugeStaysWhenTheQuestionIsAnswered) {
  for (int i = 0; i < 2; ++i) {
    QTimer::singleShot(0, &main, [this] {
      ExpectBeside();
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      ASSERT_NE(box, nullptr);
      box->button(QMessageBox::Yes)->click();
    });
    EXPECT_EQ(prompts.MessageBox(u"Remove?"_s, PromptIcon::Question, PromptButtons::YesNo),
              PromptAnswer::Yes);
    EXPECT_TRUE(gauge->isVisible());
    EXPECT_EQ(gauge->windowHandle()->transientParent(), main.windowHandle());
  }
  EXPECT_FALSE(prompts.IsCancelled());
  PressCancel();
  EXPECT_TRUE(prompts.IsCancelled());
}

TEST(BesideGaugeTest, AQuestionFindsItsPlaceBelowAboveOrAtTheSide) {
  const QRect screen(0, 0, 1280, 800);
  const QSize question(400, 150);
  const auto covered = [&](const QRect& gauge) {
    const QRect place(BesideGauge::PlaceFor(question, gauge, screen), question);
    EXPECT_TRUE(screen.contains(place));
    return place.intersects(gauge);
  };
  EXPECT_EQ(BesideGauge::PlaceFor(question, {440, 300, 400, 150}, screen), QPoint(440, 458));
  EXPECT_EQ(BesideGauge::PlaceFor(question, {440, 640, 400, 150}, screen), QPoint(440, 482));
  EXPECT_FALSE(covered({0, 0, 400, 800}));
  EXPECT_FALSE(covered({880, 0, 400, 800}));
  EXPECT_FALSE(covered({-200, 700, 400, 150}));
  EXPECT_TRUE(covered({0, 0, 1280, 800})) << "where there is no room, the screen comes first";
}

TEST_F(PromptsTest, ANameToSaveUnderGetsTheExtensionOfTheChosenFilter) {
  const QTemporaryDir folder;
  const FileQuestion question{.mode = FileQuestion::Mode::Save,
                              .title = u"Save"_s,
                              .filter = u"FileMgr File (*.fmg)|*.fmg|All Files (*.*)|*.*"_s,
                              .fileName = folder.filePath(u"cells"_s),
                              .initialFolder = QDir::tempPath()};
  const auto answer = [&](int filter) {
    QTimer::singleShot(0, &main, [filter] {
      auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(dialog, nullptr);
      auto* types = dialog->findChild<QComboBox*>(u"fileTypeCombo"_s);
      types->setCurrentIndex(filter);
      Q_EMIT types->textActivated(types->currentText());
      static_cast<QDialog*>(dialog)->accept();
    });
    return QFileInfo(prompts.ChooseFile(question)).fileName();
  };
  EXPECT_EQ(answer(0), u"cells.fmg"_s);
  EXPECT_EQ(answer(1), u"cells"_s);
}

TEST_F(PromptsTest, TheFileThatWillBeWrittenIsTheOneAskedAbout) {
  const QTemporaryDir folder;
  QFile existing(folder.filePath(u"cells.fmg"_s));
  ASSERT_TRUE(existing.open(QIODevice::WriteOnly));
  QString asked;
  QTimer::singleShot(0, &main, [&] {
    auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
    ASSERT_NE(dialog, nullptr);
    QTimer::singleShot(0, &main, [&] {
      if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
        asked = box->text();
        box->done(QMessageBox::No);
      }
      dialog->reject();
    });
    static_cast<QDialog*>(dialog)->accept();
  });
  EXPECT_EQ(prompts.ChooseFile({.mode = FileQuestion::Mode::Save,
                                .title = u"Save"_s,
                                .filter = u"FileMgr File (*.fmg)|*.fmg|All Files (*.*)|*.*"_s,
                                .fileName = folder.filePath(u"cells"_s),
                                .initialFolder = QDir::tempPath()}),
            QString());
  EXPECT_TRUE(asked.contains(u"cells.fmg"_s)) << asked.toStdString();
}

}  // namespace
}  // namespace trevane
