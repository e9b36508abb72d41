// A share as a controller, connected, remembered and opened again with the real window and its dialog.
#include "app/window/CommandBars.h"
#include "app/window/ToolBar.h"
#include "base/RunTimeError.h"
#include "engine/providers/ProviderTable.h"
#include "tests/app/window/MainWindowFixture.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QDialog>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

namespace trevane::test {
namespace {

class ShareStoryTest : public MainWindowFixture {
 protected:
  ShareStoryTest() {
    volumes_.Set({{QStringLiteral("C:"), QDir::toNativeSeparators(disk_.path() + u'/'), drivetype::kFixed}});
    createEngine_ = [this]() -> std::shared_ptr<IxoEngine> {
      return std::make_shared<SubstituteEngine>(ShippedProviders(volumes_));
    };
    WriteFile(disk_.filePath(QStringLiteral("mnt/cell/prog/a.pac")), "program a");
    WriteFile(disk_.filePath(QStringLiteral("mnt/cell/log/b.txt")), "b");
  }

  [[nodiscard]] QString Machine(const QString& relative = QStringLiteral("mnt/cell")) const {
    return QDir::toNativeSeparators(disk_.filePath(relative));
  }

  /// Does `work` with the connect dialog, and clicks its button.
  void InDialog(const std::function<void(QDialog&)>& work) {
    QTimer::singleShot(0, Window(), [&] {
      auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_NE(dialog, nullptr);
      work(*dialog);
      QTest::mouseClick(dialog->findChild<QPushButton*>(QStringLiteral("cmdConnect")), Qt::LeftButton);
    });
    Trigger(CommandPlace::FileMenu, CommandId::Connect);
  }
  /// Opens the list of a box and clicks one of its entries.
  static void Choose(QComboBox& box, const QString& text) {
    const int row = box.findText(text);
    ASSERT_GE(row, 0) << text.toStdString();
    box.showPopup();
    QAbstractItemView* view = box.view();
    const QPoint at = view->visualRect(view->model()->index(row, 0)).center();
    // A box takes no click that follows its opening at once.
    QTest::qWait(QApplication::doubleClickInterval() + 50);
    QTest::mouseClick(view->viewport(), Qt::LeftButton, {}, at);
  }
  static void Type(QDialog& dialog, const char* name, const QString& text) {
    auto* field = dialog.findChild<QLineEdit*>(QString::fromLatin1(name));
    ASSERT_NE(field, nullptr);
    field->selectAll();
    QTest::keyClick(field, Qt::Key_Delete);
    QTest::keyClicks(field, text);
  }
  void Connect(const QString& name, const QString& machine, const QString& root) {
    InDialog([&](QDialog& dialog) {
      Choose(*dialog.findChild<QComboBox*>(QStringLiteral("cmbProvider")), QStringLiteral("IxoProv.Share"));
      auto* controller = dialog.findChild<QComboBox*>(QStringLiteral("cmbController"));
      controller->lineEdit()->selectAll();
      QTest::keyClicks(controller->lineEdit(), name);
      Type(dialog, "txtMachine", machine);
      Type(dialog, "txtRoot", root);
    });
  }

  QTemporaryDir disk_;
};

TEST_F(ShareStoryTest, AShareIsConnectedSavedAndOpenedAgain) {
  Start();
  Connect(QStringLiteral("Cell"), Machine(), QStringLiteral("/"));
  EXPECT_EQ(Nav().CurrentAddress(), QStringLiteral("Workspace\\Cell"));
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("log"), QStringLiteral("prog")}));
  Connect(QStringLiteral("Programs"), Machine(), QStringLiteral("/prog"));
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("a.pac")});

  const QString workspace = QDir::toNativeSeparators(disk_.filePath(QStringLiteral("cells.fmg")));
  prompts_.ExpectFile(workspace);
  Trigger(CommandPlace::FileMenu, CommandId::SaveWorkspace);
  Stop();
  Start(u'"' + workspace + u'"');
  EXPECT_EQ(ListTexts(),
            (QStringList{QStringLiteral("Cell"), QStringLiteral("My Computer"), QStringLiteral("Programs")}));
  ClickNode(QStringLiteral("Workspace\\Cell"));
  EXPECT_EQ(ListTexts(), (QStringList{QStringLiteral("log"), QStringLiteral("prog")}));
  ClickNode(QStringLiteral("Workspace\\Programs"));
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("a.pac")});
}

TEST_F(ShareStoryTest, AShareIsAmongTheLastEight) {
  Start();
  Connect(QStringLiteral("Cell"), Machine(), QStringLiteral("/prog"));
  Stop();
  Start();
  InDialog([&](QDialog& dialog) {
    auto* controller = dialog.findChild<QComboBox*>(QStringLiteral("cmbController"));
    Choose(*controller, QStringLiteral("Cell"));
    EXPECT_EQ(dialog.findChild<QComboBox*>(QStringLiteral("cmbProvider"))->currentText(),
              QStringLiteral("IxoProv.Share"));
    EXPECT_EQ(dialog.findChild<QLineEdit*>(QStringLiteral("txtMachine"))->text(), Machine());
    EXPECT_EQ(dialog.findChild<QLineEdit*>(QStringLiteral("txtRoot"))->text(), QStringLiteral("/prog"));
  });
  EXPECT_EQ(Nav().CurrentAddress(), QStringLiteral("Workspace\\Cell"));
  EXPECT_EQ(ListTexts(), QStringList{QStringLiteral("a.pac")});
}

TEST_F(ShareStoryTest, BadInputIsNamedInTheBoxAndNotRemembered) {
  Start();
  const QStringList before = ListTexts();
  for (const auto& [machine, root, named] :
       {std::tuple{QString(), QStringLiteral("/"), QStringLiteral("The machine name is missing")},
        std::tuple{QStringLiteral("mnt/cell"), QStringLiteral("/"), QStringLiteral("mnt/cell")},
        std::tuple{Machine(QStringLiteral("mnt/none")), QStringLiteral("/"),
                   Machine(QStringLiteral("mnt/none"))},
        std::tuple{Machine(QStringLiteral("mnt/cell/prog/a.pac")), QStringLiteral("/"),
                   Machine(QStringLiteral("mnt/cell/prog/a.pac"))},
        std::tuple{Machine(), QStringLiteral("/none"), QStringLiteral("none")}}) {
    prompts_.ExpectBox(QStringLiteral("Failed in adding a controller object."));
    Connect(QStringLiteral("Bad"), machine, root);
    ASSERT_FALSE(prompts_.Asked().empty());
    EXPECT_TRUE(prompts_.Asked().back().informativeText.contains(named))
        << prompts_.Asked().back().informativeText.toStdString();
  }
  EXPECT_EQ(ListTexts(), before);
}

}  // namespace
}  // namespace trevane::test
