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

using namespace Qt::StringLiterals;

class frmConnIxoCtrlTest : public testing::Test {
 protected:
  frmConnIxoCtrlTest() {
    world_.Open({{u"IxoProv.LocalFile"_s, nullptr}, {u"IxoProv.Cell"_s, nullptr}});
    prompts_.onQuestion = [this](const AskedQuestion&) { visibleAtQuestion_ = form_.isVisible(); };
  }

  static std::shared_ptr<clsIxoCtrl> Saved(const QString& name, const QString& provider) {
    auto record = std::make_shared<clsIxoCtrl>();
    record->SetCtrlName(name);
    record->SetProvName(provider);
    record->SetMachineName(u"machine of "_s + name);
    record->SetCtrlOption(u"option of "_s + name);
    record->SetRoot(u"/root of "_s + name);
    return record;
  }

  /// Shows the dialog, does `work` with it as the user would, and cancels it if it is still there then.
  qint32 Show(const std::function<void()>& work) {
    QTimer::singleShot(0, &form_, [&] {
      work();
      if (form_.isVisible())
        QTest::keyClick(&form_, Qt::Key_Escape);
    });
    return form_.ShowConnect();
  }

  QComboBox& Provider() { return *form_.findChild<QComboBox*>(u"cmbProvider"_s); }
  QComboBox& Controller() { return *form_.findChild<QComboBox*>(u"cmbController"_s); }
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
    for (int i = 0; i < Controller().count(); ++i)
      names += Controller().itemText(i);
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
              EXPECT_EQ(form_.windowTitle(), u"Connect Controller"_s);
              EXPECT_TRUE(form_.isModal());
              ASSERT_EQ(Provider().count(), 2);
              EXPECT_EQ(Provider().currentText(), u"IxoProv.LocalFile"_s);
              EXPECT_EQ(Provider().itemText(1), u"IxoProv.Cell"_s);
              EXPECT_EQ(Text(u"txtRoot"_s).text(), u"/"_s);
              EXPECT_EQ(Text(u"txtMachine"_s).text(), QString());
              EXPECT_TRUE(Controller().isEditable());
            }),
            -1);
}

TEST_F(frmConnIxoCtrlTest, LabelsStandBesideTheirFieldsAndNameThem) {
  form_.Load();
  QStringList labels;
  for (const QLabel* label : form_.findChildren<QLabel*>()) {
    const QString text = QString(label->text()).remove(u'&');
    labels += text;
    ASSERT_NE(label->buddy(), nullptr);
    EXPECT_EQ(label->buddy()->accessibleName() + u" :"_s, text);
  }
  EXPECT_EQ(labels, (QStringList{u"Provider Name :"_s, u"Controller Name :"_s, u"Machine Name :"_s,
                                 u"Option :"_s, u"Root :"_s}));
  EXPECT_EQ(Button(u"cmdCancel"_s).text(), u"&Cancel"_s);
  EXPECT_EQ(Button(u"cmdConnect"_s).accessibleName(), u"Connect"_s);
}

TEST_F(frmConnIxoCtrlTest, ALetterLeadsToEachFieldAndNoneIsTakenTwice) {
  Show([&] {
    ASSERT_TRUE(QTest::qWaitForWindowActive(&form_));
    const std::pair<Qt::Key, QString> letters[] = {{Qt::Key_P, u"cmbProvider"_s},
                                                   {Qt::Key_N, u"cmbController"_s},
                                                   {Qt::Key_M, u"txtMachine"_s},
                                                   {Qt::Key_T, u"txtOption"_s},
                                                   {Qt::Key_R, u"txtRoot"_s}};
    for (const auto& [key, name] : letters) {
      Button(u"cmdCancel"_s).setFocus();
      QTest::keyClick(&form_, key, Qt::AltModifier);
      ASSERT_NE(form_.focusWidget(), nullptr);
      EXPECT_EQ(form_.focusWidget()->objectName(), name);
    }
  });
  QStringList taken;
  for (const QLabel* label : form_.findChildren<QLabel*>())
    taken += QKeySequence::mnemonic(label->text()).toString();
  for (const QString& button : {u"cmdConnect"_s, u"cmdCancel"_s})
    taken += QKeySequence::mnemonic(Button(button).text()).toString();
  EXPECT_FALSE(taken.contains(QString()));
  EXPECT_EQ(taken.removeDuplicates(), 0) << taken.join(u' ').toStdString();
}

TEST_F(frmConnIxoCtrlTest, TheTextFieldOfTheNamesHasItsName) {
  EXPECT_EQ(Controller().lineEdit()->accessibleName(), u"Controller Name"_s);
}

TEST_F(frmConnIxoCtrlTest, TabGoesThroughTheFieldsInTheirOrderAndEnterConnects) {
  Show([&] {
    QStringList visited;
    Provider().setFocus();
    for (int i = 0; i < 7; ++i) {
      QWidget* focus = form_.focusWidget();
      visited += focus->objectName();
      QTest::keyClick(focus, Qt::Key_Tab);
    }
    EXPECT_EQ(visited, (QStringList{u"cmbProvider"_s, u"cmbController"_s, u"txtMachine"_s, u"txtOption"_s,
                                    u"txtRoot"_s, u"cmdConnect"_s, u"cmdCancel"_s}));
    TypeName(u"Cell7"_s);
    QTest::keyClick(Controller().lineEdit(), Qt::Key_Return);
  });
  ASSERT_EQ(requests_.size(), 1u);
  EXPECT_EQ(form_.ConnectResult(), 0);
}

TEST_F(frmConnIxoCtrlTest, TextsAreHandedOnExactlyAsTyped) {
  EXPECT_EQ(Show([&] {
              Provider().setCurrentIndex(1);
              TypeName(u" Cell 7 "_s);
              QTest::keyClicks(&Text(u"txtMachine"_s), u" host "_s);
              QTest::keyClicks(&Text(u"txtOption"_s), u"a=b, c"_s);
              QTest::keyClicks(&Text(u"txtRoot"_s), u"prog "_s);
              Click(u"cmdConnect"_s);
            }),
            0);
  ASSERT_EQ(requests_.size(), 1u);
  EXPECT_EQ(requests_[0]->CtrlName(), u" Cell 7 "_s);
  EXPECT_EQ(requests_[0]->ProvName(), u"IxoProv.Cell"_s);
  EXPECT_EQ(requests_[0]->MachineName(), u" host "_s);
  EXPECT_EQ(requests_[0]->CtrlOption(), u"a=b, c"_s);
  EXPECT_EQ(requests_[0]->Root(), u"/prog "_s);
}

TEST_F(frmConnIxoCtrlTest, HidesItselfAndShowsTheHourglassBeforeItConnects) {
  Show([&] {
    TypeName(u"Cell7"_s);
    Click(u"cmdConnect"_s);
  });
  EXPECT_FALSE(visibleAtRequest_);
  EXPECT_TRUE(busyAtRequest_);
  EXPECT_FALSE(busy_);
  ASSERT_EQ(session_.gSavedCtrls.Count(), 1);
  EXPECT_EQ(session_.gSavedCtrls.Item(1), requests_[0]);
}

TEST_F(frmConnIxoCtrlTest, AFailedConnectionGivesItsCodeAndItsMessageAndIsNotRemembered) {
  RememberController(session_.gSavedCtrls, Saved(u"Old"_s, u"IxoProv.Cell"_s));
  answer_ = {error::kLogonFailure, u"The password is wrong\nfor robot"_s};
  prompts_.ExpectBox(u"Failed in adding a controller object."_s);
  EXPECT_EQ(Show([&] {
              TypeName(u"Cell7"_s);
              Click(u"cmdConnect"_s);
            }),
            error::kLogonFailure);
  EXPECT_EQ(prompts_.Asked().front().icon, PromptIcon::Exclamation);
  EXPECT_EQ(prompts_.Asked().front().buttons, PromptButtons::Ok);
  EXPECT_EQ(prompts_.Asked().front().title, QString());
  EXPECT_EQ(prompts_.Asked().front().informativeText, u"Cell7\nThe password is wrong\nfor robot"_s);
  EXPECT_EQ(host_.reasons, QStringList{u"The password is wrong"_s});
  EXPECT_FALSE(visibleAtQuestion_);
  EXPECT_FALSE(busy_);
  EXPECT_EQ(session_.gSavedCtrls.Count(), 1);
}

TEST_F(frmConnIxoCtrlTest, WithoutANameTheProviderIsTheItemThatFailed) {
  answer_ = {-1, u"no answer"_s};
  prompts_.ExpectBox(u"Failed in adding a controller object."_s);
  static_cast<void>(Show([&] {
    Provider().setCurrentIndex(1);
    TypeName(QString());
    Click(u"cmdConnect"_s);
  }));
  EXPECT_EQ(prompts_.Asked().front().informativeText, u"IxoProv.Cell\nno answer"_s);
}

TEST_F(frmConnIxoCtrlTest, MyComputerInAnyCaseAndNamesWithSeparatorsAreNotValid) {
  for (const QString& name : {u"My Computer"_s, u"mY cOMPUTER"_s, u"a/b"_s, u"/"_s, u"a\\b"_s, u"\\"_s})
    EXPECT_FALSE(frmConnIxoCtrl::IsValidName(name)) << name.toStdString();
  for (const QString& name : {u""_s, u"My Computer2"_s, u"My Computer "_s, u"Cell7"_s})
    EXPECT_TRUE(frmConnIxoCtrl::IsValidName(name)) << name.toStdString();
}

TEST_F(frmConnIxoCtrlTest, AnInvalidNameIsToldAndTheDialogStaysAsItWasTyped) {
  prompts_.ExpectBox(u"Illegal charactor in Controller Name."_s);
  EXPECT_EQ(Show([&] {
              TypeName(u"my computer"_s);
              QTest::keyClicks(&Text(u"txtMachine"_s), u"host"_s);
              Click(u"cmdConnect"_s);
              EXPECT_TRUE(form_.isVisible());
              EXPECT_TRUE(visibleAtQuestion_);
              EXPECT_EQ(form_.ConnectResult(), -1);
              EXPECT_EQ(Controller().currentText(), u"my computer"_s);
              EXPECT_EQ(Text(u"txtMachine"_s).text(), u"host"_s);
            }),
            -1);
  EXPECT_TRUE(requests_.empty());
}

TEST_F(frmConnIxoCtrlTest, AnEmptyNameIsConnectedButNotRemembered) {
  EXPECT_EQ(Show([&] { Click(u"cmdConnect"_s); }), 0);
  ASSERT_EQ(requests_.size(), 1u);
  EXPECT_EQ(requests_[0]->CtrlName(), QString());
  EXPECT_EQ(session_.gSavedCtrls.Count(), 0);
}

TEST_F(frmConnIxoCtrlTest, WithoutTheEnginesCollectionNothingIsConnectedAndTheDialogStays) {
  session_.gIxoControllers.reset();
  prompts_.ExpectBox(u"Failed in adding a controller object."_s);
  EXPECT_EQ(Show([&] {
              TypeName(u"a/b"_s);
              Click(u"cmdConnect"_s);
              EXPECT_TRUE(form_.isVisible());
            }),
            -1);
  EXPECT_TRUE(requests_.empty());
}

TEST_F(frmConnIxoCtrlTest, OffersTheRememberedNamesAndAChoiceFillsTheFields) {
  RememberController(session_.gSavedCtrls, Saved(u"A"_s, u"IxoProv.Cell"_s));
  RememberController(session_.gSavedCtrls, Saved(u"B"_s, u"IxoProv.Gone"_s));
  Show([&] {
    EXPECT_EQ(Offered(), (QStringList{u"B"_s, u"A"_s}));
    EXPECT_EQ(Controller().currentIndex(), -1);
    EXPECT_EQ(Controller().currentText(), QString());
    EXPECT_EQ(Text(u"txtRoot"_s).text(), u"/"_s);
    Choose(1);
    EXPECT_EQ(Controller().currentText(), u"A"_s);
    EXPECT_EQ(Provider().currentText(), u"IxoProv.Cell"_s);
    EXPECT_EQ(Text(u"txtMachine"_s).text(), u"machine of A"_s);
    EXPECT_EQ(Text(u"txtOption"_s).text(), u"option of A"_s);
    EXPECT_EQ(Text(u"txtRoot"_s).text(), u"/root of A"_s);
    // The engine does not know this provider any more; its name is handed on all the same.
    Choose(0);
    EXPECT_EQ(Provider().currentText(), u"IxoProv.Gone"_s);
  });
}

TEST_F(frmConnIxoCtrlTest, TypingARememberedNameFillsNothing) {
  RememberController(session_.gSavedCtrls, Saved(u"Cell7"_s, u"IxoProv.Cell"_s));
  Show([&] {
    TypeName(u"Cell7"_s);
    QTest::keyClick(Controller().lineEdit(), Qt::Key_Tab);
    EXPECT_EQ(Text(u"txtMachine"_s).text(), QString());
    Controller().setFocus();
    QTest::keyClick(Controller().lineEdit(), Qt::Key_Return);
  });
  ASSERT_EQ(requests_.size(), 1u);
  EXPECT_EQ(requests_[0]->MachineName(), QString());
  EXPECT_EQ(requests_[0]->ProvName(), u"IxoProv.LocalFile"_s);
}

TEST_F(frmConnIxoCtrlTest, TheFieldsKeepWhatTheyHeldAndTheResultIsCancelledAgain) {
  Show([&] {
    TypeName(u"Cell7"_s);
    QTest::keyClicks(&Text(u"txtMachine"_s), u"host"_s);
    Click(u"cmdConnect"_s);
  });
  EXPECT_EQ(form_.ConnectResult(), 0);
  EXPECT_EQ(Show([&] {
              EXPECT_EQ(form_.ConnectResult(), -1);
              EXPECT_EQ(Offered(), QStringList{u"Cell7"_s});
              EXPECT_EQ(Controller().currentIndex(), -1);
              EXPECT_EQ(Controller().currentText(), u"Cell7"_s);
              EXPECT_EQ(Text(u"txtMachine"_s).text(), u"host"_s);
              Click(u"cmdCancel"_s);
              EXPECT_FALSE(form_.isVisible());
            }),
            -1);
}

TEST_F(frmConnIxoCtrlTest, TheProvidersAreReadOnce) {
  engine_->ClearCalls();
  form_.Load();
  Show([] {});
  Show([] {});
  EXPECT_EQ(engine_->Calls().count(u"IxoWorkspace.ProviderNames"_s), 1);
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
              TypeName(u"Cell7"_s);
              form_.close();
              EXPECT_FALSE(form_.isVisible());
            }),
            -1);
  EXPECT_TRUE(requests_.empty());
  EXPECT_EQ(Show([&] { EXPECT_EQ(Controller().currentText(), u"Cell7"_s); }), -1);
}

}  // namespace
}  // namespace trevane::test
