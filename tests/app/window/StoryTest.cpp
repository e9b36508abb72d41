// The program's main use from start to end: the real window over the real file system, driven by mouse and
// keys.
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

std::string Joined(const QStringList& lines) {
  return lines.join(u'\n').toStdString();
}

class StoryTest : public MainWindowFixture {
 protected:
  StoryTest() {
    volumes_.Set({{QStringLiteral("C:"), QDir::toNativeSeparators(disk_.path() + u'/'), drivetype::kFixed}});
    createEngine_ = [this]() -> std::shared_ptr<IxoEngine> {
      return std::make_shared<SubstituteEngine>(ShippedProviders(volumes_));
    };
    PutOnDisk(QStringLiteral("laptop/prog/a.pac"), ProgramA());
    PutOnDisk(QStringLiteral("laptop/prog/b.pac"), "program b");
    PutOnDisk(QStringLiteral("laptop/prog/sub/c.pac"), "program c");
    PutOnDisk(QStringLiteral("cell1/config"), "one");
    PutOnDisk(QStringLiteral("cell2/config"), "two");
  }

  /// On Windows the program is a script that writes down its own path.
  [[nodiscard]] QByteArray ProgramA() const {
#ifdef Q_OS_WIN
    return "@echo %~f0> \"" + QDir::toNativeSeparators(Opened()).toUtf8() + "\"\r\n";
#else
    return "program a";
#endif
  }
  [[nodiscard]] QString Opened() const {
    return current_.filePath(QStringLiteral("opened"));
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
      if (entries.fileInfo().isDir()) {
        lines += name + u'/';
      } else if (file.open(QIODevice::ReadOnly)) {
        lines += name + u'=' + QString::fromUtf8(file.readAll());
      }
    }
    lines.sort();
    return lines;
  }

  /// The lines of the log without their time stamps.
  [[nodiscard]] QStringList LogLines() const {
    QStringList lines;
    const QList<QByteArray> raw = Content("Trevane.log").split('\n');
    for (const QByteArray& line : raw) {
      if (line.isEmpty()) {
        continue;
      }
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
      auto* controller = dialog->findChild<QComboBox*>(QStringLiteral("cmbController"));
      controller->lineEdit()->selectAll();
      QTest::keyClicks(controller->lineEdit(), name);
      auto* txtRoot = dialog->findChild<QLineEdit*>(QStringLiteral("txtRoot"));
      txtRoot->selectAll();
      QTest::keyClicks(txtRoot, root);
      QTest::mouseClick(dialog->findChild<QPushButton*>(QStringLiteral("cmdConnect")), Qt::LeftButton);
    });
    Trigger(CommandPlace::FileMenu, CommandId::Connect);
    EXPECT_EQ(Nav().CurrentAddress(), QStringLiteral("Workspace\\") + name);
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
  const QString mainName = QStringLiteral("main.bat");
#else
  // In place of the desktop's opener: a script that writes down its argument.
  const QString mainName = QStringLiteral("main.pac");
  {
    QFile script(current_.filePath(QStringLiteral("xdg-open")));
    ASSERT_TRUE(script.open(QIODevice::WriteOnly));
    script.write("#!/bin/sh\nprintf %s \"$1\" >'" + opened.toUtf8() + ".new'\nmv '" + opened.toUtf8() +
                 ".new' '" + opened.toUtf8() + "'\n");
    ASSERT_TRUE(script.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
  }
  qputenv("PATH", current_.path().toUtf8() + ':' + qgetenv("PATH"));
#endif

  Start();
  Connect(QStringLiteral("Cell1"), QStringLiteral("/cell1"));
  Connect(QStringLiteral("Cell2"), QStringLiteral("/cell2"));

  // From the laptop to the first cell.
  ClickNode(QStringLiteral("Workspace\\My Computer\\C:\\laptop"));
  ClickItem(QStringLiteral("prog"));
  PressInList(Qt::Key_C, Qt::ControlModifier);
  ClickNode(QStringLiteral("Workspace\\Cell1"));
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("config"), QStringLiteral("prog")}));

  // From cell to cell, and once more onto the copy.
  ClickItem(QStringLiteral("prog"));
  Trigger(CommandPlace::MainToolbar, CommandId::Copy);
  ClickNode(QStringLiteral("Workspace\\Cell2"));
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  prompts_.ExpectChoice(QStringLiteral("'prog' already existed.\r\nOverwrite?"), 1);
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);

  // Move a program, give it another name.
  ClickNode(QStringLiteral("Workspace\\Cell1\\prog"));
  ClickItem(QStringLiteral("a.pac"));
  PressInList(Qt::Key_X, Qt::ControlModifier);
  ClickNode(QStringLiteral("Workspace\\Cell2"));
  Trigger(CommandPlace::MainToolbar, CommandId::Paste);
  EXPECT_FALSE(IsEnabled(CommandPlace::MainToolbar, CommandId::Paste));
  ClickItem(QStringLiteral("a.pac"));
  PressInList(Qt::Key_F2);
  auto* editor = List().findChild<QLineEdit*>(QStringLiteral("txtLabel"));
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
  EXPECT_TRUE(ListTexts().contains(QStringLiteral("New Folder")));
  DoubleClickItem(mainName);
  QElapsedTimer timer;
  timer.start();
  while (QFileInfo(opened).size() == 0 && timer.elapsed() < 20000) {
    QTest::qWait(5);
  }
  QFile given(opened);
  ASSERT_TRUE(given.open(QIODevice::ReadOnly));
  EXPECT_EQ(QDir::fromNativeSeparators(QString::fromUtf8(given.readAll()).trimmed()),
            disk_.filePath(QStringLiteral("cell2/") + mainName));
  ClickItem(QStringLiteral("New Folder"));
  prompts_.ExpectChoice(QStringLiteral("'New Folder' Do you want to Remove it?"), 0);
  PressInList(Qt::Key_Delete);

  // Save the workspace, disconnect everything, open it again from the command line.
  const QString workspace = QDir::toNativeSeparators(disk_.filePath(QStringLiteral("cells.fmg")));
  prompts_.ExpectFile(workspace);
  Trigger(CommandPlace::FileMenu, CommandId::SaveWorkspace);
  EXPECT_EQ(Window()->windowTitle(), QStringLiteral("Trevane - (") + workspace + u')');
  prompts_.ExpectBox(QStringLiteral("Disconnect All IxoControllers. Are you sure?"), PromptAnswer::Ok);
  Trigger(CommandPlace::FileMenu, CommandId::DisconnectAll);
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("My Computer")});
  Stop();
  Start(u'"' + workspace + u'"');
  EXPECT_EQ(ListTexts(),
            (QStringList{QStringLiteral("Cell1"), QStringLiteral("Cell2"), QStringLiteral("My Computer")}));
  EXPECT_EQ(Window()->windowTitle(), QStringLiteral("Trevane - (") + workspace + u')');

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
