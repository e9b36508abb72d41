#include "dialogs/BesideGauge.h"
#include "dialogs/Prompts.h"
#include "dialogs/frmMsgBoxEx.h"
#include "dialogs/frmProperty.h"

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QScreen>
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

struct PromptsTest : testing::Test {
  PromptsTest() { main.show(); }

  /// Asks, and calls `act` with the box on the screen.
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
    const PromptAnswer answer =
        prompts.MessageBox(QStringLiteral("Failed in copy operation."), icon, buttons, title);
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
    EXPECT_EQ(box.text(), QStringLiteral("Failed in copy operation."));
    EXPECT_EQ(box.icon(), QMessageBox::Warning);
    EXPECT_EQ(box.windowTitle(), QStringLiteral("Trevane"));
    EXPECT_EQ(box.standardButtons(), QMessageBox::Ok);
    box.button(QMessageBox::Ok)->click();
  });
}

TEST_F(PromptsTest, ItemAndReasonStandBelowTheTextAndAreNoMarkup) {
  const QString reason = QStringLiteral("<b>a.pac</b>\nThe disk is full.");
  QTimer::singleShot(0, &main, [&] {
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->text(), QStringLiteral("Failed in copy operation."));
    EXPECT_EQ(box->informativeText(), reason);
    const auto labels = box->findChildren<QLabel*>();
    const auto label = std::find_if(labels.begin(), labels.end(),
                                    [&reason](const QLabel* one) { return one->text() == reason; });
    ASSERT_NE(label, labels.end());
    EXPECT_EQ((*label)->textFormat(), Qt::PlainText);
    box->button(QMessageBox::Ok)->click();
  });
  prompts.ShowMessage({.text = QStringLiteral("Failed in copy operation."),
                       .icon = PromptIcon::Exclamation,
                       .informativeText = reason});
}

TEST_F(PromptsTest, AFingerprintInAReasonIsNotBroken) {
  const QString line = QStringLiteral("Shown now: SHA256:xRN/wFiYesvKKfSwRZq8gBx3ZZChciIYv6UF7qvrfh8");
  QTimer::singleShot(0, &main, [&] {
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    ASSERT_NE(box, nullptr);
    const auto* label = box->findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel"));
    ASSERT_NE(label, nullptr);
    EXPECT_GE(label->contentsRect().width(), std::min(label->fontMetrics().horizontalAdvance(line), 560));
    EXPECT_LE(box->width(), box->screen()->availableGeometry().width());
    box->button(QMessageBox::Ok)->click();
  });
  prompts.ShowMessage({.text = QStringLiteral("Failed."),
                       .icon = PromptIcon::Exclamation,
                       .informativeText = line + u'\n' + QStringLiteral("w ").repeated(2000)});
}

TEST_F(PromptsTest, EnterPressesTheDefaultThatAQuestionNames) {
  QTimer::singleShot(0, &main, [] {
    auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    ASSERT_NE(box, nullptr);
    QKeyEvent press(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
    QApplication::sendEvent(box, &press);
  });
  EXPECT_EQ(prompts.ShowMessage({.text = QStringLiteral("Remove this file?"),
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
    EXPECT_TRUE(QTest::qWaitFor([&] { return changes.size() >= 2 && box.isActiveWindow(); }, 30'000));
    box.button(QMessageBox::Ok)->click();
  });
}

TEST_F(PromptsTest, EachWindowThatABoxBlocksGivesTheFocusBack) {
  prompts.SetMainWindow(&main);
  prompts.ShowProperties({});
  QDialog connecting(&main);
  connecting.setModal(true);
  connecting.show();
  QWidget* properties = nullptr;
  for (QWidget* const window : QApplication::topLevelWidgets()) {
    properties = qobject_cast<frmProperty*>(window) != nullptr ? window : properties;
  }
  ASSERT_NE(properties, nullptr);
  Ask(PromptButtons::Ok, [&](QMessageBox& box) {
    EXPECT_EQ(box.parentWidget(), &connecting);
    EXPECT_TRUE(QTest::qWaitForWindowActive(&box));
    for (QWidget* const window : {&main, properties, static_cast<QWidget*>(&connecting)}) {
      const QSignalSpy changes(qGuiApp, &QGuiApplication::focusWindowChanged);
      window->activateWindow();
      EXPECT_TRUE(QTest::qWaitFor([&] { return changes.size() >= 2 && box.isActiveWindow(); }, 30'000))
          << window->metaObject()->className();
    }
    box.button(QMessageBox::Ok)->click();
  });
}

TEST_F(PromptsTest, AWindowAboveABoxKeepsTheFocus) {
  prompts.SetMainWindow(&main);
  Ask(PromptButtons::Ok, [](QMessageBox& box) {
    EXPECT_TRUE(QTest::qWaitForWindowActive(&box));
    QDialog above(&box);
    above.show();
    above.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&above));
    QCoreApplication::processEvents();
    EXPECT_TRUE(above.isActiveWindow());
    box.button(QMessageBox::Ok)->click();
  });
}

TEST_F(PromptsTest, ABoxWithATitleShowsIt) {
  Ask(
      PromptButtons::Ok,
      [](QMessageBox& box) {
        EXPECT_EQ(box.windowTitle(), QStringLiteral("About"));
        box.button(QMessageBox::Ok)->click();
      },
      PromptIcon::Information, QStringLiteral("About"));
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
    EXPECT_EQ(box->text(), QStringLiteral("<h1>a&amp;b</h1>"));
    box->button(QMessageBox::Ok)->click();
  });
  prompts.MessageBox(QStringLiteral("<h1>a&amp;b</h1>"), PromptIcon::None);
}

TEST_F(PromptsTest, ABoxIsModalToTheMainWindow) {
  prompts.SetMainWindow(&main);
  Ask(PromptButtons::Ok, [this](QMessageBox& box) {
    EXPECT_EQ(box.parentWidget(), &main);
    EXPECT_EQ(box.windowModality(), Qt::WindowModal);
    box.button(QMessageBox::Ok)->click();
  });
}

TEST_F(PromptsTest, ABoxHasNoParentBeforeTheMainWindowIsShown) {
  main.hide();
  prompts.SetMainWindow(&main);
  Ask(PromptButtons::Ok, [](QMessageBox& box) {
    EXPECT_EQ(box.parentWidget(), nullptr);
    EXPECT_TRUE(box.isModal());
    box.button(QMessageBox::Ok)->click();
  });
}

TEST_F(PromptsTest, ABoxOutOfADialogIsShownAboveTheDialog) {
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

TEST_F(PromptsTest, ABoxWithADeletedParentAnswersAsEscDoes) {
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
    EXPECT_EQ(box->Prompt(), QStringLiteral("Overwrite?"));
    EXPECT_EQ(box->windowTitle(), QStringLiteral("Copy"));
    EXPECT_EQ(box->MsgIcon(), QStringLiteral("Question"));
    EXPECT_EQ(box->Default(), 2);
    EXPECT_EQ(box->CANCEL(), 1);
    EXPECT_EQ(box->findChildren<QPushButton*>(QStringLiteral("cmd")).size(), 3);
    box->close();
  });
  const int answer = prompts.Choose({QStringLiteral("Overwrite?"),
                                     QStringLiteral("Copy"),
                                     PromptIcon::Question,
                                     {QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")},
                                     2,
                                     1});
  EXPECT_EQ(answer, 1);
  EXPECT_EQ(beeps, std::vector<qint32>{32});
  EXPECT_TRUE(main.findChildren<frmMsgBoxEx*>().isEmpty());
}

TEST_F(PromptsTest, TheFileDialogOffersItsFiltersAndAllFiles) {
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
                              .title = QStringLiteral("Open"),
                              .filter = QStringLiteral("FileMgr File (*.fmg)|*.fmg|All Files (*.*)|*.*"),
                              .fileName = {},
                              .initialFolder = QDir::tempPath()};
  EXPECT_EQ(prompts.ChooseFile(question), QString());
  EXPECT_EQ(title, QStringLiteral("Open"));
  EXPECT_EQ(filters, (QStringList{QStringLiteral("FileMgr File (*.fmg)"), QStringLiteral("All Files (*)")}));
}

/// A click as the window system reports it, which a modal window keeps from the windows it blocks.

TEST_F(PromptsTest, TheGaugeIsAWindowAboveTheMainWindow) {
  prompts.SetMainWindow(&main);
  prompts.Gauge().ShowGage(QStringLiteral("Open Controllers"));
  auto* window = main.findChild<frmGage*>();
  ASSERT_NE(window, nullptr);
  EXPECT_EQ(window->windowTitle(), QStringLiteral("Open Controllers"));
  prompts.Gauge().UnloadGage();
  EXPECT_EQ(main.findChild<frmGage*>(), nullptr);
}

/// The question with four buttons: Esc presses "Yes All", and the end of the program does not.
ChoiceQuestion Remove() {
  return {.prompt = QStringLiteral("Remove?"),
          .title = QStringLiteral("Remove"),
          .icon = PromptIcon::Information,
          .captions = {QStringLiteral("Yes(&Y)"), QStringLiteral("Yes All(&A)"), QStringLiteral("No(&N)"),
                       QStringLiteral("Cancel")},
          .defaultButton = 0,
          .cancelButton = 1,
          .harmlessButton = 3};
}

TEST_F(PromptsTest, BoxesOnTopOfEachOtherEndTogether) {
  PromptAnswer box = PromptAnswer::Yes;
  int choice = 0;
  bool settingsShown = false;
  bool fileAsked = false;
  QString file = QStringLiteral("none");
  QTimer::singleShot(0, &main, [&] {
    QTimer::singleShot(0, &main, [&] {
      QTimer::singleShot(0, &main, [&] {
        QTimer::singleShot(0, &main, [&] {
          settingsShown = QApplication::activeModalWidget()->objectName() == QStringLiteral("frmSetting");
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
  box = prompts.MessageBox(QStringLiteral("Remove this file?"), PromptIcon::Question, PromptButtons::YesNo);
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
  EXPECT_EQ(prompts.MessageBox(QStringLiteral("?"), PromptIcon::Question, PromptButtons::OkCancel),
            PromptAnswer::Cancel);
  EXPECT_EQ(prompts.MessageBox(QStringLiteral("?"), PromptIcon::Question, PromptButtons::RetryCancel),
            PromptAnswer::Cancel);
  EXPECT_EQ(prompts.MessageBox(QStringLiteral("?"), PromptIcon::Question, PromptButtons::YesNo),
            PromptAnswer::No);
  EXPECT_EQ(prompts.Choose(Remove()), 3);
  EXPECT_EQ(prompts.ChooseFile({}), QString());
  prompts.ShowSettings();
  prompts.ShowProperties({});
  EXPECT_TRUE(prompts.IsCancelled());
  for (const QWidget* window : QApplication::topLevelWidgets()) {
    EXPECT_TRUE(window == &main || !window->isVisible()) << window->objectName().toStdString();
  }
}

TEST_F(PromptsTest, ALastWordIsShownToTheUserWhoClosesAlone) {
  const Message message{.text = QStringLiteral("Failed Save Ini File."), .isLastWord = true};
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

TEST_F(PromptsTest, AQuestionDeletedWithItsWindowAnswersCancel) {
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
    prompts.Gauge().ShowGage(QStringLiteral("COPY Files/Directories"));
    prompts.Gauge().CancelEnable(true);
    main.setEnabled(false);
    QApplication::processEvents();
    gauge = main.findChild<frmGage*>();
  }

  void PressCancel() {
    auto* cancel = gauge->findChild<QPushButton*>(QStringLiteral("cmdCancel"));
    // Through the window system's door: a window that a modal one blocks hears nothing.
    QTest::mouseClick(gauge->windowHandle(), Qt::LeftButton, {}, cancel->geometry().center());
  }

  /// The conditions that hold while a question is shown.
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
  EXPECT_EQ(prompts.MessageBox(QStringLiteral("Place a disk in your drive(a)."), PromptIcon::Exclamation,
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
    EXPECT_EQ(prompts.MessageBox(QStringLiteral("Remove?"), PromptIcon::Question, PromptButtons::YesNo),
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
                              .title = QStringLiteral("Save"),
                              .filter = QStringLiteral("FileMgr File (*.fmg)|*.fmg|All Files (*.*)|*.*"),
                              .fileName = folder.filePath(QStringLiteral("cells")),
                              .initialFolder = QDir::tempPath()};
  const auto answer = [&](int filter) {
    QTimer::singleShot(0, &main, [filter] {
      auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(dialog, nullptr);
      auto* types = dialog->findChild<QComboBox*>(QStringLiteral("fileTypeCombo"));
      types->setCurrentIndex(filter);
      Q_EMIT types->textActivated(types->currentText());
      static_cast<QDialog*>(dialog)->accept();
    });
    return QFileInfo(prompts.ChooseFile(question)).fileName();
  };
  EXPECT_EQ(answer(0), QStringLiteral("cells.fmg"));
  EXPECT_EQ(answer(1), QStringLiteral("cells"));
}

TEST_F(PromptsTest, TheFileThatWillBeWrittenIsTheOneAskedAbout) {
  const QTemporaryDir folder;
  QFile existing(folder.filePath(QStringLiteral("cells.fmg")));
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
                                .title = QStringLiteral("Save"),
                                .filter = QStringLiteral("FileMgr File (*.fmg)|*.fmg|All Files (*.*)|*.*"),
                                .fileName = folder.filePath(QStringLiteral("cells")),
                                .initialFolder = QDir::tempPath()}),
            QString());
  EXPECT_TRUE(asked.contains(QStringLiteral("cells.fmg"))) << asked.toStdString();
}

}  // namespace
}  // namespace trevane
