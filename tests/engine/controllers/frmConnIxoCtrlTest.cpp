#include "base/RunTimeError.h"
#include "engine/controllers/RememberController.h"
#include "engine/controllers/frmConnIxoCtrl.h"
#include "tests/support/RecordingHost.h"
#include "tests/support/SessionWorld.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

namespace trevane::test {
namespace {

class frmConnIxoCtrlTest : public testing::Test {
 protected:
  frmConnIxoCtrlTest() {
    world_.Open({{QStringLiteral("IxoProv.LocalFile"), nullptr}, {QStringLiteral("IxoProv.Cell"), nullptr}});
    prompts_.onQuestion = [this](const AskedQuestion&) { visibleAtQuestion_ = form_.isVisible(); };
  }

  static std::shared_ptr<clsIxoCtrl> Saved(const QString& name, const QString& provider) {
    auto record = std::make_shared<clsIxoCtrl>();
    record->SetCtrlName(name);
    record->SetProvName(provider);
    record->SetMachineName(QStringLiteral("machine of ") + name);
    record->SetCtrlOption(QStringLiteral("option of ") + name);
    record->SetRoot(QStringLiteral("/root of ") + name);
    return record;
  }

  /// Shows the dialog, does `work` with it as the user would, and cancels it if it is still there then.
  qint32 Show(const std::function<void()>& work) {
    QTimer::singleShot(0, &form_, [&] {
      work();
      if (form_.isVisible()) {
        QTest::keyClick(&form_, Qt::Key_Escape);
      }
    });
    return form_.ShowConnect();
  }

  QComboBox& Provider() { return *form_.findChild<QComboBox*>(QStringLiteral("cmbProvider")); }
  QComboBox& Controller() { return *form_.findChild<QComboBox*>(QStringLiteral("cmbController")); }
  QLineEdit& Text(const QString& name) { return *form_.findChild<QLineEdit*>(name); }
  QPushButton& Button(const QString& name) { return *form_.findChild<QPushButton*>(name); }

  void TypeName(const QString& name) {
    Controller().lineEdit()->selectAll();
    QTest::keyClick(Controller().lineEdit(), Qt::Key_Delete);
    QTest::keyClicks(Controller().lineEdit(), name);
  }
  void Click(const QString& button) { QTest::mouseClick(&Button(button), Qt::LeftButton); }
  /// Opens the list of names and clicks one.
  void Choose(int row) {
    Controller().showPopup();
    QAbstractItemView* view = Controller().view();
    const QPoint at = view->visualRect(view->model()->index(row, 0)).center();
    // A box takes no click that follows its opening at once.
    QTest::qWait(QApplication::doubleClickInterval() + 50);
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, at);
  }
  QStringList Offered() {
    QStringList names;
    for (int i = 0; i < Controller().count(); ++i) {
      names += Controller().itemText(i);
    }
    return names;
  }

  SessionWorld world_;
  std::shared_ptr<FailingEngine>& engine_ = world_.engine;
  EngineSession& session_ = world_.session;
  ScriptedPrompts& prompts_ = world_.prompts;
  std::vector<std::shared_ptr<clsIxoCtrl>> requests_;
  ConnectOutcome answer_;
  RecordingHost host_;
  bool visibleAtRequest_ = true;
  bool busyAtRequest_ = false;
  bool visibleAtQuestion_ = true;
  bool busy_ = false;
  frmConnIxoCtrl form_{{.session = session_,
                        .prompts = prompts_,
                        .reasonLine = host_,
                        .connectController =
                            [this](const std::shared_ptr<clsIxoCtrl>& record) {
                              visibleAtRequest_ = form_.isVisible();
                              busyAtRequest_ = busy_;
                              requests_.push_back(record);
                              return answer_;
                            },
                        .setBusyPointer = [this](bool busy) { busy_ = busy; }}};
};

TEST_F(frmConnIxoCtrlTest, OffersTheProvidersAndTheRootOfATop) {
  EXPECT_EQ(Show([&] {
              EXPECT_EQ(form_.windowTitle(), QStringLiteral("Connect Controller"));
              EXPECT_TRUE(form_.isModal());
              ASSERT_EQ(Provider().count(), 2);
              EXPECT_EQ(Provider().currentText(), QStringLiteral("IxoProv.LocalFile"));
              EXPECT_EQ(Provider().itemText(1), QStringLiteral("IxoProv.Cell"));
              EXPECT_EQ(Text(QStringLiteral("txtRoot")).text(), QStringLiteral("/"));
              EXPECT_EQ(Text(QStringLiteral("txtMachine")).text(), QString());
              EXPECT_TRUE(Controller().isEditable());
            }),
            -1);
}

TEST_F(frmConnIxoCtrlTest, TheBoxesShowWhatTheChosenProviderTakes) {
  trevane::Provider cell{QStringLiteral("IxoProv.Cell"), nullptr};
  cell.help = {.machineExample = QStringLiteral("cell4:22"),
               .optionExample = QStringLiteral("User=joe"),
               .machine = QStringLiteral("host\n<host>:port"),
               .option = QStringLiteral("User: the name")};
  world_.Open({{QStringLiteral("IxoProv.LocalFile"), nullptr}, cell});
  QLineEdit& machine = Text(QStringLiteral("txtMachine"));
  QLineEdit& option = Text(QStringLiteral("txtOption"));
  Show([&] {
    EXPECT_EQ(machine.placeholderText() + machine.toolTip() + option.placeholderText() + option.toolTip(),
              QString());
    Provider().setCurrentIndex(1);
    EXPECT_EQ(machine.placeholderText(), QStringLiteral("for example cell4:22"));
    EXPECT_TRUE(machine.toolTip().contains(QStringLiteral("&lt;host&gt;:port"))) << "the text is no markup";
    EXPECT_EQ(machine.accessibleDescription(), cell.help.machine);
    EXPECT_EQ(option.placeholderText(), QStringLiteral("for example User=joe"));
    EXPECT_EQ(option.toolTip(), cell.help.option);
    EXPECT_EQ(machine.text() + option.text(), QString());
  });
  Show([&] {
    EXPECT_EQ(machine.placeholderText(), QStringLiteral("for example cell4:22")) << "kept with the fields";
    Provider().setCurrentIndex(0);
    EXPECT_EQ(machine.placeholderText() + machine.toolTip() + machine.accessibleDescription(), QString());
  });
}

TEST_F(frmConnIxoCtrlTest, LabelsAreBesideTheirFieldsAndNameThem) {
  form_.Load();
  QStringList labels;
  for (const QLabel* label : form_.findChildren<QLabel*>()) {
    const QString text = QString(label->text()).remove(u'&');
    labels += text;
    ASSERT_NE(label->buddy(), nullptr);
    EXPECT_EQ(label->buddy()->accessibleName() + QStringLiteral(" :"), text);
  }
  EXPECT_EQ(labels, (QStringList{QStringLiteral("Provider Name :"), QStringLiteral("Controller Name :"),
                                 QStringLiteral("Machine Name :"), QStringLiteral("Option :"),
                                 QStringLiteral("Root :")}));
  EXPECT_EQ(Button(QStringLiteral("cmdCancel")).text(), QStringLiteral("&Cancel"));
  EXPECT_EQ(Button(QStringLiteral("cmdConnect")).accessibleName(), QStringLiteral("Connect"));
}

TEST_F(frmConnIxoCtrlTest, ALetterLeadsToEachFieldAndNoneIsTakenTwice) {
  Show([&] {
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form_));
    const std::pair<Qt::Key, QString> letters[] = {{Qt::Key_P, QStringLiteral("cmbProvider")},
                                                   {Qt::Key_N, QStringLiteral("cmbController")},
                                                   {Qt::Key_M, QStringLiteral("txtMachine")},
                                                   {Qt::Key_T, QStringLiteral("txtOption")},
                                                   {Qt::Key_R, QStringLiteral("txtRoot")}};
    for (const auto& [key, name] : letters) {
      Button(QStringLiteral("cmdCancel")).setFocus();
      QTest::keyClick(&form_, key, Qt::AltModifier);
      ASSERT_NE(form_.focusWidget(), nullptr);
      EXPECT_EQ(form_.focusWidget()->objectName(), name);
    }
  });
  QStringList taken;
  for (const QLabel* label : form_.findChildren<QLabel*>()) {
    taken += QKeySequence::mnemonic(label->text()).toString();
  }
  for (const QString& button : {QStringLiteral("cmdConnect"), QStringLiteral("cmdCancel")}) {
    taken += QKeySequence::mnemonic(Button(button).text()).toString();
  }
  EXPECT_FALSE(taken.contains(QString()));
  EXPECT_EQ(taken.removeDuplicates(), 0) << taken.join(u' ').toStdString();
}

TEST_F(frmConnIxoCtrlTest, TheTextFieldOfTheNamesHasItsName) {
  EXPECT_EQ(Controller().lineEdit()->accessibleName(), QStringLiteral("Controller Name"));
}

TEST_F(frmConnIxoCtrlTest, TabFollowsTheFieldsAndEnterConnects) {
  Show([&] {
    QStringList visited;
    Provider().setFocus();
    for (int i = 0; i < 7; ++i) {
      QWidget* focus = form_.focusWidget();
      visited += focus->objectName();
      QTest::keyClick(focus, Qt::Key_Tab);
    }
    EXPECT_EQ(visited, (QStringList{QStringLiteral("cmbProvider"), QStringLiteral("cmbController"),
                                    QStringLiteral("txtMachine"), QStringLiteral("txtOption"),
                                    QStringLiteral("txtRoot"), QStringLiteral("cmdConnect"),
                                    QStringLiteral("cmdCancel")}));
    TypeName(QStringLiteral("Cell7"));
    QTest::keyClick(Controller().lineEdit(), Qt::Key_Return);
  });
  ASSERT_EQ(requests_.size(), 1u);
  EXPECT_EQ(form_.ConnectResult(), 0);
}

TEST_F(frmConnIxoCtrlTest, TextsAreHandedOnExactlyAsTyped) {
  EXPECT_EQ(Show([&] {
              Provider().setCurrentIndex(1);
              TypeName(QStringLiteral(" Cell 7 "));
              QTest::keyClicks(&Text(QStringLiteral("txtMachine")), QStringLiteral(" host "));
              QTest::keyClicks(&Text(QStringLiteral("txtOption")), QStringLiteral("a=b, c"));
              QTest::keyClicks(&Text(QStringLiteral("txtRoot")), QStringLiteral("prog "));
              Click(QStringLiteral("cmdConnect"));
            }),
            0);
  ASSERT_EQ(requests_.size(), 1u);
  EXPECT_EQ(requests_[0]->CtrlName(), QStringLiteral(" Cell 7 "));
  EXPECT_EQ(requests_[0]->ProvName(), QStringLiteral("IxoProv.Cell"));
  EXPECT_EQ(requests_[0]->MachineName(), QStringLiteral(" host "));
  EXPECT_EQ(requests_[0]->CtrlOption(), QStringLiteral("a=b, c"));
  EXPECT_EQ(requests_[0]->Root(), QStringLiteral("/prog "));
}

TEST_F(frmConnIxoCtrlTest, HidesItselfAndShowsTheHourglassBeforeItConnects) {
  Show([&] {
    TypeName(QStringLiteral("Cell7"));
    Click(QStringLiteral("cmdConnect"));
  });
  EXPECT_FALSE(visibleAtRequest_);
  EXPECT_TRUE(busyAtRequest_);
  EXPECT_FALSE(busy_);
  ASSERT_EQ(session_.gSavedCtrls.Count(), 1);
  EXPECT_EQ(session_.gSavedCtrls.Item(1), requests_[0]);
}

TEST_F(frmConnIxoCtrlTest, AFailedConnectionIsReportedAndNotRemembered) {
  RememberController(session_.gSavedCtrls, Saved(QStringLiteral("Old"), QStringLiteral("IxoProv.Cell")));
  answer_ = {error::kLogonFailure, QStringLiteral("The password is wrong\nfor robot")};
  prompts_.ExpectBox(QStringLiteral("Failed in adding a controller object."));
  EXPECT_EQ(Show([&] {
              TypeName(QStringLiteral("Cell7"));
              Click(QStringLiteral("cmdConnect"));
            }),
            error::kLogonFailure);
  EXPECT_EQ(prompts_.Asked().front().icon, PromptIcon::Exclamation);
  EXPECT_EQ(prompts_.Asked().front().buttons, PromptButtons::Ok);
  EXPECT_EQ(prompts_.Asked().front().title, QString());
  EXPECT_EQ(prompts_.Asked().front().informativeText,
            QStringLiteral("Cell7\nThe password is wrong\nfor robot"));
  EXPECT_EQ(host_.reasons, QStringList{QStringLiteral("The password is wrong")});
  EXPECT_FALSE(visibleAtQuestion_);
  EXPECT_FALSE(busy_);
  EXPECT_EQ(session_.gSavedCtrls.Count(), 1);
}

TEST_F(frmConnIxoCtrlTest, WithoutANameTheProviderIsTheItemThatFailed) {
  answer_ = {-1, QStringLiteral("no answer")};
  prompts_.ExpectBox(QStringLiteral("Failed in adding a controller object."));
  static_cast<void>(Show([&] {
    Provider().setCurrentIndex(1);
    TypeName(QString());
    Click(QStringLiteral("cmdConnect"));
  }));
  EXPECT_EQ(prompts_.Asked().front().informativeText, QStringLiteral("IxoProv.Cell\nno answer"));
}

TEST_F(frmConnIxoCtrlTest, MyComputerAndNamesWithSeparatorsAreInvalid) {
  for (const QString& name :
       {QStringLiteral("My Computer"), QStringLiteral("mY cOMPUTER"), QStringLiteral("a/b"),
        QStringLiteral("/"), QStringLiteral("a\\b"), QStringLiteral("\\")}) {
    EXPECT_FALSE(frmConnIxoCtrl::IsValidName(name)) << name.toStdString();
  }
  for (const QString& name : {QStringLiteral(""), QStringLiteral("My Computer2"),
                              QStringLiteral("My Computer "), QStringLiteral("Cell7")}) {
    EXPECT_TRUE(frmConnIxoCtrl::IsValidName(name)) << name.toStdString();
  }
}

TEST_F(frmConnIxoCtrlTest, AnInvalidNameIsReportedAndTheTextStays) {
  prompts_.ExpectBox(QStringLiteral("Illegal charactor in Controller Name."));
  EXPECT_EQ(Show([&] {
              TypeName(QStringLiteral("my computer"));
              QTest::keyClicks(&Text(QStringLiteral("txtMachine")), QStringLiteral("host"));
              Click(QStringLiteral("cmdConnect"));
              EXPECT_TRUE(form_.isVisible());
              EXPECT_TRUE(visibleAtQuestion_);
              EXPECT_EQ(form_.ConnectResult(), -1);
              EXPECT_EQ(Controller().currentText(), QStringLiteral("my computer"));
              EXPECT_EQ(Text(QStringLiteral("txtMachine")).text(), QStringLiteral("host"));
            }),
            -1);
  EXPECT_TRUE(requests_.empty());
}

TEST_F(frmConnIxoCtrlTest, AnEmptyNameIsConnectedButNotRemembered) {
  EXPECT_EQ(Show([&] { Click(QStringLiteral("cmdConnect")); }), 0);
  ASSERT_EQ(requests_.size(), 1u);
  EXPECT_EQ(requests_[0]->CtrlName(), QString());
  EXPECT_EQ(session_.gSavedCtrls.Count(), 0);
}

TEST_F(frmConnIxoCtrlTest, WithoutAnEngineNothingIsConnected) {
  session_.gIxoControllers.reset();
  prompts_.ExpectBox(QStringLiteral("Failed in adding a controller object."));
  EXPECT_EQ(Show([&] {
              TypeName(QStringLiteral("a/b"));
              Click(QStringLiteral("cmdConnect"));
              EXPECT_TRUE(form_.isVisible());
            }),
            -1);
  EXPECT_TRUE(requests_.empty());
}

TEST_F(frmConnIxoCtrlTest, OffersTheRememberedNamesAndAChoiceFillsTheFields) {
  RememberController(session_.gSavedCtrls, Saved(QStringLiteral("A"), QStringLiteral("IxoProv.Cell")));
  RememberController(session_.gSavedCtrls, Saved(QStringLiteral("B"), QStringLiteral("IxoProv.Gone")));
  Show([&] {
    EXPECT_EQ(Offered(), (QStringList{QStringLiteral("B"), QStringLiteral("A")}));
    EXPECT_EQ(Controller().currentIndex(), -1);
    EXPECT_EQ(Controller().currentText(), QString());
    EXPECT_EQ(Text(QStringLiteral("txtRoot")).text(), QStringLiteral("/"));
    Choose(1);
    EXPECT_EQ(Controller().currentText(), QStringLiteral("A"));
    EXPECT_EQ(Provider().currentText(), QStringLiteral("IxoProv.Cell"));
    EXPECT_EQ(Text(QStringLiteral("txtMachine")).text(), QStringLiteral("machine of A"));
    EXPECT_EQ(Text(QStringLiteral("txtOption")).text(), QStringLiteral("option of A"));
    EXPECT_EQ(Text(QStringLiteral("txtRoot")).text(), QStringLiteral("/root of A"));
    // The engine does not know this provider any more; its name is used all the same.
    Choose(0);
    EXPECT_EQ(Provider().currentText(), QStringLiteral("IxoProv.Gone"));
  });
}

TEST_F(frmConnIxoCtrlTest, TypingARememberedNameFillsNothing) {
  RememberController(session_.gSavedCtrls, Saved(QStringLiteral("Cell7"), QStringLiteral("IxoProv.Cell")));
  Show([&] {
    TypeName(QStringLiteral("Cell7"));
    QTest::keyClick(Controller().lineEdit(), Qt::Key_Tab);
    EXPECT_EQ(Text(QStringLiteral("txtMachine")).text(), QString());
    Controller().setFocus();
    QTest::keyClick(Controller().lineEdit(), Qt::Key_Return);
  });
  ASSERT_EQ(requests_.size(), 1u);
  EXPECT_EQ(requests_[0]->MachineName(), QString());
  EXPECT_EQ(requests_[0]->ProvName(), QStringLiteral("IxoProv.LocalFile"));
}

TEST_F(frmConnIxoCtrlTest, TheFieldsKeepTheirTextBetweenTwoUses) {
  Show([&] {
    TypeName(QStringLiteral("Cell7"));
    QTest::keyClicks(&Text(QStringLiteral("txtMachine")), QStringLiteral("host"));
    Click(QStringLiteral("cmdConnect"));
  });
  EXPECT_EQ(form_.ConnectResult(), 0);
  EXPECT_EQ(Show([&] {
              EXPECT_EQ(form_.ConnectResult(), -1);
              EXPECT_EQ(Offered(), QStringList{QStringLiteral("Cell7")});
              EXPECT_EQ(Controller().currentIndex(), -1);
              EXPECT_EQ(Controller().currentText(), QStringLiteral("Cell7"));
              EXPECT_EQ(Text(QStringLiteral("txtMachine")).text(), QStringLiteral("host"));
              Click(QStringLiteral("cmdCancel"));
              EXPECT_FALSE(form_.isVisible());
            }),
            -1);
}

TEST_F(frmConnIxoCtrlTest, TheProvidersAreReadOnce) {
  engine_->ClearCalls();
  form_.Load();
  Show([] {});
  Show([] {});
  EXPECT_EQ(engine_->Calls().count(QStringLiteral("IxoWorkspace.ProviderNames")), 1);
  EXPECT_EQ(Provider().count(), 2);
}

TEST_F(frmConnIxoCtrlTest, ProvidersThatCouldNotBeReadAreReadByTheNextUse) {
  engine_->Arm(1);
  Show([&] { EXPECT_EQ(Provider().count(), 0); });
  engine_->Disarm();
  Show([&] { EXPECT_EQ(Provider().count(), 2); });
}

TEST_F(frmConnIxoCtrlTest, ClosingTheFrameCancelsAndKeepsTheForm) {
  EXPECT_EQ(Show([&] {
              TypeName(QStringLiteral("Cell7"));
              form_.close();
              EXPECT_FALSE(form_.isVisible());
            }),
            -1);
  EXPECT_TRUE(requests_.empty());
  EXPECT_EQ(Show([&] { EXPECT_EQ(Controller().currentText(), QStringLiteral("Cell7")); }), -1);
}

}  // namespace
}  // namespace trevane::test
