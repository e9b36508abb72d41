#include "app/settings/KeptLooks.h"
#include "app/window/CommandBars.h"
#include "app/window/MainArea.h"
#include "app/window/SystemStyle.h"
#include "app/window/ToolBar.h"
#include "app/window/WindowLayout.h"
#include "tests/app/window/MainWindowFixture.h"
#include "views/addresses/NodeTags.h"
#include "views/bars/HistoryBox.h"

#include <QAccessible>
#include <QAction>
#include <QComboBox>
#include <QDeadlineTimer>
#include <QEvent>
#include <QFile>
#include <QHeaderView>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QStatusBar>
#include <QToolButton>
#include <QToolTip>

namespace trevane::test {
namespace {

class MainWindowTest : public MainWindowFixture {
 protected:
  [[nodiscard]] QString Status() { return Find<QLabel>("sbarMainText").text(); }
  [[nodiscard]] QString Address() { return Find<QComboBox>("cmbAddress").currentText(); }

  /// Tree, list and address box show the same folder.
  void ExpectPlace(const QString& address) {
    EXPECT_EQ(Nav().CurrentAddress(), address);
    EXPECT_EQ(Address(), address);
    ASSERT_NE(Tree().SelectedNode(), nullptr);
    EXPECT_EQ(Tree().SelectedNode()->FullPath(), address);
  }

  /// Closes the open pop-up menu and returns its name.
  [[nodiscard]] QString ClosePopup() {
    auto* popup = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    if (!popup) {
      return {};
    }
    const QString name = popup->objectName();
    popup->close();
    QCoreApplication::processEvents();
    return name;
  }

  /// Moves the mouse to `pixels` from the bar's left edge, with the left button down.
  void Drag(int pixels, Qt::MouseButtons buttons = Qt::LeftButton, Qt::KeyboardModifiers modifiers = {}) {
    auto& bar = Find<SplitterBar>("imgBar");
    const QPointF to(pixels, bar.height() / 2.0);
    QMouseEvent move(QEvent::MouseMove, to, bar.mapToGlobal(to), Qt::NoButton, buttons, modifiers);
    QApplication::sendEvent(&bar, &move);
  }
};

TEST_F(MainWindowTest, ClickingThroughTheTreeShowsEachFolder) {
  Start();
  ClickNode(QStringLiteral("Workspace\\My Computer"));
  ExpectPlace(QStringLiteral("Workspace\\My Computer"));
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("A:"), QStringLiteral("C:")}));
  ClickNode(QStringLiteral("Workspace\\My Computer\\C:"));
  ExpectPlace(QStringLiteral("Workspace\\My Computer\\C:"));
  EXPECT_EQ(Status(), QStringLiteral("Selected C:"));
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("Backup"), QStringLiteral("Programs"),
                                      QStringLiteral("readme.txt")}));
  Tree().expand(Window()->TreeModel().IndexOf(Node(QStringLiteral("Workspace\\My Computer\\C:"))));
  ClickNode(QStringLiteral("Workspace\\My Computer\\C:\\Programs"));
  ExpectPlace(QStringLiteral("Workspace\\My Computer\\C:\\Programs"));
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("Cell1"), QStringLiteral("main.pac")}));
}

TEST_F(MainWindowTest, TheArrowKeysDisplayWhatTheySelect) {
  Start();
  Tree().setFocus();
  QTest::keyClick(&Tree(), Qt::Key_Down);
  QCoreApplication::processEvents();
  ExpectPlace(QStringLiteral("Workspace\\My Computer"));
}

TEST_F(MainWindowTest, DoubleClicksOpenContainersAndSelectAnItem) {
  Start();
  DoubleClickItem(QStringLiteral("My Computer"));
  ExpectPlace(QStringLiteral("Workspace\\My Computer"));
  DoubleClickItem(QStringLiteral("C:"));
  ExpectPlace(QStringLiteral("Workspace\\My Computer\\C:"));
  ASSERT_EQ(List().SelectedItems().size(), 1U);
  EXPECT_EQ(Window()->ListModel().Text(List().SelectedItems().front()), QStringLiteral("Backup"));
  DoubleClickItem(QStringLiteral("Programs"));
  ExpectPlace(QStringLiteral("Workspace\\My Computer\\C:\\Programs"));
}

TEST_F(MainWindowTest, EnterOpensAFolderAndRunsAFile) {
  Start();
  ClickNode(QStringLiteral("Workspace\\My Computer\\C:"));
  ClickItem(QStringLiteral("readme.txt"));
  QTest::keyClick(&List(), Qt::Key_Return);
  QCoreApplication::processEvents();
  ExpectPlace(QStringLiteral("Workspace\\My Computer\\C:"));
  EXPECT_EQ(memory_->CallCount(FileSystemOperation::Execute), 1);
  ClickItem(QStringLiteral("Backup"));
  QTest::keyClick(&List(), Qt::Key_Return);
  QCoreApplication::processEvents();
  ExpectPlace(QStringLiteral("Workspace\\My Computer\\C:\\Backup"));
}

TEST_F(MainWindowTest, ParentGivesTheFocusBackToTheActiveView) {
  Start();
  ClickNode(QStringLiteral("Workspace\\My Computer\\C:"));
  List().setFocus();
  QTest::mouseClick(Button(CommandId::Parent), Qt::LeftButton);
  QCoreApplication::processEvents();
  ExpectPlace(QStringLiteral("Workspace\\My Computer"));
  EXPECT_EQ(Window()->focusWidget(), &List());
  Tree().setFocus();
  Trigger(CommandPlace::ViewMenu, CommandId::Parent);
  ExpectPlace(QStringLiteral("Workspace"));
  EXPECT_EQ(Window()->focusWidget(), &Tree());
}

TEST_F(MainWindowTest, ParentIsDisabledOnTheWorkspace) {
  Start();
  EXPECT_FALSE(IsEnabled(CommandPlace::ViewMenu, CommandId::Parent));
  EXPECT_FALSE(IsEnabled(CommandPlace::MainToolbar, CommandId::Parent));
  ClickNode(QStringLiteral("Workspace\\My Computer"));
  EXPECT_TRUE(IsEnabled(CommandPlace::ViewMenu, CommandId::Parent));
  // The toolbar's button is off after a click on the node, and on once the folder is displayed again.
  EXPECT_FALSE(IsEnabled(CommandPlace::MainToolbar, CommandId::Parent));
  Trigger(CommandPlace::ViewMenu, CommandId::Refresh);
  EXPECT_TRUE(IsEnabled(CommandPlace::MainToolbar, CommandId::Parent));
}

TEST_F(MainWindowTest, ClickedNodesAndOpenedItemsEnableRun) {
  Start();
  ClickNode(QStringLiteral("Workspace\\My Computer\\C:\\Programs"));
  EXPECT_TRUE(IsEnabled(CommandPlace::EntryPopup, CommandId::Run));
  Trigger(CommandPlace::ViewMenu, CommandId::Refresh);
  EXPECT_FALSE(IsEnabled(CommandPlace::EntryPopup, CommandId::Run));
  ClickNode(QStringLiteral("Workspace\\My Computer\\C:"));
  DoubleClickItem(QStringLiteral("Programs"));
  EXPECT_TRUE(IsEnabled(CommandPlace::EntryPopup, CommandId::Run));
}

TEST_F(MainWindowTest, RefreshKeepsSelectionFocusAndPosition) {
  // Below and above the number of files that shows the gauge.
  for (const int files : {30, 200}) {
    SCOPED_TRACE(files);
    for (int i = 0; i < files; ++i) {
      memory_->AddFile(QStringLiteral("C:\\Backup\\file%1").arg(i, 3, 10, QChar(u'0')));
    }
    memory_->AddFile(QStringLiteral("C:\\Backup\\goes"));
    Start();
    Window()->resize(700, 300);
    QCoreApplication::processEvents();
    Tree().expand(Window()->TreeModel().IndexOf(Node(QStringLiteral("Workspace\\My Computer\\C:"))));
    ClickNode(QStringLiteral("Workspace\\My Computer\\C:\\Backup"));
    ClickItem(QStringLiteral("goes"));
    ClickItem(QStringLiteral("file020"), Qt::LeftButton, Qt::ControlModifier);
    const QString top = List().indexAt(QPoint(5, 1)).data(Qt::EditRole).toString();
    EXPECT_NE(top, QStringLiteral("file000"));
    memory_->Vanish(QStringLiteral("C:\\Backup\\goes"));
    memory_->AddFile(QStringLiteral("C:\\Backup\\aaa"));
    QTest::keyClick(Window(), Qt::Key_F5);
    QCoreApplication::processEvents();
    EXPECT_EQ(ListTexts().front(), QStringLiteral("aaa"));
    ASSERT_EQ(List().SelectedItems().size(), 1U);
    EXPECT_EQ(Window()->ListModel().Text(List().SelectedItems().front()), QStringLiteral("file020"));
    EXPECT_EQ(Window()->ListModel().Text(List().FocusedItem()), QStringLiteral("file020"));
    EXPECT_EQ(List().indexAt(QPoint(5, 1)).data(Qt::EditRole).toString(), top);
    Stop();
    memory_->Vanish(QStringLiteral("C:\\Backup\\aaa"));
  }
}

TEST_F(MainWindowTest, RefreshDuringAListingListsEverythingOnce) {
  for (int i = 0; i < 60; ++i) {
    memory_->AddFile(QStringLiteral("C:\\Backup\\file%1").arg(i, 2, 10, QChar(u'0')));
  }
  Start();
  Tree().expand(Window()->TreeModel().IndexOf(Node(QStringLiteral("Workspace\\My Computer\\C:"))));
  prompts_.RecordedGauge().onIncrement = [&, increments = 0]() mutable {
    if (++increments == 5) {
      Trigger(CommandPlace::ViewMenu, CommandId::Refresh);
    }
  };
  ClickNode(QStringLiteral("Workspace\\My Computer\\C:\\Backup"));
  prompts_.RecordedGauge().onIncrement = nullptr;
  EXPECT_EQ(Window()->ListModel().rowCount(), 60);
  ExpectPlace(QStringLiteral("Workspace\\My Computer\\C:\\Backup"));
}

TEST_F(MainWindowTest, DrivesStayVisibleUnderMyComputer) {
  Start();
  const QModelIndex before = Window()->TreeModel().IndexOf(Node(QStringLiteral("Workspace\\My Computer")));
  QTest::mouseClick(Tree().viewport(), Qt::LeftButton, {}, Tree().visualRect(before).center());
  QCoreApplication::processEvents();
  for (int i = 0; i < 2; ++i) {
    const QModelIndex computer =
        Window()->TreeModel().IndexOf(Node(QStringLiteral("Workspace\\My Computer")));
    EXPECT_TRUE(Tree().isExpanded(computer));
    EXPECT_TRUE(
        Tree()
            .visualRect(Window()->TreeModel().IndexOf(Node(QStringLiteral("Workspace\\My Computer\\C:"))))
            .isValid());
    QTest::keyClick(Window(), Qt::Key_F5);
    QCoreApplication::processEvents();
  }
}

TEST_F(MainWindowTest, SelectAllGivesTheListTheFocus) {
  Start();
  ClickNode(QStringLiteral("Workspace\\My Computer\\C:"));
  Trigger(CommandPlace::EditMenu, CommandId::SelectAll);
  EXPECT_EQ(List().SelectedItems().size(), 3U);
  EXPECT_EQ(Window()->focusWidget(), &List());
}

TEST_F(MainWindowTest, OneSelectedItemIsNamedInTheStatusBar) {
  Start();
  ClickNode(QStringLiteral("Workspace\\My Computer\\C:"));
  ClickItem(QStringLiteral("readme.txt"));
  EXPECT_EQ(Status(), QStringLiteral("Selected readme.txt"));
}

TEST_F(MainWindowTest, ClicksOnEmptySpaceCountTheObjects) {
  Start();
  ClickNode(QStringLiteral("Workspace\\My Computer\\C:"));
  const QPoint empty(30, List().viewport()->height() - 5);
  QTest::mouseClick(List().viewport(), Qt::LeftButton, {}, empty);
  EXPECT_EQ(Status(), QStringLiteral("3 Objects."));
  EXPECT_EQ(ClosePopup(), QString());
  QTest::mouseClick(List().viewport(), Qt::RightButton, {}, empty);
  EXPECT_EQ(ClosePopup(), QStringLiteral("mnuPopup"));
}

TEST_F(MainWindowTest, RightClicksSelectTheItem) {
  Start();
  ClickNode(QStringLiteral("Workspace\\My Computer\\C:"));
  ClickItem(QStringLiteral("Backup"));
  ClickItem(QStringLiteral("readme.txt"), Qt::RightButton);
  EXPECT_EQ(ClosePopup(), QStringLiteral("mnuPopup"));
  ASSERT_EQ(List().SelectedItems().size(), 1U);
  EXPECT_EQ(Window()->ListModel().Text(List().SelectedItems().front()), QStringLiteral("readme.txt"));
}

TEST_F(MainWindowTest, RightClicksInTheTreeSelectNothing) {
  Start();
  ClickNode(QStringLiteral("Workspace\\My Computer\\C:"), Qt::RightButton);
  EXPECT_EQ(ClosePopup(), QStringLiteral("mnuWSPop"));
  ExpectPlace(QStringLiteral("Workspace"));
  ClickNode(QStringLiteral("Workspace\\My Computer"));
  ClickNode(QStringLiteral("Workspace"), Qt::RightButton);
  EXPECT_EQ(ClosePopup(), QStringLiteral("mnuPopup"));
  ExpectPlace(QStringLiteral("Workspace\\My Computer"));
  QTest::mouseClick(Tree().viewport(), Qt::RightButton, {}, QPoint(30, Tree().viewport()->height() - 5));
  EXPECT_EQ(ClosePopup(), QString());
}

TEST_F(MainWindowTest, LabelsOfPlacesCannotBeEdited) {
  Start();
  ClickItem(QStringLiteral("My Computer"));
  EXPECT_FALSE(List().StartLabelEdit());
  ClickNode(QStringLiteral("Workspace\\My Computer\\C:"));
  EXPECT_FALSE(Tree().StartLabelEdit());
  EXPECT_FALSE(List().StartLabelEdit()) << "no item has the focus";
}

TEST_F(MainWindowTest, OnlyOptionsAndNameColumnStayDisabled) {
  Start();
  for (const auto& [place, id] : {std::pair{CommandPlace::ToolMenu, CommandId::Option},
                                  std::pair{CommandPlace::ColumnsMenu, CommandId::NameColumn}}) {
    EXPECT_FALSE(IsEnabled(place, id));
  }
  for (const auto& [place, id] : {std::pair{CommandPlace::ColumnsMenu, CommandId::SizeColumn},
                                  std::pair{CommandPlace::ColumnsMenu, CommandId::TypeColumn},
                                  std::pair{CommandPlace::ColumnsMenu, CommandId::ModifiedColumn},
                                  std::pair{CommandPlace::ColumnsMenu, CommandId::AccessedColumn},
                                  std::pair{CommandPlace::ColumnsMenu, CommandId::CreatedColumn},
                                  std::pair{CommandPlace::ColumnsMenu, CommandId::AttributesColumn},
                                  std::pair{CommandPlace::HelpMenu, CommandId::Version},
                                  std::pair{CommandPlace::WorkspacePopup, CommandId::Connect},
                                  std::pair{CommandPlace::DragPopup, CommandId::MoveHere},
                                  std::pair{CommandPlace::DragPopup, CommandId::CopyHere},
                                  std::pair{CommandPlace::AddressToolbar, CommandId::GoToAddress},
                                  std::pair{CommandPlace::ActionMenu, CommandId::Connect},
                                  std::pair{CommandPlace::ActionMenu, CommandId::Disconnect},
                                  std::pair{CommandPlace::NewMenu, CommandId::NewFolder}}) {
    EXPECT_TRUE(IsEnabled(place, id)) << static_cast<int>(id);
  }
}

TEST_F(MainWindowTest, AboutNamesTheProgramAndItsVersion) {
  Start();
  prompts_.ExpectBox(QStringLiteral("Trevane version 1.2.3"));
  Trigger(CommandPlace::HelpMenu, CommandId::Version);
  ASSERT_EQ(prompts_.Asked().size(), 1U);
  EXPECT_EQ(prompts_.Asked()[0].icon, PromptIcon::None);
  EXPECT_EQ(prompts_.Asked()[0].buttons, PromptButtons::Ok);
  EXPECT_EQ(prompts_.Asked()[0].title, QString());
}

TEST_F(MainWindowTest, TheSevenColumnsAreInOrder) {
  Start();
  QStringList headers;
  for (int section = 0; section < Window()->ListModel().columnCount(); ++section) {
    headers += Window()->ListModel().headerData(section, Qt::Horizontal).toString();
  }
  EXPECT_EQ(headers, (QStringList{QStringLiteral("Name"), QStringLiteral("Size"), QStringLiteral("Type"),
                                  QStringLiteral("Modified"), QStringLiteral("Accessed"),
                                  QStringLiteral("Created"), QStringLiteral("Attributes")}));
  EXPECT_EQ(Window()->ListModel().HeaderImage(0), QStringLiteral("ASCEND"));
  EXPECT_EQ(Window()->ListModel().Sorting(), (SortState{.sorted = true, .key = 0, .descending = false}));
}

TEST_F(MainWindowTest, ControlsHaveObjectAndAccessibleNames) {
  Start();
  EXPECT_EQ(Find<QWidget>("treFile").accessibleName(), QStringLiteral("Folders"));
  EXPECT_EQ(Find<QWidget>("lstFile").accessibleName(), QStringLiteral("Files"));
  EXPECT_EQ(Find<QWidget>("cmbAddress").accessibleName(), QStringLiteral("Address"));
  EXPECT_EQ(Find<QWidget>("cmbFilter").accessibleName(), QStringLiteral("Filter"));
  EXPECT_EQ(Button(CommandId::Connect)->accessibleName(), QStringLiteral("Connect"));
  for (const char* name : {"tlbarMain", "tlbarAddress", "imgBar", "sbarMain", "mnuFile", "mnuHelp"}) {
    EXPECT_NE(Window()->findChild<QObject*>(QString::fromLatin1(name)), nullptr) << name;
  }
  for (const auto* button : Window()->findChildren<QToolButton*>()) {
    const bool ours = button->parentWidget()->objectName().startsWith(u"tlbar");
    EXPECT_TRUE(!ours || !button->accessibleName().isEmpty());
  }
}

TEST_F(MainWindowTest, TheFilterAndTheAddressStartWithTheirTexts) {
  Start();
  EXPECT_EQ(Find<QComboBox>("cmbFilter").currentText(), QStringLiteral("*.*"));
  EXPECT_EQ(Address(), QStringLiteral("Workspace"));
}

TEST_F(MainWindowTest, FilterButtonsWithoutFilesOnlyChangeTheirImages) {
  Start();
  const auto picture = [this](CommandId id) { return Button(id)->icon().pixmap(16, 16).toImage(); };
  for (const QString& place : {QStringLiteral("Workspace"), QStringLiteral("Workspace\\My Computer")}) {
    ClickNode(place);
    const QStringList shown = ListTexts();
    memory_->AddDrive(QStringLiteral("Z:"));
    for (const CommandId id : {CommandId::FilterOnOff, CommandId::FilterType}) {
      QToolButton* button = Button(id);
      const QImage up = picture(id);
      QTest::mouseClick(button, Qt::LeftButton);
      EXPECT_TRUE(button->isChecked());
      EXPECT_NE(picture(id), up) << static_cast<int>(id);
      QTest::mouseClick(button, Qt::LeftButton);
      EXPECT_EQ(picture(id), up) << static_cast<int>(id);
    }
    EXPECT_EQ(ListTexts(), shown);
    EXPECT_TRUE(Find<HistoryBox>("cmbFilter").History().isEmpty());
  }
}

TEST_F(MainWindowTest, AddressesTypedDuringADisplayStay) {
  for (int i = 0; i < 60; ++i) {
    memory_->AddFile(QStringLiteral("C:\\Backup\\file%1").arg(i, 2, 10, QChar(u'0')));
  }
  Start();
  Tree().expand(Window()->TreeModel().IndexOf(Node(QStringLiteral("Workspace\\My Computer\\C:"))));
  ClickNode(QStringLiteral("Workspace\\My Computer\\C:\\Backup"));
  auto& box = Find<HistoryBox>("cmbAddress");
  Window()->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(Window()));
  box.setFocus();
  box.lineEdit()->selectAll();
  prompts_.RecordedGauge().onIncrement = [&, increments = 0]() mutable {
    if (++increments == 5) {
      QTest::keyClicks(box.lineEdit(), QStringLiteral("Workspace\\My Computer"));
    }
  };
  Trigger(CommandPlace::ViewMenu, CommandId::Refresh);
  QCoreApplication::processEvents();
  prompts_.RecordedGauge().onIncrement = nullptr;
  EXPECT_EQ(box.currentText(), QStringLiteral("Workspace\\My Computer"));
  QTest::keyClick(&box, Qt::Key_Return);
  QCoreApplication::processEvents();
  EXPECT_EQ(Nav().CurrentAddress(), QStringLiteral("Workspace\\My Computer"));
}

TEST_F(MainWindowTest, AddressesTypedBeforeADisplayAreReplaced) {
  Start();
  ClickNode(QStringLiteral("Workspace\\My Computer\\C:"));
  auto& box = Find<HistoryBox>("cmbAddress");
  Window()->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(Window()));
  box.setFocus();
  box.lineEdit()->selectAll();
  QTest::keyClicks(box.lineEdit(), QStringLiteral("garbage"));
  QTest::mouseClick(Button(CommandId::Parent), Qt::LeftButton);
  QCoreApplication::processEvents();
  EXPECT_EQ(Nav().CurrentAddress(), QStringLiteral("Workspace\\My Computer"));
  EXPECT_EQ(box.currentText(), QStringLiteral("Workspace\\My Computer"));
}

TEST_F(MainWindowTest, TabReachesTheToolButtonsLast) {
  Start();
  Window()->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(Window()));
  Window()->Bars().MainToolBar().SetBoxWidth(100);
  const auto next = [](const QWidget* from) {
    const QWidget* widget = from->nextInFocusChain();
    while (widget->focusPolicy() == Qt::NoFocus || widget->focusProxy() ||
           !(widget->focusPolicy() & Qt::TabFocus)) {
      widget = widget->nextInFocusChain();
    }
    return widget;
  };
  EXPECT_EQ(next(&List()), &Find<HistoryBox>("cmbFilter"));
  EXPECT_EQ(next(&Find<HistoryBox>("cmbFilter")), Button(CommandId::FilterOnOff));
  EXPECT_EQ(next(Button(CommandId::FilterOnOff)), Button(CommandId::FilterType));
  EXPECT_EQ(next(Button(CommandId::FilterType)), Button(CommandId::OpenWorkspace));
  EXPECT_EQ(next(Button(CommandId::Disconnect)), &Find<HistoryBox>("cmbAddress"));
  EXPECT_EQ(next(&Find<HistoryBox>("cmbAddress")), Button(CommandId::GoToAddress));
  EXPECT_EQ(next(Button(CommandId::GoToAddress)), &Tree());
  EXPECT_EQ(next(&Tree()), &List());
  QTest::keyClick(Window(), Qt::Key_I, Qt::AltModifier);
  EXPECT_TRUE(Find<HistoryBox>("cmbFilter").hasFocus());
}

TEST_F(MainWindowTest, TheTextFieldsOfTheBoxesHaveTheirNames) {
  Start();
  const std::pair<const char*, QString> boxes[] = {{"cmbAddress", QStringLiteral("Address")},
                                                   {"cmbFilter", QStringLiteral("Filter")}};
  for (const auto& [box, name] : boxes) {
    auto& field = *Find<HistoryBox>(box).lineEdit();
    QAccessibleInterface* spoken = QAccessible::queryAccessibleInterface(&field);
    ASSERT_NE(spoken, nullptr);
    EXPECT_EQ(spoken->text(QAccessible::Name), name);
    EXPECT_EQ(spoken->role(), QAccessible::EditableText);
  }
}

TEST_F(MainWindowTest, AStatusTextThatIsCutHasATooltip) {
  Start();
  auto& status = Find<QLabel>("sbarMainText");
  const auto tooltip = [&status] {
    QHelpEvent help(QEvent::ToolTip, QPoint(2, 2), status.mapToGlobal(QPoint(2, 2)));
    QApplication::sendEvent(&status, &help);
    return QToolTip::text();
  };
  Window()->resize(600, 500);
  status.setText(QStringLiteral("short"));
  EXPECT_EQ(tooltip(), QString());
  status.setText(QStringLiteral("Selected ") + QString(300, u'x') + QStringLiteral("<b>"));
  QCoreApplication::processEvents();
  EXPECT_LT(status.width(), 700);
  EXPECT_TRUE(tooltip().contains(QStringLiteral("&lt;b&gt;"))) << tooltip().toStdString();
  QToolTip::hideText();
}

TEST_F(MainWindowTest, ColumnItemsHideAndShowTheirColumns) {
  Start();
  ClickNode(QStringLiteral("Workspace\\My Computer\\C:"));
  FileListModel& list = Window()->ListModel();
  QAction* size = Window()->Bars().Action(CommandPlace::ColumnsMenu, CommandId::SizeColumn);
  QAction* modified = Window()->Bars().Action(CommandPlace::ColumnsMenu, CommandId::ModifiedColumn);
  ASSERT_TRUE(size->isChecked());
  size->trigger();
  EXPECT_FALSE(size->isChecked());
  EXPECT_EQ(list.columnCount(), 6);
  EXPECT_EQ(list.headerData(1, Qt::Horizontal).toString(), QStringLiteral("Type"));
  size->trigger();
  EXPECT_TRUE(size->isChecked());
  EXPECT_EQ(list.headerData(1, Qt::Horizontal).toString(), QStringLiteral("Size"));
  const auto item = list.FindByText(u"readme.txt");
  EXPECT_EQ(list.data(list.IndexOf(item, 1)).toString().trimmed(), QStringLiteral("5"));

  auto* header = List().header();
  QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                    QPoint(header->sectionViewportPosition(3) + 20, header->height() / 2));
  EXPECT_EQ(list.Sorting().key, 3);
  modified->trigger();
  EXPECT_EQ(list.Sorting().key, 0);
  EXPECT_TRUE(list.Sorting().sorted);
  EXPECT_FALSE(list.Sorting().descending);
}

TEST_F(MainWindowTest, EachColumnItemHidesItsOwnColumn) {
  Start();
  FileListModel& list = Window()->ListModel();
  const auto headers = [&list] {
    QStringList texts;
    for (int section = 0; section < list.columnCount(); ++section) {
      texts += list.headerData(section, Qt::Horizontal).toString();
    }
    return texts;
  };
  const QStringList all = headers();
  for (const auto& [id, header] : {std::pair{CommandId::SizeColumn, QStringLiteral("Size")},
                                   std::pair{CommandId::TypeColumn, QStringLiteral("Type")},
                                   std::pair{CommandId::ModifiedColumn, QStringLiteral("Modified")},
                                   std::pair{CommandId::AccessedColumn, QStringLiteral("Accessed")},
                                   std::pair{CommandId::CreatedColumn, QStringLiteral("Created")},
                                   std::pair{CommandId::AttributesColumn, QStringLiteral("Attributes")}}) {
    Trigger(CommandPlace::ColumnsMenu, id);
    QStringList rest = all;
    rest.removeOne(header);
    EXPECT_EQ(headers(), rest);
    EXPECT_FALSE(Window()->Bars().IsChecked(id));
    Trigger(CommandPlace::ColumnsMenu, id);
    EXPECT_EQ(headers(), all);
    EXPECT_TRUE(Window()->Bars().IsChecked(id));
  }
}

TEST_F(MainWindowTest, ShowingTheOptionsChangesNothing) {
  Start();
  // A window that is larger than the screen is fitted onto it a little later.
  const QRect room = Window()->screen()->availableGeometry();
  ASSERT_TRUE(QTest::qWaitFor([&] { return room.contains(Window()->frameGeometry()); }, 30'000));
  const QSize before = Window()->size();
  Window()->Bars().SetEnabled(CommandPlace::ToolMenu, CommandId::Option, true);
  Trigger(CommandPlace::ToolMenu, CommandId::Option);
  EXPECT_EQ(prompts_.ShownSettings(), 1);
  EXPECT_EQ(Window()->size(), before);
  EXPECT_FALSE(QFile::exists(folder_.filePath(QStringLiteral("Trevane.ini"))));
}

TEST_F(MainWindowTest, TheViewsFillTheWindow) {
  Start();
  Window()->resize(1000, 700);
  QCoreApplication::processEvents();
  auto& area = Find<MainArea>("");
  const int tops = Window()->Bars().MainToolBar().height() + Window()->Bars().AddressToolBar().height();
  auto& status = Find<QStatusBar>("sbarMain");
  EXPECT_EQ(Tree().y(), tops);
  EXPECT_EQ(Tree().height(), ToPixels(ToTwips(area.height() - tops - status.height()) - 50));
  EXPECT_EQ(List().height(), Tree().height());
  EXPECT_EQ(List().x(), Tree().width() + MainArea::kSplitterWidth);
  EXPECT_LE(List().geometry().right(), area.width());
  EXPECT_GE(status.y(), Tree().geometry().bottom());
  // The filter buttons follow their box, the address button its own.
  auto& filter = Find<QComboBox>("cmbFilter");
  EXPECT_EQ(Button(CommandId::FilterOnOff)->x(), filter.x() + filter.width());
  EXPECT_GE(Button(CommandId::GoToAddress)->x(), Find<QComboBox>("cmbAddress").geometry().right());
  EXPECT_LT(Button(CommandId::FilterType)->geometry().right(), area.width());
}

TEST_F(MainWindowTest, ALargerTextMakesBoxesAndBarsHigher) {
  const QFont usual = QApplication::font();
  QFont large = usual;
  large.setPointSizeF(2 * usual.pointSizeF());
  QApplication::setFont(large);
  Start();
  auto& address = Find<QComboBox>("cmbAddress");
  EXPECT_GT(address.height(), address.fontMetrics().height());
  EXPECT_GT(Find<QComboBox>("cmbFilter").height(), address.fontMetrics().height());
  const ToolBar& addressBar = Window()->Bars().AddressToolBar();
  EXPECT_GE(addressBar.geometry().bottom(), address.geometry().bottom());
  EXPECT_GE(addressBar.y(), Find<QComboBox>("cmbFilter").geometry().bottom());
  EXPECT_GT(Tree().y(), address.geometry().bottom());
  QApplication::setFont(usual);
}

TEST_F(MainWindowTest, ATinyWindowKeepsTheLeastSizesOfItsViews) {
  Start();
  Window()->resize(120, 60);
  QCoreApplication::processEvents();
  EXPECT_GE(Tree().height(), ToPixels(100));
  EXPECT_GE(List().width(), ToPixels(450));
}

TEST_F(MainWindowTest, TheSplitterStopsAtItsLimits) {
  Start();
  Window()->resize(1000, 700);
  QCoreApplication::processEvents();
  Drag(60);
  EXPECT_EQ(Tree().width(), MainArea::kTreeWidth + 60);
  Drag(-2000);
  EXPECT_EQ(Tree().width(), ToPixels(1000));
  Drag(+5000);
  EXPECT_EQ(Tree().width(), ToPixels(ToTwips(Window()->frameGeometry().width()) - 2000));
  Drag(-300);
  const int inDrag = List().width();
  EXPECT_EQ(
      inDrag,
      ToPixels(ToTwips(Window()->frameGeometry().width() - Tree().width() - MainArea::kSplitterWidth) - 120));
  Window()->resize(1001, 700);
  QCoreApplication::processEvents();
  EXPECT_EQ(List().width(),
            ToPixels(ToTwips(Window()->width() - Tree().width() - MainArea::kSplitterWidth) - 50));
}

TEST_F(MainWindowTest, OnlyTheLeftButtonDragsTheSplitter) {
  Start();
  const int width = Tree().width();
  Drag(60, Qt::LeftButton, Qt::ShiftModifier);
  Drag(60, Qt::RightButton);
  Drag(60, Qt::LeftButton | Qt::RightButton);
  Drag(60, Qt::NoButton);
  EXPECT_EQ(Tree().width(), width);
  Drag(60);
  EXPECT_EQ(Tree().width(), width + 60);
}

TEST_F(MainWindowTest, MinimisingKeepsTheLayout) {
  Start();
  Window()->resize(1000, 700);
  QCoreApplication::processEvents();
  const QRect tree = Tree().geometry();
  const QRect list = List().geometry();
  Window()->showMinimized();
  QCoreApplication::processEvents();
  // Some systems give a minimised window the size of its icon.
  auto& area = *Window()->centralWidget();
  const QSize size = area.size();
  area.resize(160, 30);
  QCoreApplication::processEvents();
  EXPECT_EQ(Tree().geometry(), tree);
  area.resize(size);
  Window()->showNormal();
  QCoreApplication::processEvents();
  EXPECT_EQ(Tree().geometry(), tree);
  EXPECT_EQ(List().geometry(), list);
}

TEST_F(MainWindowTest, AFolderThatCannotBeReadLeavesAUsableWindow) {
  Start();
  Tree().expand(Window()->TreeModel().IndexOf(Node(QStringLiteral("Workspace\\My Computer\\C:"))));
  faulty_->SetHook([](const FileSystemCall& call) {
    if (call.operation == FileSystemOperation::List && call.path.endsWith(u"Backup")) {
      throw RunTimeError(error::kAccessDenied, QStringLiteral("Access is denied: C:\\Backup"));
    }
  });
  prompts_.ExpectBox(QStringLiteral("Access is denied: C:\\Backup"));
  ClickNode(QStringLiteral("Workspace\\My Computer\\C:\\Backup"));
  ExpectPlace(QStringLiteral("Workspace\\My Computer\\C:\\Backup"));
  EXPECT_TRUE(Window()->isEnabled());
  ClickNode(QStringLiteral("Workspace\\My Computer\\C:\\Programs"));
  EXPECT_EQ(ListTexts().size(), 2);
}

TEST_F(MainWindowTest, AClickOnAHeaderSortsTheListByIt) {
  Start();
  ClickNode(QStringLiteral("Workspace\\My Computer\\C:"));
  auto* header = List().header();
  const auto click = [&](int section) {
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {},
                      QPoint(header->sectionViewportPosition(section) + 40, header->height() / 2));
    QCoreApplication::processEvents();
  };
  click(0);
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("readme.txt"), QStringLiteral("Programs"),
                                      QStringLiteral("Backup")}));
  click(1);
  EXPECT_EQ(ListTexts().back(), QStringLiteral("readme.txt"));
  EXPECT_EQ(Window()->ListModel().HeaderImage(0), QString());
}

TEST_F(MainWindowTest, DriveTooltipsShowMountPointAndFreeSpace) {
  volumes_.Set({{QStringLiteral("C:"), QStringLiteral("/"), drivetype::kFixed},
                {QStringLiteral("D:"), QStringLiteral("/run/media/user/STICK/"), drivetype::kRemovable}});
  volumes_.SetSpace(QStringLiteral("D:"), {.free = qint64{3} << 30, .total = qint64{8} << 30});
  Start();
  const QString stick =
      QStringLiteral("Mounted at /run/media/user/STICK\n%1 free of %2")
          .arg(QLocale().formattedDataSize(qint64{3} << 30, 1, QLocale::DataSizeTraditionalFormat),
               QLocale().formattedDataSize(qint64{8} << 30, 1, QLocale::DataSizeTraditionalFormat));
  const auto shownAt = [](QAbstractItemView& view, const QPoint& point) {
    QToolTip::hideText();
    QHelpEvent help(QEvent::ToolTip, point, view.viewport()->mapToGlobal(point));
    QCoreApplication::sendEvent(view.viewport(), &help);
    return QToolTip::text();
  };
  // The stick is asked by a thread, and shown without its space until it has answered.
  QDeadlineTimer deadline(10000);
  QString shown;
  do {
    shown = shownAt(Tree(), PointOf(QStringLiteral("Workspace\\My Computer\\D:")));
  } while (shown != stick && !deadline.hasExpired());
  EXPECT_EQ(shown, stick);
  EXPECT_EQ(shownAt(Tree(), PointOf(QStringLiteral("Workspace\\My Computer\\C:"))),
            QStringLiteral("Mounted at /"));
  EXPECT_EQ(
      Window()->TreeModel().IndexOf(Node(QStringLiteral("Workspace\\My Computer\\D:"))).data().toString(),
      QStringLiteral("D:"));
  Nav().DisplayNode(*Node(QStringLiteral("Workspace\\My Computer")));
  const FileListModel& list = Window()->ListModel();
  const QModelIndex item = list.IndexOf(list.FindByText(QStringLiteral("D:")));
  EXPECT_EQ(shownAt(List(), List().visualRect(item).center()), stick);
  QToolTip::hideText();
}

TEST_F(MainWindowTest, ViewsHaveTheirSizeAfterAMinimisedStart) {
  Put("Trevane.ini", "[Form]\r\nWindowState=1\r\n");
  Start();
  ASSERT_TRUE(Window()->isMinimized());
  Window()->showNormal();
  QCoreApplication::processEvents();
  EXPECT_GT(Tree().height(), 400);
  EXPECT_EQ(List().height(), Tree().height());
}

TEST_F(MainWindowTest, LargeWindowsKeepTheirSizeInTheSettings) {
  Start();
  const QRect room = Window()->screen()->availableGeometry();
  Stop();
  Put("Trevane.ini", "[Form]\r\nWidth=15000\r\nHeight=" + QByteArray::number(15 * room.height()) + "\r\n");
  Start();
  EXPECT_TRUE(QTest::qWaitFor([&] { return room.contains(Window()->frameGeometry()); }, 30'000));
  const QByteArray height = "Height=" + QByteArray::number(15 * room.height());
  Stop();
  EXPECT_TRUE(Content("Trevane.ini").contains(height)) << Content("Trevane.ini").toStdString();
}

TEST_F(MainWindowTest, SizesOfLargerScreensStayInTheSettings) {
  Start();
  const QSize room = Window()->screen()->virtualSize();
  Stop();
  const QByteArray width = "Width=" + QByteArray::number(15 * (room.width() + 300));
  const QByteArray height = "Height=" + QByteArray::number(15 * (room.height() + 200));
  Put("Trevane.ini", "[Form]\r\n" + width + "\r\n" + height + "\r\n");
  Start();
  EXPECT_TRUE(QTest::qWaitFor(
      [&] { return Window()->screen()->availableGeometry().contains(Window()->frameGeometry()); }, 30'000));
  Stop();
  EXPECT_TRUE(Content("Trevane.ini").contains(width + "\r\n" + height))
      << Content("Trevane.ini").toStdString();
  // A size that the user chose replaces the one of the file.
  Start();
  Window()->resize(700, 500);
  QCoreApplication::processEvents();
  Stop();
  EXPECT_TRUE(Content("Trevane.ini").contains("Width=10500\r\nHeight=7500"))
      << Content("Trevane.ini").toStdString();
}

TEST_F(MainWindowTest, ADisabledWindowKeepsItsLooks) {
  Start();
  ClickNode(QStringLiteral("Workspace\\My Computer\\C:"));
  QCoreApplication::processEvents();
  // The focus is drawn differently, which is not tested here.
  Window()->focusWidget()->clearFocus();
  const QImage before = Window()->grab().toImage();
  Window()->setEnabled(false);
  const QImage disabled = Window()->grab().toImage();
  EXPECT_EQ(disabled, before);
  auto& button = *Button(CommandId::OpenWorkspace);
  EXPECT_FALSE(button.isEnabled());
  for (QWidget* control : {static_cast<QWidget*>(&button), static_cast<QWidget*>(&Tree()),
                           static_cast<QWidget*>(&Find<QComboBox>("cmbAddress"))}) {
    EXPECT_TRUE(QAccessible::queryAccessibleInterface(control)->state().disabled)
        << control->objectName().toStdString();
  }
}

TEST_F(MainWindowTest, OtherColoursLeaveADisabledWindowItsLooks) {
  // In the order of the program's start: the style is chosen before the window is made.
  QApplication::setStyle(QStringLiteral("fusion"));
  const SystemStyle style;
  KeptLooks::Install();
  QEvent change(QEvent::ApplicationPaletteChange);
  QCoreApplication::sendEvent(qApp, &change);
  QCoreApplication::processEvents();
  EXPECT_NE(qobject_cast<const KeptLooks*>(QApplication::style()), nullptr);
}

TEST_F(MainWindowTest, DisabledButtonsAreGreyInADisabledWindow) {
  Start();
  auto& paste = *Button(CommandId::Paste);
  ASSERT_FALSE(paste.isEnabled());
  const QImage grey = paste.grab().toImage();
  Window()->setEnabled(false);
  EXPECT_EQ(paste.grab().toImage(), grey);
  Window()->setEnabled(true);
  paste.setEnabled(true);
  EXPECT_NE(paste.grab().toImage(), grey);
}

TEST_F(MainWindowTest, ToolbarButtonsShowTheHourglass) {
  Start();
  std::vector<Qt::CursorShape> shapes;
  prompts_.onQuestion = [&](const AskedQuestion&) { shapes.push_back(Window()->cursor().shape()); };
  prompts_.ExpectBox(QStringLiteral("No controller is connecting."));
  QTest::mouseClick(Button(CommandId::SaveWorkspace), Qt::LeftButton);
  EXPECT_EQ(shapes, std::vector{Qt::WaitCursor});
  EXPECT_EQ(Window()->cursor().shape(), Qt::ArrowCursor);
  // The same command shows none when it is chosen from the menu.
  prompts_.ExpectBox(QStringLiteral("No controller is connecting."));
  Trigger(CommandPlace::FileMenu, CommandId::SaveWorkspace);
  EXPECT_EQ(shapes, (std::vector{Qt::WaitCursor, Qt::ArrowCursor}));

  ClickNode(QStringLiteral("Workspace\\My Computer\\C:"));
  shapes.clear();
  faulty_->SetHook([&](const FileSystemCall&) { shapes.push_back(Window()->cursor().shape()); });
  QTest::mouseClick(Button(CommandId::FilterOnOff), Qt::LeftButton);
  faulty_->SetHook({});
  ASSERT_FALSE(shapes.empty());
  EXPECT_EQ(shapes.front(), Qt::WaitCursor);
  EXPECT_EQ(Window()->cursor().shape(), Qt::ArrowCursor);
}

}  // namespace
}  // namespace trevane::test
