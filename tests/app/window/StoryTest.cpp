// The program's purpose from one end to the other: the real window over the real file system, driven by mouse
// and keys.
#include "app/window/CommandBars.h"
#include "app/window/ToolBar.h"
#include "engine/providers/ProviderTable.h"
#include "tests/app/window/MainWindowFixture.h"

#include <QAction>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>
#include <QToolButton>

namespace trevane::test {
namespace {

using namespace Qt::StringLiterals;

std::string Joined(const QStringList& lines) {
  return lines.join(u'\n').toStdString();
}

class StoryTest : public MainWindowFixture {
 protected:
  StoryTest() {
    volumes_.Set({{u"C:"_s, QDir::toNativeSeparators(disk_.path() + u'/'), drivetype::kFixed}});
    createEngine_ = [this]() -> std::shared_ptr<IxoEngine> {
      return std::make_shared<SubstituteEngine>(ShippedProviders(volumes_));
    };
    PutOnDisk(u"laptop/prog/a.pac"_s, ProgramA());
    PutOnDisk(u"laptop/prog/b.pac"_s, "program b");
    PutOnDisk(u"laptop/prog/sub/c.pac"_s, "program c");
    PutOnDisk(u"cell1/config"_s, "one");
    PutOnDisk(u"cell2/config"_s, "two");
  }

  /// What runs as a program on Windows writes down where it lies.
  [[nodiscard]] QByteArray ProgramA() const {
#ifdef Q_OS_WIN
    return "@echo %~f0> \"" + QDir::toNativeSeparators(Opened()).toUtf8() + "\"\r\n";
#else
    return "program a";
#endif
  }
  [[nodiscard]] QString Opened() const {
    return current_.filePath(u"opened"_s);
  }

  void PutOnDisk(const QString& path, const QByteArray& content) {
    WriteFile(disk_.filePath(path), content);
  }

  /// Every file with its content, every folder with "/" at its end, in order.
  [[nodiscard]] QStringList Disk() const {
    QStringList lines;
    QDirIterator entries(disk_.path(), QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
      const QString path = entries.next();
      const QString name = path.mid(disk_.path().size() + 1);
      QFile file(path);
      if (entries.fileInfo().isDir())
        lines += name + u'/';
      else if (file.open(QIODevice::ReadOnly))
        lines += name + u'=' + QString::fromUtf8(file.readAll());
    }
    lines.sort();
    return lines;
  }

  /// The lines of the log without their time stamps.
  [[nodiscard]] QStringList LogLines() const {
    QStringList lines;
    const QList<QByteArray> raw = Content("Trevane.log").split('\n');
    for (const QByteArray& line : raw) {
      if (line.isEmpty())
        continue;
      EXPECT_TRUE(line.endsWith('\r'));
      lines += QString::fromUtf8(line.mid(22).chopped(1));
    }
    return lines;
  }

  /// Connects through the menu and the dialog.
  void Connect(const QString& name, const QString& root) {
    QTimer::singleShot(0, Window(), [&] {
      auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(dialog, nullptr);
      auto* controller = dialog->findChild<QComboBox*>(u"cmbController"_s);
      controller->lineEdit()->selectAll();
      QTest::keyClicks(controller->lineEdit(), name);
      auto* txtRoot = dialog->findChild<QLineEdit*>(u"txtRoot"_s);
      txtRoot->selectAll();
      QTest::keyClicks(txtRoot, root);
      QTest::mouseClick(dialog->findChild<QPushButton*>(u"cmdConnect"_s), Qt::LeftButton);
    });
    Trigger(CommandPlace::FileMenu, CommandId::Connect);
    EXPECT_EQ(Nav().CurrentAddress(), u"Workspace\\"_s + name);
  }

  void PressInList(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    // A shortcut of the menu needs the active window.
    Window()->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(Window()));
    List().setFocus();
    QTest::keyClick(&List(), key, modifiers);
    QCoreApplication::processEvents();
  }

  QTemporaryDir disk_;
};

TEST_F(StoryTest, FromTheLaptopToACellAndFromCellToCell) {
  const QString opened = Opened();
#ifdef Q_OS_WIN
  const QString mainName = u"main.bat"_s;
#else
  // What the desktop would start is a script that writes down what it was given.
  const QString mainName = u"main.pac"_s;
  {
    QFile script(current_.filePath(u"xdg-open"_s));
    ASSERT_TRUE(script.open(QIODevice::WriteOnly));
    script.write("#!/bin/sh\nprintf %s \"$1\" >'" + opened.toUtf8() + ".new'\nmv '" + opened.toUtf8() +
                 ".new' '" + opened.toUtf8() + "'\n");
    ASSERT_TRUE(script.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
  }
  qputenv("PATH", current_.path().toUtf8() + ':' + qgetenv("PATH"));
#endif

  Start();
  Connect(u"Cell1"_s, u"/cell1"_s);
  Connect(u"Cell2"_s, u"/cell2"_s);

  // From the laptop to the first cell.
  ClickNode(u"Workspace\\My Computer\\C:\\laptop"_s);
  ClickItem(u"prog"_s);
  PressInList(Qt::Key_C, Qt::ControlModifier);
  ClickNode(u"Workspace\\Cell1"_s);
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  EXPECT_EQ(ListTexts(), (QStringList{u"config"_s, u"prog"_s}));

  // From cell to cell, and once more over what is there now.
  ClickItem(u"prog"_s);
  Trigger(CommandPlace::MainToolbar, CommandId::Copy);
  ClickNode(u"Workspace\\Cell2"_s);
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  prompts_.ExpectChoice(u"'prog' already existed.\r\nOverwrite?"_s, 1);
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);

  // Move a program, give it another name.
  ClickNode(u"Workspace\\Cell1\\prog"_s);
  ClickItem(u"a.pac"_s);
  PressInList(Qt::Key_X, Qt::ControlModifier);
  ClickNode(u"Workspace\\Cell2"_s);
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  EXPECT_FALSE(IsEnabled(CommandPlace::MainToolbar, CommandId::Paste));
  ClickItem(u"a.pac"_s);
  PressInList(Qt::Key_F2);
  auto* editor = List().findChild<QLineEdit*>(u"txtLabel"_s);
  ASSERT_NE(editor, nullptr);
  QCoreApplication::processEvents();
  editor->selectAll();
  QTest::keyClicks(editor, mainName);
  QTest::keyClick(editor, Qt::Key_Return);
  // The rename follows once the editor has closed.
  QTest::qWait(0);
  QCoreApplication::processEvents();
  EXPECT_TRUE(ListTexts().contains(mainName));

  // A new folder; run the program; delete the folder.
  Tree().setFocus();
  Trigger(CommandPlace::NewMenu, CommandId::NewFolder);
  EXPECT_TRUE(ListTexts().contains(u"New Folder"_s));
  DoubleClickItem(mainName);
  QElapsedTimer timer;
  timer.start();
  while (QFileInfo(opened).size() == 0 && timer.elapsed() < 20000)
    QTest::qWait(5);
  QFile given(opened);
  ASSERT_TRUE(given.open(QIODevice::ReadOnly));
  EXPECT_EQ(QDir::fromNativeSeparators(QString::fromUtf8(given.readAll()).trimmed()),
            disk_.filePath(u"cell2/"_s + mainName));
  ClickItem(u"New Folder"_s);
  prompts_.ExpectChoice(u"'New Folder' Do you want to Remove it?"_s, 0);
  PressInList(Qt::Key_Delete);

  // Save the workspace, disconnect everything, open it again from the command line.
  const QString workspace = QDir::toNativeSeparators(disk_.filePath(u"cells.fmg"_s));
  prompts_.ExpectFile(workspace);
  Trigger(CommandPlace::FileMenu, CommandId::SaveWorkspace);
  EXPECT_EQ(Window()->windowTitle(), u"Trevane - ("_s + workspace + u')');
  prompts_.ExpectBox(u"Disconnect All IxoControllers. Are you sure?"_s, PromptAnswer::Ok);
  Trigger(CommandPlace::FileMenu, CommandId::DisconnectAll);
  EXPECT_EQ(ListTexts(), QStringList{u"My Computer"_s});
  Stop();
  Start(u'"' + workspace + u'"');
  EXPECT_EQ(ListTexts(), (QStringList{u"Cell1"_s, u"Cell2"_s, u"My Computer"_s}));
  EXPECT_EQ(Window()->windowTitle(), u"Trevane - ("_s + workspace + u')');

  EXPECT_TRUE(QFile::remove(workspace));
  EXPECT_EQ(Joined(Disk()),
            "cell1/\n"
            "cell1/config=one\n"
            "cell1/prog/\n"
            "cell1/prog/b.pac=program b\n"
            "cell1/prog/sub/\n"
            "cell1/prog/sub/c.pac=program c\n"
            "cell2/\n"
            "cell2/config=two\n"
            "cell2/" +
                mainName.toStdString() + '=' + ProgramA().toStdString() +
                "\n"
                "cell2/prog/\n"
                "cell2/prog/a.pac=" +
                ProgramA().toStdString() +
                "\n"
                "cell2/prog/b.pac=program b\n"
                "cell2/prog/sub/\n"
                "cell2/prog/sub/c.pac=program c\n"
                "laptop/\n"
                "laptop/prog/\n"
                "laptop/prog/a.pac=" +
                ProgramA().toStdString() +
                "\n"
                "laptop/prog/b.pac=program b\n"
                "laptop/prog/sub/\n"
                "laptop/prog/sub/c.pac=program c");
  EXPECT_EQ(Joined(LogLines()),
            "CONNECT \"Cell1\", \"IxoProv.LocalFile\", \"\", \"\"\n"
            "CONNECT \"Cell2\", \"IxoProv.LocalFile\", \"\", \"\"\n"
            "COPY \"C:\\laptop\\prog\" TO \"Cell1\"\n"
            "COPY \"Cell1\\prog\" TO \"Cell2\"\n"
            "COPY \"Cell1\\prog\" TO \"Cell2\"\n"
            "MOVE \"Cell1\\prog\\a.pac\" TO \"Cell2\\a.pac\"\n"
            "RENAME \"Cell2\\a.pac\" TO \"" +
                mainName.toStdString() +
                "\"\n"
                "DELETE \"Cell2\\New Folder\"\n"
                "DISCONNECT \"Cell1\"\n"
                "DISCONNECT \"Cell2\"\n"
                "CONNECT \"Cell1\", \"IxoProv.LocalFile\", \"\", \"\"\n"
                "CONNECT \"Cell2\", \"IxoProv.LocalFile\", \"\", \"\"");
}

}  // namespace
}  // namespace trevane::test
